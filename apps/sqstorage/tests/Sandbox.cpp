#include "Sandbox.h"

#include "dmserver/dmudfcom/interface/TableRows.h"
#include "platform/com/activation.h"
#include "platform/com/bstr.h"
#include "platform/text.h"

#include <cstdlib>

namespace sqCliTest {

namespace {

using IDM_dmFirebird::IdmDatabaseQuery;
using IDM_dmFirebird::IdmDatabaseTransaction;
using platform::CBstr;
using platform::CComPtr;

std::wstring Wide(const std::filesystem::path& path) { return platform::FromPath(path); }

// One folder for all tests of the process: the engine reads the variable once.
std::wstring LockFolder() {
    static const platform::CTemporaryDirectory folder("sqstorage-lock");
    return folder.Name();
}

std::string FromEnvironment(const wchar_t* name) {
    return platform::ToUtf8(platform::GetEnvironment(name).value_or(std::wstring()));
}

} // namespace

CHeldDatabase::CHeldDatabase(const std::filesystem::path& file) {
    platform::ThrowIfFailed(platform::CreateInstance(IDM_dmFirebird::CLSID_dmDatabase, m_Database));
    platform::ThrowIfFailed(
        m_Database->Open(CBstr(Wide(file)).Get(), CBstr(L"SYSDBA").Get(), CBstr(L"masterkey").Get()));
}

CHeldDatabase::~CHeldDatabase() { m_Database->Close(); }

void CHeldDatabase::Run(std::wstring_view statement) { Open(statement, nullptr); }

LONG CHeldDatabase::Number(std::wstring_view statement) {
    CComPtr<IDM_dmudfcom::IdmTable> table;
    platform::ThrowIfFailed(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, table));
    Open(statement, table.Get());
    return static_cast<LONG>(table.As<IDM_dmudfcom::ITableRows>()->Integer(0, 0));
}

void CHeldDatabase::Open(std::wstring_view statement, IDispatch* results) {
    CComPtr<IdmDatabaseTransaction> transaction;
    CComPtr<IdmDatabaseQuery> query;
    LONG all = 0;
    platform::ThrowIfFailed(m_Database->GetTransaction(transaction.Put()));
    platform::ThrowIfFailed(transaction->GetQuery(query.Put()));
    platform::ThrowIfFailed(query->Open(CBstr(statement).Get(), nullptr, results));
    platform::ThrowIfFailed(query->Fetch(&all));
    platform::ThrowIfFailed(query->Close());
    platform::ThrowIfFailed(transaction->Finish());
}

Sandbox::Sandbox() : m_Folder("sqstorage-test"), m_Locks(L"FIREBIRD_LOCK", LockFolder()) {
    // What cmake/SanitizerOptions.cpp says in the test programs: the program itself is as it is shipped.
    platform::WriteFileAtomically(Folder() / "leaks", "leak:libfbclient\n");
    platform::WriteFileAtomically(Folder() / "races", "race:libEngine12\nrace:libfbclient\n");
}

Environment Sandbox::MakeEnvironment() const {
    std::map<std::string, std::string> variables{
        {"PATH", FromEnvironment(L"PATH")},
        {"HOME", (Folder() / "home").string()},
        {"SQSTORAGE_STATE_DIR", (Folder() / "state").string()},
        {"FIREBIRD_LOCK", platform::ToUtf8(LockFolder())},
        {"LSAN_OPTIONS", "print_suppressions=0:suppressions=" + (Folder() / "leaks").string()},
        {"TSAN_OPTIONS", "detect_deadlocks=0:suppressions=" + (Folder() / "races").string()},
        {"UBSAN_OPTIONS", "print_stacktrace=1"},
    };
    for (const auto& [name, value] : m_Variables)
        variables[name] = value;
    Environment environment;
    for (const auto& [name, value] : variables)
        environment.push_back(name + "=" + value);
    return environment;
}

tagEnd Sandbox::RunBare(const std::vector<std::string>& arguments) {
    return RunProgram(SQ_PROGRAM, arguments, MakeEnvironment(), Folder());
}

std::vector<std::string> Sandbox::WithRegistry(const std::vector<std::string>& arguments) const {
    std::vector<std::string> line{"--registry", Registry().string()};
    line.insert(line.end(), arguments.begin(), arguments.end());
    return line;
}

tagEnd Sandbox::Run(const std::vector<std::string>& arguments) { return RunBare(WithRegistry(arguments)); }

tagEnd Sandbox::RunInto(const std::filesystem::path& output, const std::vector<std::string>& arguments) {
    return RunProgramInto(output, SQ_PROGRAM, WithRegistry(arguments), MakeEnvironment(), Folder());
}

tagEnd Sandbox::RunWithoutOutput(const std::vector<std::string>& arguments) {
    std::vector<std::string> line{"-c", "exec \"$0\" \"$@\" >&-", SQ_PROGRAM};
    for (std::string& argument : WithRegistry(arguments))
        line.push_back(std::move(argument));
    return RunProgram("/bin/sh", line, MakeEnvironment(), Folder());
}

tagEnd Sandbox::RunUnread(const std::vector<std::string>& arguments) {
    return RunProgramUnread(SQ_PROGRAM, WithRegistry(arguments), MakeEnvironment(), Folder());
}

std::unique_ptr<CRunningProgram> Sandbox::Start(const std::vector<std::string>& arguments) {
    return std::make_unique<CRunningProgram>(SQ_PROGRAM, WithRegistry(arguments), MakeEnvironment());
}

tagEnd Sandbox::RunOnTerminal(const std::vector<std::string>& arguments) {
    return RunInTerminal(SQ_PROGRAM, WithRegistry(arguments), MakeEnvironment());
}

void Sandbox::Create() {
    const tagEnd end = Run({"create", "--database", Database().string()});
    ASSERT_EQ(end.Status, 0) << end.Errors;
}

void Sandbox::CreateFilled() {
    Create();
    const tagEnd end = Run({"import", ShippedData.string()});
    ASSERT_EQ(end.Status, 0) << end.Errors;
}

std::filesystem::path Sandbox::Write(const std::string& name, std::string_view text) {
    const std::filesystem::path path = Folder() / name;
    platform::CreateDirectories(path.parent_path());
    platform::WriteFileAtomically(path, text);
    return path;
}

std::string Sandbox::Read(const std::filesystem::path& file) const { return platform::ReadFile(file); }

void Sandbox::WriteRegistry(const std::map<std::string, std::string>& values) {
    std::string text = "['SOFTWARE\\sqStorage\\sqStorage\\Databases\\Portfolio']\n";
    for (const auto& [name, value] : values)
        text += name + " = '" + value + "'\n";
    Write("registry/machine.toml", text);
}

void Sandbox::Register(const std::filesystem::path& database) {
    WriteRegistry({{"Path", database.string()}, {"Username", "SYSDBA"}, {"Password", "masterkey"}});
}

} // namespace sqCliTest
