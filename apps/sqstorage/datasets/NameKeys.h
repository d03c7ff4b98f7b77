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
    // `noun` is what a row is called in messages, `dataset` the file that such rows stand in.
    CNameKeys(std::string_view noun, std::string_view dataset) : m_Noun(noun), m_Dataset(dataset) {}

    void Add(const std::string& name, LONG key) { m_Keys[name].push_back(key); }

    [[nodiscard]] bool Contains(const std::string& name) const { return m_Keys.contains(name); }
    // Why no row can refer to that name; nothing when one can.
    [[nodiscard]] std::optional<std::string> Problem(const tagImportRun& run, const std::string& name) const;
    // Of a name without a problem; 0 for one that is only planned.
    [[nodiscard]] LONG KeyOf(const std::string& name) const;

private:
    std::string_view m_Noun;
    std::string_view m_Dataset;
    std::map<std::string, std::vector<LONG>, std::less<>> m_Keys;
};

} // namespace sqCli
