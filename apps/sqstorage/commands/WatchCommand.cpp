// watch: changes as they come.
#include "ChangeLines.h"
#include "Command.h"
#include "CommandOptions.h"
#include "apps/sqstorage/store/ChangeKinds.h"
#include "apps/sqstorage/store/ChangeWatch.h"
#include "platform/interrupt.h"

#include <fmt/format.h>
#include <memory>
#include <string>

namespace sqCli {

namespace {

constexpr const char* Manual = R"(
A line for each change, until the program is interrupted (Ctrl+C, or a request to
terminate), which ends it with status 0: the local time with its distance from
UTC, the kind of change, and the key of what changed, 0 where the kind has none.
With --format json each line is an object of its own, with the keys TIME, CHANGE
and VALUE; csv has the same names as header, before the first change.

A store tells of the changes that are made through it, in its own process. What
other programs change is not seen here, not even in the same database: use
"sqstorage import --watch" to see what an import does.

Kinds of change, and their bits:
{}
--mask takes names and numbers, with commas between them:

  sqstorage watch --mask holidays,holiday_dates
  sqstorage watch --mask 0x18

sqstorage itself never tells of client: hosts do, for a use of their own.
)";

std::string KindsText() {
    std::string text;
    for (std::size_t bit = 0; bit < std::size(ChangeKinds); ++bit)
        text += fmt::format("  0x{:05X}  {}\n", 1U << bit, ChangeKinds[bit]);
    return text;
}

EExitStatus Watch(const std::string& kinds, const CConsole& console) {
    const ULONG mask = kinds.empty() ? AllChanges : ParseChangeMask(kinds);
    CStore store;
    CChangeLines lines(console);
    CChangeWatch watch(store, mask, [&](ULONG change, LONG value) { lines.Tell(change, value); });
    // Behind the store: the database engine takes interrupts for itself when it is first used.
    const platform::CInterruptWatch interrupts;
    console.Note("Watching the changes made in this process; interrupt the program to end it.");
    watch.Run();
    return EExitStatus::Done;
}

} // namespace

void AddWatchCommand(CLI::App& program, Action& chosen) {
    const auto mask = std::make_shared<std::string>();
    CCommandOptions command(program, "watch", "Show changes as they come", fmt::format(Manual, KindsText()));
    command.Option("--mask", *mask, "BITS", "Only these kinds of change. Default: all");
    command.Does(chosen, [mask](const CConsole& console) { return Watch(*mask, console); });
}

} // namespace sqCli
