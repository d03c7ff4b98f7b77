#include "ExpandReport.h"

#include "ToWide.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <fmt/args.h>
#include <fmt/printf.h>
#include <fmt/xchar.h>

namespace BugSlayerUtil {

namespace {

using Context = fmt::basic_printf_context_t<wchar_t>;
using Store = fmt::dynamic_format_arg_store<Context>;

fmt::wstring_view View(std::wstring_view text) { return {text.data(), text.size()}; }

void Push(Store& store, const CArgument& argument) {
    using EKind = CArgument::EKind;
    switch (argument.Kind()) {
    case EKind::Int:
        return store.push_back(static_cast<int>(argument.Int()));
    case EKind::UInt:
        return store.push_back(static_cast<unsigned>(argument.UInt()));
    case EKind::Int64:
        return store.push_back(static_cast<long long>(argument.Int()));
    case EKind::UInt64:
        return store.push_back(static_cast<unsigned long long>(argument.UInt()));
    case EKind::Double:
        return store.push_back(argument.Double());
    case EKind::Character:
        return store.push_back(static_cast<wchar_t>(argument.Int()));
    case EKind::Wide:
        return store.push_back(View(argument.Wide()));
    case EKind::Narrow:
        return store.push_back(ToWide(argument.Narrow()));
    case EKind::Pointer:
        return store.push_back(argument.Pointer());
    }
}

std::wstring ExpandByLibrary(std::wstring_view text, std::span<const CArgument> arguments) {
    try {
        Store store;
        store.reserve(arguments.size(), 0);
        for (const CArgument& argument : arguments)
            Push(store, argument);
        return fmt::vsprintf(View(text), fmt::basic_format_args<Context>(store));
    } catch (const fmt::format_error& error) {
        return std::wstring(text) + L" [the arguments do not suit the format: " + ToWide(error.what()) + L"]";
    }
}

void Append(CReportBuffer& buffer, std::wstring_view text) {
    buffer.append(text.data(), text.data() + text.size());
}

void AppendDecimal(CReportBuffer& buffer, std::int64_t value) {
    const fmt::format_int digits(value);
    buffer.append(digits.data(), digits.data() + digits.size());
}

void AppendHexadecimal(CReportBuffer& buffer, std::uint64_t value, const char* digits) {
    std::array<wchar_t, 16> text;
    std::size_t start = text.size();
    do
        text[--start] = static_cast<wchar_t>(digits[value % 16]);
    while ((value /= 16) != 0);
    buffer.append(text.data() + start, text.data() + text.size());
}

// False for what is left to the library.
bool AppendPlainly(CReportBuffer& buffer, wchar_t conversion, const CArgument& argument) {
    using EKind = CArgument::EKind;
    const EKind kind = argument.Kind();
    if (conversion == L's' && kind == EKind::Wide)
        Append(buffer, argument.Wide());
    else if (conversion == L'd' && kind == EKind::Int)
        AppendDecimal(buffer, argument.Int());
    else if (conversion == L'X' && (kind == EKind::Int || kind == EKind::UInt))
        AppendHexadecimal(buffer, static_cast<std::uint32_t>(argument.UInt()), "0123456789ABCDEF");
    else if (conversion == L'p' && kind == EKind::Pointer && argument.Pointer()) {
        Append(buffer, L"0x");
        AppendHexadecimal(buffer, reinterpret_cast<std::uintptr_t>(argument.Pointer()), "0123456789abcdef");
    } else
        return false;
    return true;
}

// Most lines have a few simple conversions, which the library's general way takes ten times as long for. False,
// with the buffer in any state, for all others.
bool ExpandPlainly(CReportBuffer& buffer, std::wstring_view format, std::span<const CArgument> arguments) {
    auto argument = arguments.begin();
    for (;;) {
        const std::size_t sign = format.find(L'%');
        Append(buffer, format.substr(0, sign));
        if (sign == format.npos)
            return true;
        if (sign + 1 == format.size() || argument == arguments.end() ||
            !AppendPlainly(buffer, format[sign + 1], *argument++))
            return false;
        format.remove_prefix(sign + 2);
    }
}

} // namespace

std::wstring ToWide(std::string_view utf8) {
    if (std::ranges::all_of(utf8, [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return {utf8.begin(), utf8.end()};
    try {
        return platform::FromUtf8(utf8);
    } catch (const platform::CTextError&) {
        std::wstring text;
        for (const char c : utf8)
            text += static_cast<wchar_t>(static_cast<unsigned char>(c));
        return text;
    }
}

std::wstring_view ExpandReport(CReportBuffer& buffer, const wchar_t* format, std::span<const CArgument> arguments) {
    const std::wstring_view text = format ? std::wstring_view(format) : std::wstring_view();
    if (text.find(L'%') == text.npos)
        return text;
    if (!ExpandPlainly(buffer, text, arguments)) {
        const std::wstring expanded = ExpandByLibrary(text, arguments);
        buffer.clear();
        Append(buffer, expanded);
    }
    return {buffer.data(), buffer.size()};
}

std::wstring FormatReport(const wchar_t* format, std::span<const CArgument> arguments) {
    CReportBuffer buffer;
    return std::wstring(ExpandReport(buffer, format, arguments));
}

} // namespace BugSlayerUtil
