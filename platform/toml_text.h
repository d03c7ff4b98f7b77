#pragma once
// TOML as this system uses it: tables of named texts and whole numbers. Everything else in a file is an error that
// names its line. Kept apart because the library behind it is slow to compile.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace platform {

class CTomlError : public std::runtime_error {
public:
    CTomlError(const std::string& text, std::size_t line) : std::runtime_error(text), m_Line(line) {}
    // Counted from 1.
    [[nodiscard]] std::size_t Line() const noexcept { return m_Line; }

private:
    std::size_t m_Line;
};

struct tagTomlValue {
    std::string Name;
    std::size_t Line;
    std::variant<std::string, std::int64_t> Value;
};

struct tagTomlTable {
    std::string Name;
    std::size_t Line;
    std::vector<tagTomlValue> Values;
    std::vector<tagTomlTable> Tables;
};

// All text is UTF-8. The root table has no name. Values and tables come in the order of their lines.
[[nodiscard]] tagTomlTable ParseToml(std::string_view text);
// Tables within the tables of `root` are not written: there is one level of them. Lines are left out of account.
[[nodiscard]] std::string FormatToml(const tagTomlTable& root);

} // namespace platform
