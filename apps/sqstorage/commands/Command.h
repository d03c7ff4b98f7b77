// The commands: one source file for each. A function below adds its command to the program's command line; when the
// user chose it, `chosen` is what to run once the whole line is parsed and the console is there.
#pragma once

#include "apps/sqstorage/Console.h"
#include "apps/sqstorage/ExitStatus.h"

#include <functional>

namespace CLI {
class App;
}

namespace sqCli {

// Raises CCommandError and what the libraries raise; CommandLine.cpp turns that into words and a status.
using Action = std::function<EExitStatus(const CConsole&)>;

void AddCreateCommand(CLI::App& program, Action& chosen);
void AddImportCommand(CLI::App& program, Action& chosen);
void AddExportCommand(CLI::App& program, Action& chosen);
void AddListCommand(CLI::App& program, Action& chosen);
void AddSymbolCommand(CLI::App& program, Action& chosen);
void AddWeekCommand(CLI::App& program, Action& chosen);
void AddCheckCommand(CLI::App& program, Action& chosen);
void AddUpgradeCommand(CLI::App& program, Action& chosen);
void AddWatchCommand(CLI::App& program, Action& chosen);

} // namespace sqCli
