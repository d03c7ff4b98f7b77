#include "platform/toml_text.h"

#include <fmt/format.h>
#include <toml++/toml.h>

#include <algorithm>

namespace platform {

namespace {

tagTomlTable ReadTable(const toml::table& source, std::string_view name) {
    tagTomlTable table{.Name = std::string(name), .Line = source.source().begin.line, .Values = {}, .Tables = {}};
    for (const auto& [key, node] : source) {
        const std::size_t line = node.source().begin.line;
        if (const auto* text = node.as_string())
            table.Values.push_back({std::string(key.str()), line, text->get()});
        else if (const auto* number = node.as_integer())
            table.Values.push_back({std::string(key.str()), line, number->get()});
        else if (const auto* child = node.as_table())
            table.Tables.push_back(ReadTable(*child, key.str()));
        else
            throw CTomlError("the value \"" + std::string(key.str()) +
                                 "\" is neither a text in quotes nor a whole number",
                             line);
    }
    std::ranges::stable_sort(table.Values, {}, &tagTomlValue::Line);
    std::ranges::stable_sort(table.Tables, {}, &tagTomlTable::Line);
    return table;
}

bool IsBareKey(std::string_view text) {
    constexpr std::string_view allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    return !text.empty() && text.find_first_not_of(allowed) == text.npos;
}

bool IsControl(char character) { return static_cast<unsigned char>(character) < 0x20 || character == '\x7F'; }

std::string Escape(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        if (IsControl(character))
            result += fmt::format("\\u{:04X}", static_cast<unsigned>(character));
        else if (character == '"' || character == '\\')
            result += {'\\', character};
        else
            result += character;
    }
    return result += '"';
}

// Written here and not by the library, whose formatter of this version makes keys that it cannot read again.
std::string Quote(std::string_view text) {
    const bool mayBeLiteral = text.find('\'') == text.npos && std::ranges::none_of(text, IsControl);
    return mayBeLiteral ? fmt::format("'{}'", text) : Escape(text);
}

std::string Key(std::string_view text) { return IsBareKey(text) ? std::string(text) : Quote(text); }

std::string Content(const std::variant<std::string, std::int64_t>& value) {
    const auto* const text = std::get_if<std::string>(&value);
    return text != nullptr ? Quote(*text) : std::to_string(std::get<std::int64_t>(value));
}

void AppendValues(const tagTomlTable& table, std::string& result) {
    for (const tagTomlValue& value : table.Values)
        result += Key(value.Name) + " = " + Content(value.Value) + '\n';
}

} // namespace

tagTomlTable ParseToml(std::string_view text) {
    try {
        return ReadTable(toml::parse(text), {});
    } catch (const toml::parse_error& error) {
        throw CTomlError(std::string(error.description()), error.source().begin.line);
    }
}

std::string FormatToml(const tagTomlTable& root) {
    std::string result;
    AppendValues(root, result);
    for (const tagTomlTable& table : root.Tables) {
        if (!result.empty())
            result += '\n';
        result += '[' + Key(table.Name) + "]\n";
        AppendValues(table, result);
    }
    return result;
}

} // namespace platform
