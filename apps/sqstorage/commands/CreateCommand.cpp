// create: the database with its schema, and the registry entries that lead to it.
#include "Command.h"
#include "CommandOptions.h"
#include "apps/sqstorage/store/Connection.h"
#include "apps/sqstorage/store/StoreFailure.h"
#include "platform/com/com_error.h"
#include "platform/file.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "unicomp/ProductLocation/interface/ModuleVersionInfo.h"
#include "unicomp/ProductLocation/interface/ProductPath.h"

#include <fmt/format.h>
#include <memory>
#include <string>
#include <vector>

namespace sqCli {

namespace {

using platform::FromUtf8;
using platform::ToUtf8;

constexpr const char* Manual = R"(
The database is a file that the embedded engine opens in this process, or one on
a Firebird server when PATH is host:path or host/port:path. Missing directories
above a file are made. The password goes into the registry file in clear; the
embedded engine does not look at it, a server does.

A host program finds the database by its own company and product, those of its
version block. --host writes the same entries for such a program:

  sqstorage create --host "My Company/My Platform"

Nothing is overwritten: a database file that exists, or an entry that names a
database already, ends the command with status 1 and everything as it was.
)";

struct tagCreateOptions {
    std::string Database;
    std::string User = "SYSDBA";
    std::string Password = "masterkey";
    std::string Dictionary;
    std::vector<std::string> Hosts;
};

// In the product's own data folder.
std::wstring DefaultDatabase() {
    const ModuleVersionInfo program(nullptr);
    platform::CBstr folder;
    if (GetProductPath(folder.Put(), program.Company, program.Product, ProductLocationCommonAppData, 0) != 0)
        throw CCommandError(EExitStatus::WrongUsage,
                            "There is no home directory to put the database in: name a file with --database.");
    return folder.Text() + std::wstring(L"/Databases/Portfolio.fdb");
}

std::wstring Absolute(const std::string& path) {
    return platform::FromPath(std::filesystem::absolute(platform::ToPath(FromUtf8(path))).lexically_normal());
}

std::string Required(const std::string& value, const char* option) {
    if (value.empty())
        throw CCommandError(EExitStatus::WrongUsage, fmt::format("{} is empty: give a value.", option));
    return value;
}

sqSetup::tagConnection ConnectionOf(const tagCreateOptions& options) {
    sqSetup::tagConnection connection;
    connection.Path = options.Database.empty() ? DefaultDatabase() : FromUtf8(options.Database);
    if (IsLocalFile(connection.Path))
        connection.Path = Absolute(ToUtf8(connection.Path));
    connection.UserName = FromUtf8(Required(options.User, "--user"));
    connection.Password = FromUtf8(Required(options.Password, "--password"));
    if (!options.Dictionary.empty())
        connection.DictionaryPath = Absolute(options.Dictionary);
    return connection;
}

std::wstring HostKey(const std::string& host) {
    const std::size_t slash = host.find('/');
    if (slash == std::string::npos || slash == 0 || slash + 1 == host.size())
        throw CCommandError(EExitStatus::WrongUsage,
                            fmt::format("\"{}\" names no host program: write it as \"Company/Product\".", host));
    return sqSetup::ConnectionKey(FromUtf8(host.substr(0, slash)), FromUtf8(host.substr(slash + 1)));
}

// Where the entries go; raises when one of them is taken.
std::vector<std::wstring> FreeKeys(const tagCreateOptions& options) {
    std::vector<std::wstring> keys{ConnectionKey()};
    for (const std::string& host : options.Hosts)
        keys.push_back(HostKey(host));
    for (const std::wstring& key : keys)
        if (sqSetup::IsRegistered(key))
            throw CCommandError(
                EExitStatus::Refused,
                fmt::format("{} names a database under \"{}\" already, which stays as it is: use that "
                            "one, remove the entry, or choose another place with --registry.",
                            ToUtf8(MachineRegistryFile()), ToUtf8(key)));
    return keys;
}

void MakeDatabase(const sqSetup::tagConnection& connection) {
    if (IsLocalFile(connection.Path)) {
        const std::filesystem::path file = platform::ToPath(connection.Path);
        if (platform::Exists(file))
            throw CCommandError(EExitStatus::Refused,
                                fmt::format("The database file \"{}\" exists already and is left as it is: choose "
                                            "another path with --database.",
                                            file.string()));
        try {
            platform::CreateDirectories(file.parent_path());
        } catch (const platform::CFileError& error) {
            throw CCommandError(EExitStatus::NotOpened,
                                fmt::format("The database cannot be created: {}. Choose another path with "
                                            "--database.",
                                            error.what()));
        }
    }
    try {
        sqSetup::CreateStorage(connection);
    } catch (const platform::CComError& error) {
        throw CCommandError(EExitStatus::NotOpened, PlainSentence(error.Text()));
    }
}

// A database that nothing leads to is not left behind.
void WriteEntries(const std::vector<std::wstring>& keys, const sqSetup::tagConnection& connection) {
    try {
        platform::CRegistryBatch together(platform::ERegistryRoot::Machine);
        for (const std::wstring& key : keys)
            sqSetup::RegisterConnection(key, connection);
        together.Commit();
    } catch (const std::exception& error) {
        if (IsLocalFile(connection.Path))
            platform::RemoveFile(platform::ToPath(connection.Path));
        throw CCommandError(EExitStatus::NotOpened,
                            fmt::format("The registry entries cannot be written: {}. Choose another place with "
                                        "--registry.",
                                        error.what()));
    }
}

EExitStatus Create(const tagCreateOptions& options, const CConsole& console) {
    const sqSetup::tagConnection connection = ConnectionOf(options);
    const std::vector<std::wstring> keys = FreeKeys(options);
    MakeDatabase(connection);
    WriteEntries(keys, connection);
    console.Note(fmt::format("The database \"{}\" is made, and {} leads to it.", ToUtf8(connection.Path),
                             ToUtf8(MachineRegistryFile())));
    return EExitStatus::Done;
}

} // namespace

void AddCreateCommand(CLI::App& program, Action& chosen) {
    const auto options = std::make_shared<tagCreateOptions>();
    CCommandOptions command(program, "create", "Make the database and the registry entries that lead to it",
                            Manual);
    command.Option(
        "--database", options->Database, "PATH",
        "Where the database is to be. Default: Databases/Portfolio.fdb in the data folder of the product, "
        "~/.local/share/sqStorage/sqStorage");
    command.Option("--user", options->User, "NAME", "Database user. Default: SYSDBA");
    command.Option("--password", options->Password, "TEXT", "Password of the user. Default: masterkey");
    command.Option("--dictionary", options->Dictionary, "PATH",
                   "The dictionary file of root settings. Default: Databases/Dictionary.csv in the data folder");
    command.Options("--host", options->Hosts, "COMPANY/PRODUCT",
                    "Write the entries for this host program, too; may be repeated");
    command.Does(chosen, [options](const CConsole& console) { return Create(*options, console); });
}

} // namespace sqCli
