#include "Connection.h"

#include "StoreFailure.h"
#include "apps/sqstorage/ExitStatus.h"
#include "platform/registry.h"
#include "unicomp/ProductLocation/interface/ModuleVersionInfo.h"

#include <optional>

namespace sqCli {

namespace {

std::wstring Required(const platform::CRegistryKey& key, const wchar_t* name) {
    std::wstring value = key.ReadText(name).value_or(std::wstring());
    if (value.empty())
        throw CCommandError(EExitStatus::NotOpened, ValueMissing(name, MachineRegistryFile()));
    return value;
}

} // namespace

std::wstring ConnectionKey() {
    const ModuleVersionInfo program(nullptr);
    return sqSetup::ConnectionKey(program.Company, program.Product);
}

std::wstring MachineRegistryFile() { return platform::RegistryDirectory() + L"/machine.toml"; }

sqSetup::tagConnection ReadConnection() {
    const std::wstring path = ConnectionKey();
    const auto key = platform::CRegistryKey::Open(platform::ERegistryRoot::Machine, path);
    if (!key || !sqSetup::IsRegistered(path))
        throw CCommandError(EExitStatus::NotOpened, NoDatabaseNamed(MachineRegistryFile()));
    return {.Path = Required(*key, L"Path"),
            .UserName = Required(*key, L"Username"),
            .Password = Required(*key, L"Password"),
            .DictionaryPath = key->ReadText(L"DictionaryPath").value_or(std::wstring())};
}

bool IsLocalFile(const std::wstring& databasePath) {
    const std::size_t colon = databasePath.find(L':');
    return colon == std::wstring::npos || colon == 0 || databasePath.find_first_of(L"/\\.") == 0;
}

} // namespace sqCli
