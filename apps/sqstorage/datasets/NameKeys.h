// The rows of a table by the names that other files call them.
#pragma once

#include "Dataset.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sqCli {

class CNameKeys {
public:
    // What the names of one row share.
    using NameId = std::string (*)(const std::string& name);

    // `noun` is what a row is called in messages, `dataset` the file that such rows stand in. Without an id, a row
    // has one name.
    CNameKeys(std::string_view noun, std::string_view dataset, NameId id = nullptr)
        : m_Noun(noun), m_Dataset(dataset), m_Id(id) {}

    void Add(const std::string& name, LONG key) { m_Keys[IdOf(name)].push_back(key); }

    [[nodiscard]] bool Contains(const std::string& name) const { return m_Keys.contains(IdOf(name)); }
    // Why no row can refer to that name; nothing when one can.
    [[nodiscard]] std::optional<std::string> Problem(const tagImportRun& run, const std::string& name) const;
    // Of a name without a problem; 0 for one that is only planned.
    [[nodiscard]] LONG KeyOf(const std::string& name) const;

private:
    [[nodiscard]] std::string IdOf(const std::string& name) const { return m_Id ? m_Id(name) : name; }

    std::string_view m_Noun;
    std::string_view m_Dataset;
    NameId m_Id;
    std::map<std::string, std::vector<LONG>, std::less<>> m_Keys;
};

} // namespace sqCli
