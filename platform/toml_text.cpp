#include "platform/toml_text.h"

#include <toml++/toml.h>

#include <sstream>

namespace platform {

namespace {

tagTomlTable ReadTable(const toml::table& source, std::string_view name) {
    tagTomlTable table{.Name = std::string(name), .Values = {}, .Tables = {}};
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
    return table;
}

toml::table MakeTable(const tagTomlTable& source) {
    toml::table table;
    for (const tagTomlValue& value : source.Values)
        std::visit([&](const auto& content) { table.insert_or_assign(value.Name, content); }, value.Value);
    for (const tagTomlTable& child : source.Tables)
        table.insert_or_assign(child.Name, MakeTable(child));
    return table;
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
    std::ostringstream stream;
    stream << toml::toml_formatter(MakeTable(root), toml::format_flags::allow_literal_strings |
                                                        toml::format_flags::allow_unicode_strings);
    stream << '\n';
    return stream.str();
}

} // namespace platform
