#include "ChangeKinds.h"

#include "apps/sqstorage/ExitStatus.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <optional>

namespace sqCli {

namespace {

std::optional<ULONG> ParseNumber(std::string_view text) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal)
        text.remove_prefix(2);
    ULONG number = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, hexadecimal ? 16 : 10);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

ULONG ParsePart(std::string_view part) {
    const auto* kind = std::ranges::find(ChangeKinds, part);
    if (kind != std::end(ChangeKinds))
        return 1U << (kind - std::begin(ChangeKinds));
    const auto number = ParseNumber(part);
    if (!number)
        throw CCommandError(EExitStatus::WrongUsage,
                            fmt::format("\"{}\" is no kind of change: say a number, or some of {}.", part,
                                        ChangeNames(AllChanges)));
    if (*number == 0 || *number > AllChanges)
        throw CCommandError(EExitStatus::WrongUsage,
                            fmt::format("The mask {} names no change, or more than there are: say a number from 1 "
                                        "to 0x{:X}.",
                                        part, AllChanges));
    return *number;
}

} // namespace

std::string ChangeNames(ULONG mask) {
    std::string names;
    for (std::size_t bit = 0; bit < std::size(ChangeKinds); ++bit)
        if (mask >> bit & 1)
            names.append(names.empty() ? "" : ",").append(ChangeKinds[bit]);
    return names;
}

ULONG ParseChangeMask(std::string_view text) {
    ULONG mask = 0;
    for (;;) {
        const std::size_t comma = text.find(',');
        mask |= ParsePart(text.substr(0, comma));
        if (comma == std::string_view::npos)
            return mask;
        text.remove_prefix(comma + 1);
    }
}

} // namespace sqCli
