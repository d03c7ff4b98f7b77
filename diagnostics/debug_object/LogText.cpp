#include "LogText.h"

#include "diagnostics/interface/RecordNames.h"
#include "platform/text.h"

#include <fmt/format.h>

namespace DebugLog {

namespace Name = BugSlayerUtil::Name;

namespace {

// "sqStorage_Holidays.cpp:42", without the folders.
std::string PlaceText(const CRecord& record) {
    const std::wstring_view file = record.Text(Name::File.Get());
    return fmt::format("{}:{}", OneLine(file.substr(file.rfind(L'/') + 1)), record.Number(Name::Line.Get()));
}

std::string FunctionText(const CRecord& record) { return OneLine(record.Text(Name::Function.Get())); }

std::string StatusText(const CRecord& record) {
    if (!record.Has(Name::Status.Get()))
        return {};
    return fmt::format(" (0x{:08X})", static_cast<std::uint32_t>(record.Number(Name::Status.Get())));
}

std::string LeaveText(const CRecord& record) {
    std::string text = fmt::format("leave after {:.3f} ms", record.Real(Name::Delay.Get()));
    if (record.Has(Name::Count.Get()))
        text += fmt::format(", call {}", record.Number(Name::Count.Get()));
    if (record.Has(Name::TotalTime.Get()))
        text += fmt::format(", {:.3f} ms in all", record.Real(Name::TotalTime.Get()));
    return text;
}

std::string DescribeError(const CRecord& error) {
    const std::wstring_view description = error.Text(Name::Description.Get());
    return fmt::format("{}: {}{} ({})", FunctionText(error),
                       description.empty() ? "an exception of unknown type" : OneLine(description),
                       StatusText(error), PlaceText(error));
}

} // namespace

std::string ToUtf8Always(std::wstring_view text) {
    try {
        return platform::ToUtf8(text);
    } catch (const platform::CTextError&) {
        std::string plain;
        for (const wchar_t c : text)
            plain += c >= 0 && c < 0x80 ? static_cast<char>(c) : '?';
        return plain;
    }
}

std::wstring ToWideAlways(std::string_view utf8) {
    try {
        return platform::FromUtf8(utf8);
    } catch (const platform::CTextError&) {
        std::wstring plain;
        for (const char c : utf8)
            plain += static_cast<unsigned char>(c) < 0x80 ? static_cast<wchar_t>(c) : L'?';
        return plain;
    }
}

std::string OneLine(std::wstring_view text) {
    const std::string bytes = ToUtf8Always(text);
    std::string line;
    line.reserve(bytes.size());
    for (const char c : bytes) {
        if (c == '\n')
            line += "\\n";
        else if (c == '\r')
            line += "\\r";
        else if (static_cast<unsigned char>(c) < 0x20 && c != '\t')
            line += '?';
        else
            line += c;
    }
    return line;
}

std::string TraceText(const CRecord& record) {
    const LONG ident = record.Number(Name::Ident.Get());
    std::string text = FunctionText(record) + ": ";
    if (ident == 0)
        text += OneLine(record.Text(Name::Message.Get()));
    else
        text += ident > 0 ? "enter" : LeaveText(record);
    if (record.Has(Name::OutFile.Get()))
        text += fmt::format(" [for {}]", OneLine(record.Text(Name::OutFile.Get())));
    return text;
}

std::string AssertText(const CRecord& record) {
    std::string text = fmt::format("{}: failed: {}{}", FunctionText(record),
                                   OneLine(record.Text(Name::Description.Get())), StatusText(record));
    if (record.Has(Name::LastErrorCode.Get()))
        text += fmt::format(", last error {}", record.Number(Name::LastErrorCode.Get()));
    return text + fmt::format(" ({})", PlaceText(record));
}

std::string ErrorText(const CRecord& record) {
    std::string text;
    for (const CRecord* error = record.Inner(); error; error = error->Inner()) {
        // A guard's own error says nothing of its own when it wraps another.
        const bool isEmpty = error->Text(Name::Description.Get()).empty() && error->Inner();
        if (isEmpty)
            text += FunctionText(*error) + ": ";
        else
            text += DescribeError(*error) + (error->Inner() ? "; caused by: " : "");
    }
    return text.empty() ? "an error without a description" : text;
}

std::string ExceptionText(const CRecord& record) {
    const auto code = static_cast<DWORD>(record.Number(Name::Code.Get()));
    const char* kind = "structured exception";
    if (record.Number(Name::ExceptionType.Get()) != 0)
        kind = "unhandled exception";
    else if (code == BugSlayerUtil::InvalidParameterCode)
        kind = "invalid parameter";
    return fmt::format("{} 0x{:08X} at 0x{:x}, last error {}", kind, code,
                       static_cast<std::uint64_t>(record.Number64(Name::Address.Get())),
                       record.Number(Name::ErrorCode.Get()));
}

} // namespace DebugLog
