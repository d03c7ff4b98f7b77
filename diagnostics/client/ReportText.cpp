#include "diagnostics/interface/ReportText.h"

#include "ToWide.h"
#include "platform/text.h"

#include <algorithm>
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

std::wstring FormatReport(const wchar_t* format, std::span<const CArgument> arguments) {
    const std::wstring_view text = format ? std::wstring_view(format) : std::wstring_view();
    if (text.find(L'%') == text.npos)
        return std::wstring(text);
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

} // namespace BugSlayerUtil
