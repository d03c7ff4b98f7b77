#pragma once
// One root of the registry in memory: keys by path, values by name, without regard to case. Behind registry.h.

#include "platform/registry.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class CRegistryTree {
public:
    // The text of a registry file; CTomlError when it is malformed.
    [[nodiscard]] static CRegistryTree Parse(std::string_view text);
    [[nodiscard]] std::string Format() const;

    // Every path below is in this form: "\" between the parts and nowhere else.
    [[nodiscard]] static std::wstring NormalizePath(std::wstring_view path);

    [[nodiscard]] bool Contains(std::wstring_view path) const;
    // Null when there is none.
    [[nodiscard]] const RegistryValue* Find(std::wstring_view path, std::wstring_view name) const;
    [[nodiscard]] std::vector<std::wstring> SubKeys(std::wstring_view path) const;
    [[nodiscard]] std::vector<std::wstring> Values(std::wstring_view path) const;

    // Each tells whether anything changed.
    bool Create(std::wstring_view path);
    bool DeleteTree(std::wstring_view path);
    bool Write(std::wstring_view path, std::wstring_view name, RegistryValue value);
    bool DeleteValue(std::wstring_view path, std::wstring_view name);

private:
    struct tagValue {
        std::wstring Name;
        RegistryValue Content;
    };
    struct tagKey {
        std::wstring Path;
        std::map<std::wstring, tagValue> Values; // by folded name
    };
    using Keys = std::map<std::wstring, tagKey>; // by folded path

    [[nodiscard]] const tagKey* FindKey(std::wstring_view path) const;
    [[nodiscard]] Keys::const_iterator FirstBelow(std::wstring_view foldedPath) const;
    void AddTable(const struct tagTomlTable& table, const std::wstring& path);
    void AddValue(const struct tagTomlValue& value, const std::wstring& path);

    Keys m_Keys{{L"", {}}};
};

} // namespace platform
