// The connection parameters of the host's product, read from the registry once in a process.
//
// They stand under the machine root, below SOFTWARE\company\product\Databases\Portfolio, where company and product
// are those of the host executable's version block: "Path", "Username", "Password", "DictionaryPath".
#pragma once

#include <string>

namespace sqStorage {

class CDataBaseParams {
public:
    // Reads all values. Raises with the failing condition as its text, and the object then stays invalid.
    void MakeDatabaseParams();

    bool IsValid() const { return m_Valid != 0; }
    const std::wstring& DatabasePath() const { return _DatabasePath; }
    const std::wstring& UserName() const { return _UserName; }
    // In clear, as the registry holds it.
    const std::wstring& Password() const { return _Password; }
    // Used as it stands; the file need not exist.
    const std::wstring& DictionaryPath() const { return m_DictionaryPath; }

private:
    int m_Valid = 0;
    std::wstring _DatabasePath;
    std::wstring _UserName;
    std::wstring _Password;
    std::wstring m_DictionaryPath;
};

} // namespace sqStorage
