// upgrade: a database of an older version of this program.
#include "Command.h"
#include "CommandOptions.h"
#include "apps/sqstorage/store/Connection.h"
#include "apps/sqstorage/store/StoreFailure.h"
#include "platform/com/com_error.h"

#include <fmt/format.h>

namespace sqCli {

namespace {

constexpr const char* Manual = R"(
The steps from the database's version to that of this program are done one after
the other, each whole or not at all. A database that is up to date stays as it
is, which is status 0 as well. Make a copy of the file before; an older program
does not open an upgraded database.
)";

EExitStatus Upgrade(const CConsole& console) {
    const sqSetup::tagConnection connection = ReadConnection();
    try {
        const LONG steps = sqSetup::UpgradeStorage(connection);
        console.Note(steps == 0 ? "The database was up to date already."
                                : fmt::format("The database is up to date now, after {} step(s).", steps));
    } catch (const platform::CComError& error) {
        throw CCommandError(EExitStatus::NotOpened, OpenReasonSentence(error.Text(), MachineRegistryFile()));
    }
    return EExitStatus::Done;
}

} // namespace

void AddUpgradeCommand(CLI::App& program, Action& chosen) {
    CCommandOptions command(program, "upgrade", "Bring the database up to this version of the program", Manual);
    command.Does(chosen, Upgrade);
}

} // namespace sqCli
