#include "platform/registry.h"

#include "platform/registry_file.h"
#include "platform/registry_tree.h"
#include "platform/text.h"

namespace platform {

namespace {

// What cannot be written is refused before it reaches the file.
void CheckText(std::wstring_view text) { static_cast<void>(ToUtf8(text)); }

} // namespace

std::optional<CRegistryKey> CRegistryKey::Open(ERegistryRoot root, std::wstring_view path) {
    std::wstring name = CRegistryTree::NormalizePath(path);
    if (!ReadRegistry(root)->Contains(name))
        return std::nullopt;
    return CRegistryKey(root, std::move(name));
}

CRegistryKey CRegistryKey::Create(ERegistryRoot root, std::wstring_view path) {
    CheckText(path);
    CRegistryKey key(root, CRegistryTree::NormalizePath(path));
    ChangeRegistry(root, [&](CRegistryTree& tree) { return tree.Create(key.m_Path); });
    return key;
}

bool CRegistryKey::DeleteTree(ERegistryRoot root, std::wstring_view path) {
    const std::wstring name = CRegistryTree::NormalizePath(path);
    if (name.empty())
        throw std::invalid_argument("a whole root of the registry cannot be deleted; name a key");
    return ChangeRegistry(root, [&](CRegistryTree& tree) { return tree.DeleteTree(name); });
}

std::optional<RegistryValue> CRegistryKey::Read(std::wstring_view name) const {
    const auto tree = ReadRegistry(m_Root);
    const RegistryValue* const value = tree->Find(m_Path, name);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

std::optional<std::wstring> CRegistryKey::ReadText(std::wstring_view name) const {
    const auto value = Read(name);
    if (!value)
        return std::nullopt;
    if (const auto* text = std::get_if<std::wstring>(&*value))
        return *text;
    return std::to_wstring(std::get<LONG>(*value));
}

std::optional<LONG> CRegistryKey::ReadNumber(std::wstring_view name) const {
    const auto value = Read(name);
    const LONG* const number = value ? std::get_if<LONG>(&*value) : nullptr;
    return number != nullptr ? std::optional(*number) : std::nullopt;
}

void CRegistryKey::WriteText(std::wstring_view name, std::wstring_view value) const {
    CheckText(name);
    CheckText(value);
    ChangeRegistry(m_Root, [&](CRegistryTree& tree) { return tree.Write(m_Path, name, std::wstring(value)); });
}

void CRegistryKey::WriteNumber(std::wstring_view name, LONG value) const {
    CheckText(name);
    ChangeRegistry(m_Root, [&](CRegistryTree& tree) { return tree.Write(m_Path, name, value); });
}

bool CRegistryKey::DeleteValue(std::wstring_view name) const {
    return ChangeRegistry(m_Root, [&](CRegistryTree& tree) { return tree.DeleteValue(m_Path, name); });
}

std::vector<std::wstring> CRegistryKey::SubKeys() const { return ReadRegistry(m_Root)->SubKeys(m_Path); }

std::vector<std::wstring> CRegistryKey::Values() const { return ReadRegistry(m_Root)->Values(m_Path); }

CRegistryBatch::CRegistryBatch(ERegistryRoot root) : m_Root(root), m_Outermost(BeginRegistryBatch(root)) {}

CRegistryBatch::~CRegistryBatch() {
    if (m_Outermost)
        EndRegistryBatch(m_Root);
}

void CRegistryBatch::Commit() {
    if (m_Outermost)
        CommitRegistryBatch(m_Root);
}

} // namespace platform
