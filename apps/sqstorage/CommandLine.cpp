#include "CommandLine.h"

#include "Console.h"
#include "ExitStatus.h"
#include "commands/Command.h"
#include "commands/CommandOptions.h"
#include "platform/com/com_error.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/registry.h"
#include "platform/terminal.h"
#include "platform/text.h"
#include "store/Store.h"
#include "store/StoreFailure.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <string_view>

namespace sqCli {

namespace {

constexpr const char* Description = "sqstorage - make, fill and look after a store of symbols and reference data\n";

constexpr const char* Manual = R"(
Examples:
  sqstorage create                    the database in its usual place
  sqstorage import data               fill it with the reference data shipped
  sqstorage list holiday_dates --calendar NYSE --from 2027-01-01
  sqstorage --format json list settings
  sqstorage week CME --zone local     when it trades, on this machine's clock
  sqstorage symbol ESZ26 --feed Simulation
  sqstorage export backup             the same data as files
  sqstorage --registry ./demo/registry check

"sqstorage COMMAND --help" tells more of each command.

Output:
  Results go to the standard output, everything else to the standard error
  stream. table is for people. csv has a header, commas, quotes as in RFC 4180.
  json is an array with an object for each row, keys the column names, dates as
  "YYYY-MM-DD". Text is UTF-8.
  Where nobody reads any more, as behind "head", a command that only shows
  something ends as done.

Files:
  ~/.config/sqstorage/registry        machine.toml and others: where the database is
  ~/.local/share/sqStorage/sqStorage  the database, unless another place was named
  ~/.local/state/sqstorage            the log

Environment:
  SQSTORAGE_REGISTRY_DIR  where the registry files are; --registry goes before it
  SQSTORAGE_STATE_DIR     where the log goes
  SQSTORAGE_MODULE_PATH   where the libraries are, when not beside the program
  FIREBIRD_LOCK           where the database engine keeps its lock files
  NO_COLOR                set to anything: no colours on a terminal

Status:
  0  done
  1  the store said no: nothing found, refused; or check has something to say
  2  wrong usage, or a file that cannot be read or written
  3  the store could not be opened
  4  some rows of an import were refused
)";

struct tagGlobalOptions {
    std::string Registry;
    std::string Format = "table";
    bool Quiet = false;
};

void AddGlobalOptions(CLI::App& program, tagGlobalOptions& options) {
    program.add_option("--registry", options.Registry, "Where the registry files are")->type_name("DIR");
    AddChoice(program, "--format", options.Format, "table|csv|json", "How results are written. Default: table");
    program.add_flag("--quiet", options.Quiet, "Only results, warnings and errors: no notes and no progress");
    program.set_version_flag("--version", "sqstorage " SQ_VERSION);
}

EFormat FormatOf(std::string_view word) {
    if (word == "csv")
        return EFormat::Csv;
    return word == "json" ? EFormat::Json : EFormat::Table;
}

void AddCommands(CLI::App& program, Action& chosen) {
    program.require_subcommand(0, 1);
    program.fallthrough();
    AddCreateCommand(program, chosen);
    AddImportCommand(program, chosen);
    AddExportCommand(program, chosen);
    AddListCommand(program, chosen);
    AddSymbolCommand(program, chosen);
    AddWeekCommand(program, chosen);
    AddWatchCommand(program, chosen);
    AddCheckCommand(program, chosen);
    AddUpgradeCommand(program, chosen);
    program.footer(Manual);
}

void UseRegistry(const std::string& directory) {
    if (directory.empty())
        return;
    const auto absolute = std::filesystem::absolute(platform::ToPath(platform::FromUtf8(directory)));
    platform::SetEnvironment(L"SQSTORAGE_REGISTRY_DIR", platform::FromPath(absolute.lexically_normal()));
}

EExitStatus Fail(const CConsole& console, EExitStatus status, std::string sentence) {
    if (!sentence.ends_with('.'))
        sentence += '.';
    console.Error(sentence);
    return status;
}

// Every failure ends here as one sentence and a status.
EExitStatus Run(const Action& action, const CConsole& console) {
    EExitStatus status = EExitStatus::Done;
    try {
        status = action(console);
        console.Flush();
        return status;
    } catch (const COutputClosed&) {
        return status;
    } catch (const CCommandError& error) {
        return Fail(console, error.Status(), error.what());
    } catch (const CStoreRefusal& refusal) {
        return Fail(console, EExitStatus::Refused, refusal.what());
    } catch (const platform::CRegistryError& error) {
        return Fail(console, EExitStatus::NotOpened, fmt::format("The registry cannot be used: {}", error.what()));
    } catch (const platform::CFileError& error) {
        return Fail(console, EExitStatus::WrongUsage, fmt::format("The program {}", error.what()));
    } catch (const platform::CTextError& error) {
        return Fail(console, EExitStatus::WrongUsage,
                    fmt::format("A text is not UTF-8 ({}): write names and paths in that encoding", error.what()));
    } catch (const platform::CComError& error) {
        return Fail(console, EExitStatus::NotOpened, PlainSentence(error.Text()));
    } catch (const std::exception& error) {
        return Fail(console, EExitStatus::Refused,
                    fmt::format("The program failed unexpectedly: {}", error.what()));
    }
}

int Usage(const CLI::App& program, const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        program.exit(error); // help or version, to the standard output
        return static_cast<int>(EExitStatus::Done);
    }
    const CConsole console(EFormat::Table, false);
    Fail(console, EExitStatus::WrongUsage, fmt::format("{}: see \"sqstorage --help\"", error.what()));
    return static_cast<int>(EExitStatus::WrongUsage);
}

} // namespace

int RunCommandLine(int count, const char* const* arguments) {
    platform::SecureStandardStreams();
    tagGlobalOptions options;
    Action chosen;
    CLI::App program(Description, "sqstorage");
    AddGlobalOptions(program, options);
    AddCommands(program, chosen);
    try {
        program.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return Usage(program, error);
    }
    const CConsole console(FormatOf(options.Format), options.Quiet);
    return static_cast<int>(Run(
        [&](const CConsole& used) {
            if (!chosen)
                throw CCommandError(EExitStatus::WrongUsage,
                                    "No command is given: say what to do, as \"sqstorage --help\" tells.");
            UseRegistry(options.Registry);
            return chosen(used);
        },
        console));
}

} // namespace sqCli
