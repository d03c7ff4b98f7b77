// A place for one test: a folder with a registry, a state folder and a home of its own, in which the program runs.
#pragma once

#include "Process.h"
#include "dmserver/dmFirebird/interface/Database.h"
#include "platform/com/com_ptr.h"
#include "platform/environment.h"
#include "platform/file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sqCliTest {

// The database of a sandbox, opened in the test's own process: to change what the program would not, and to be in
// its way.
class CHeldDatabase {
public:
    explicit CHeldDatabase(const std::filesystem::path& file);
    ~CHeldDatabase();
    CHeldDatabase(const CHeldDatabase&) = delete;
    CHeldDatabase& operator=(const CHeldDatabase&) = delete;

    void Run(std::wstring_view statement);
    // The first number that a select gives.
    LONG Number(std::wstring_view statement);

private:
    void Open(std::wstring_view statement, IDispatch* results);

    platform::CComPtr<IDM_dmFirebird::IdmDatabase> m_Database;
};

class Sandbox : public testing::Test {
protected:
    Sandbox();

    // With "--registry" before the arguments.
    tagEnd Run(const std::vector<std::string>& arguments);
    // With the standard output into a file, which is not read back.
    tagEnd RunInto(const std::filesystem::path& output, const std::vector<std::string>& arguments);
    // Started without a standard output.
    tagEnd RunWithoutOutput(const std::vector<std::string>& arguments);
    // Nobody reads its standard output.
    tagEnd RunUnread(const std::vector<std::string>& arguments);
    std::unique_ptr<CRunningProgram> Start(const std::vector<std::string>& arguments);
    tagEnd RunOnTerminal(const std::vector<std::string>& arguments);
    // The arguments as they stand.
    tagEnd RunBare(const std::vector<std::string>& arguments);

    // A store, made by the program.
    void Create();
    // A store with the data that is shipped.
    void CreateFilled();

    std::filesystem::path Write(const std::string& name, std::string_view text);
    std::string Read(const std::filesystem::path& file) const;
    // Writes the registry as given, with an entry for each pair.
    void WriteRegistry(const std::map<std::string, std::string>& values);
    // The usual entries for this database.
    void Register(const std::filesystem::path& database);

    std::filesystem::path Folder() const { return m_Folder.Path(); }
    std::filesystem::path Database() const { return Folder() / "data" / "portfolio.fdb"; }
    std::filesystem::path Registry() const { return Folder() / "registry"; }
    std::string RegistryFile() const { return (Registry() / "machine.toml").string(); }

    // Variables of the program's environment, over what a sandbox has.
    std::map<std::string, std::string> m_Variables;

private:
    std::vector<std::string> WithRegistry(const std::vector<std::string>& arguments) const;
    Environment MakeEnvironment() const;

    platform::CTemporaryDirectory m_Folder;
    // This process opens databases too, and must meet the program at the same locks.
    platform::CScopedEnvironment m_Locks;
};

inline const std::filesystem::path ShippedData = SQ_SHIPPED_DATA;

} // namespace sqCliTest
