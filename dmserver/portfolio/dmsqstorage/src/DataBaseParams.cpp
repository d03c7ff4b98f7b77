#include "DataBaseParams.h"

#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/com_error.h"
#include "platform/known_folder.h"
#include "platform/registry.h"
#include "unicomp/ProductLocation/interface/ModuleVersionInfo.h"
#include "unicomp/ProductLocation/interface/ProductPath.h"

#include <optional>

namespace sqStorage {

namespace {

using OptionalKey = std::optional<platform::CRegistryKey>;

// A missing key or value leaves an empty text.
std::wstring ReadText(const OptionalKey& key, const wchar_t* name) {
    return key ? key->ReadText(name).value_or(std::wstring()) : std::wstring();
}

std::wstring Reason(LONG status, const platform::CBstr& path) {
    if (status == ErrorResourceDataNotFound)
        return L"the host executable does not say its company and product: embed them with add_version_info()";
    const std::wstring advice = L": name the dictionary's file in the registry value DictionaryPath";
    return (path.IsNull() ? L"this user has no folder for the product's data"
                          : L"the folder \"" + std::wstring(path.View()) + L"\" cannot be created") +
           advice;
}

std::wstring HostProductPath(ULONG location) {
    const ModuleVersionInfo info(nullptr);
    platform::CBstr path;
    if (const LONG status = GetProductPath(path.Put(), info.Company, info.Product, location, 1))
        platform::ThrowStatus(status, Reason(status, path));
    return path.Text();
}

} // namespace

void CDataBaseParams::MakeDatabaseParams() {
    const BugSlayerUtil::CScope scope(this);
    const std::wstring path = HostProductPath(ProductLocationRegistry) + L"\\Databases\\Portfolio";
    scope.Trace(L"%s", path);
    const OptionalKey key = platform::CRegistryKey::Open(platform::ERegistryRoot::Machine, path);
    _DatabasePath = ReadText(key, L"Path");
    if (_DatabasePath.empty())
        scope.Throw(L"!_DatabasePath.empty()");
    _UserName = ReadText(key, L"Username");
    if (_UserName.empty())
        scope.Throw(L"!_UserName.empty()");
    _Password = ReadText(key, L"Password");
    if (_Password.empty())
        scope.Throw(L"!_Password.empty()");
    m_DictionaryPath = ReadText(key, L"DictionaryPath");
    if (m_DictionaryPath.empty()) {
        const std::wstring separator(1, platform::PathSeparator);
        m_DictionaryPath = HostProductPath(ProductLocationCommonAppData) + separator + L"Databases" + separator +
                           L"Dictionary.csv";
    }
    m_Valid = 1;
}

} // namespace sqStorage
