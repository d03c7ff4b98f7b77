#include "StoreFailure.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cwctype>
#include <fmt/format.h>

namespace sqCli {

namespace {

using namespace std::string_view_literals;

constexpr auto NoPosition = std::wstring_view::npos;

// "Class::Function: text"
std::wstring_view WithoutFunction(std::wstring_view failure) {
    const std::size_t colon = failure.find(L": "sv);
    return colon == NoPosition ? failure : failure.substr(colon + 2);
}

bool IsStatus(std::wstring_view text) {
    return text.size() == 10 && text.starts_with(L"0x"sv) &&
           text.find_first_not_of(L"0123456789ABCDEFabcdef"sv, 2) == NoPosition;
}

// "text (0x80004005)"
std::wstring_view WithoutStatus(std::wstring_view text) {
    constexpr std::size_t length = 13;
    const bool ends = text.size() > length && text.back() == L')' && text[text.size() - length] == L' ' &&
                      text[text.size() - length + 1] == L'(' && IsStatus(text.substr(text.size() - 11, 10));
    return ends ? text.substr(0, text.size() - length) : text;
}

// "text (stdexcept: "0x80004005: what")", where the status is only there when the exception carries one.
std::wstring_view WithoutException(std::wstring_view text) {
    constexpr auto opening = L"(stdexcept: \""sv;
    const std::size_t begin = text.find(opening);
    const std::size_t end = text.rfind(L"\")"sv);
    if (begin == NoPosition || end == NoPosition || end < begin + opening.size())
        return text;
    text = text.substr(begin + opening.size(), end - begin - opening.size());
    return text.size() > 12 && IsStatus(text.substr(0, 10)) && text.substr(10, 2) == L": "sv ? text.substr(12)
                                                                                             : text;
}

// "text [Firebird: words; code n, SQLSTATE s]"
std::wstring_view WithoutEngineWords(std::wstring_view text) {
    const std::size_t begin = text.find(L" [Firebird: "sv);
    return begin == NoPosition ? text : text.substr(0, begin);
}

// "Open: Text", with the name of the database call that failed.
std::wstring_view WithoutCall(std::wstring_view text) {
    constexpr std::array calls{L"Open: "sv,   L"Fetch: "sv,    L"Close: "sv,
                               L"Finish: "sv, L"GetQuery: "sv, L"GetTransaction: "sv};
    for (const std::wstring_view call : calls)
        if (text.starts_with(call))
            return text.substr(call.size());
    return text;
}

bool Mentions(std::wstring_view text, std::wstring_view words) { return text.find(words) != NoPosition; }

std::wstring_view ReasonOf(std::wstring_view failure) {
    return WithoutException(WithoutStatus(WithoutFunction(failure)));
}

} // namespace

std::string PlainSentence(std::wstring_view reason) {
    if (IsStatus(reason))
        return fmt::format("The store failed with status {}: look into its log.", platform::ToUtf8(reason));
    std::wstring sentence(WithoutCall(WithoutEngineWords(reason)));
    if (sentence.empty())
        return "The store failed without saying why: look into its log.";
    sentence.front() = static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(sentence.front())));
    if (sentence.back() != L'.')
        sentence += L'.';
    return platform::ToUtf8(sentence);
}

std::string FailureSentence(std::wstring_view failure) { return PlainSentence(ReasonOf(failure)); }

std::string OpenFailureSentence(std::span<const std::wstring> failures, std::wstring_view registryFile) {
    if (failures.empty())
        return "The storage component could not be loaded: install the program anew, or name the folder of its "
               "libraries in SQSTORAGE_MODULE_PATH.";
    const std::wstring_view cause = failures.front();
    if (Mentions(cause, L"!_DatabasePath.empty()"))
        return NoDatabaseNamed(registryFile);
    if (Mentions(cause, L"!_UserName.empty()"))
        return ValueMissing(L"Username", registryFile);
    if (Mentions(cause, L"!_Password.empty()"))
        return ValueMissing(L"Password", registryFile);
    return OpenReasonSentence(ReasonOf(cause), registryFile);
}

std::string OpenReasonSentence(std::wstring_view reason, std::wstring_view registryFile) {
    if (Mentions(reason, L"SCHEMA_INFO"))
        return fmt::format("The database holds no store of this program: make one with \"sqstorage create\", or "
                           "correct \"Path\" in {}.",
                           platform::ToUtf8(registryFile));
    return PlainSentence(reason);
}

std::string NoDatabaseNamed(std::wstring_view registryFile) {
    return fmt::format("{} names no database for this program: make one with \"sqstorage create\", or say with "
                       "--registry where the entries are.",
                       platform::ToUtf8(registryFile));
}

std::string ValueMissing(std::wstring_view name, std::wstring_view registryFile) {
    return fmt::format("The entry \"{}\" of the database connection is missing or empty: add it to {}.",
                       platform::ToUtf8(name), platform::ToUtf8(registryFile));
}

} // namespace sqCli
