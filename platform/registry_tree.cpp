#include "platform/registry_tree.h"

#include "platform/text.h"
#include "platform/toml_text.h"

#include <limits>

namespace platform {

namespace {

constexpr wchar_t Separator = L'\\';
constexpr std::wstring_view DefaultValueName = L"@";

constexpr std::string_view Preamble =
    "# A root of the sqStorage registry. It may be edited by hand while no program is writing to it.\n"
    "# One table per key, its path in quotes: ['SOFTWARE\\Company\\Product\\Databases\\Portfolio']\n"
    "# Values are texts in quotes or whole numbers of 32 bits. \"@\" is the default value of its key.\n"
    "# Names compare without case. Comments are lost when a program writes the file.\n\n";

std::wstring JoinPath(const std::wstring& parent, std::wstring_view name) {
    std::wstring path = parent;
    if (!path.empty())
        path += Separator;
    return path += name;
}

std::wstring PrefixBelow(std::wstring_view foldedPath) {
    std::wstring prefix(foldedPath);
    if (!prefix.empty())
        prefix += Separator;
    return prefix;
}

std::wstring_view ValueName(std::wstring_view name) { return name == DefaultValueName ? L"" : name; }

RegistryValue CheckedValue(const tagTomlValue& value) {
    if (const auto* text = std::get_if<std::string>(&value.Value))
        return FromUtf8(*text);
    const std::int64_t number = std::get<std::int64_t>(value.Value);
    if (number < std::numeric_limits<LONG>::min() || number > std::numeric_limits<LONG>::max())
        throw CTomlError("the number of \"" + value.Name + "\" does not fit into 32 bits", value.Line);
    return static_cast<LONG>(number);
}

std::variant<std::string, std::int64_t> TomlContent(const RegistryValue& value) {
    if (const auto* text = std::get_if<std::wstring>(&value))
        return ToUtf8(*text);
    return std::int64_t{std::get<LONG>(value)};
}

} // namespace

std::wstring CRegistryTree::NormalizePath(std::wstring_view path) {
    std::wstring result;
    while (!path.empty()) {
        const std::size_t length = std::min(path.find(Separator), path.size());
        if (length > 0)
            result = JoinPath(result, path.substr(0, length));
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return result;
}

CRegistryTree CRegistryTree::Parse(std::string_view text) {
    CRegistryTree tree;
    tree.AddTable(ParseToml(text), L"");
    return tree;
}

void CRegistryTree::AddTable(const tagTomlTable& table, const std::wstring& path) {
    Create(path);
    for (const tagTomlValue& value : table.Values)
        AddValue(value, path);
    // A table within a table is a key below it, as who writes [a.b] means it.
    for (const tagTomlTable& child : table.Tables)
        AddTable(child, NormalizePath(JoinPath(path, FromUtf8(child.Name))));
}

void CRegistryTree::AddValue(const tagTomlValue& value, const std::wstring& path) {
    const std::wstring name = FromUtf8(value.Name);
    if (Find(path, name) != nullptr)
        throw CTomlError("the value \"" + value.Name +
                             "\" stands twice in its key, since names compare without case; remove one",
                         value.Line);
    Write(path, name, CheckedValue(value));
}

std::string CRegistryTree::Format() const {
    tagTomlTable root{};
    for (const auto& [folded, key] : m_Keys) {
        // A key that only leads to others needs no table of its own.
        if (key.Values.empty() && FirstBelow(folded) != m_Keys.end())
            continue;
        tagTomlTable child{.Name = ToUtf8(key.Path), .Line = 0, .Values = {}, .Tables = {}};
        tagTomlTable& table = folded.empty() ? root : child;
        for (const auto& [foldedName, value] : key.Values) {
            const std::wstring_view name = value.Name.empty() ? DefaultValueName : std::wstring_view(value.Name);
            table.Values.push_back({ToUtf8(name), 0, TomlContent(value.Content)});
        }
        if (!folded.empty())
            root.Tables.push_back(std::move(child));
    }
    return std::string(Preamble) + FormatToml(root);
}

const CRegistryTree::tagKey* CRegistryTree::FindKey(std::wstring_view path) const {
    const auto found = m_Keys.find(FoldCase(path));
    return found == m_Keys.end() ? nullptr : &found->second;
}

CRegistryTree::Keys::const_iterator CRegistryTree::FirstBelow(std::wstring_view foldedPath) const {
    const std::wstring prefix = PrefixBelow(foldedPath);
    const auto first = prefix.empty() ? std::next(m_Keys.begin()) : m_Keys.lower_bound(prefix);
    return first != m_Keys.end() && first->first.starts_with(prefix) ? first : m_Keys.end();
}

bool CRegistryTree::Contains(std::wstring_view path) const { return FindKey(path) != nullptr; }

const RegistryValue* CRegistryTree::Find(std::wstring_view path, std::wstring_view name) const {
    const tagKey* const key = FindKey(path);
    if (key == nullptr)
        return nullptr;
    const auto found = key->Values.find(FoldCase(ValueName(name)));
    return found == key->Values.end() ? nullptr : &found->second.Content;
}

std::vector<std::wstring> CRegistryTree::SubKeys(std::wstring_view path) const {
    const std::wstring prefix = PrefixBelow(FoldCase(path));
    std::vector<std::wstring> names;
    for (auto key = FirstBelow(FoldCase(path)); key != m_Keys.end() && key->first.starts_with(prefix); ++key) {
        if (key->first.find(Separator, prefix.size()) != std::wstring::npos)
            continue;
        const std::wstring& spelled = key->second.Path;
        names.push_back(spelled.substr(spelled.rfind(Separator) + 1));
    }
    return names;
}

std::vector<std::wstring> CRegistryTree::Values(std::wstring_view path) const {
    std::vector<std::wstring> names;
    if (const tagKey* const key = FindKey(path)) {
        for (const auto& [folded, value] : key->Values)
            names.push_back(value.Name);
    }
    return names;
}

bool CRegistryTree::Create(std::wstring_view path) {
    bool created = false;
    for (std::size_t end = 0; end < path.size();) {
        end = std::min(path.find(Separator, end + 1), path.size());
        const std::wstring_view part = path.substr(0, end);
        created |= m_Keys.try_emplace(FoldCase(part), tagKey{std::wstring(part), {}}).second;
    }
    return created;
}

bool CRegistryTree::DeleteTree(std::wstring_view path) {
    const std::wstring folded = FoldCase(path);
    if (m_Keys.erase(folded) == 0)
        return false;
    const std::wstring prefix = PrefixBelow(folded);
    const auto first = m_Keys.lower_bound(prefix);
    auto last = first;
    while (last != m_Keys.end() && last->first.starts_with(prefix))
        ++last;
    m_Keys.erase(first, last);
    return true;
}

bool CRegistryTree::Write(std::wstring_view path, std::wstring_view name, RegistryValue value) {
    Create(path);
    auto& values = m_Keys.at(FoldCase(path)).Values;
    const std::wstring_view plain = ValueName(name);
    const auto [place, added] = values.try_emplace(FoldCase(plain), tagValue{std::wstring(plain), value});
    if (added)
        return true;
    if (place->second.Content == value)
        return false;
    place->second.Content = std::move(value);
    return true;
}

bool CRegistryTree::DeleteValue(std::wstring_view path, std::wstring_view name) {
    const auto key = m_Keys.find(FoldCase(path));
    return key != m_Keys.end() && key->second.Values.erase(FoldCase(ValueName(name))) > 0;
}

} // namespace platform
