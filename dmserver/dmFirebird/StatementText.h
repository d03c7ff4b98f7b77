// A statement on its way to the engine: what kind it is, and its text in the engine's form.
#pragma once

#include <string>
#include <string_view>

namespace IDM_dmFirebird {

enum class EStatementKind {
    Select,     // reads, as far as its text tells
    Definition, // changes the database's definition
    Other,
};

struct tagStatementText {
    EStatementKind Kind = EStatementKind::Other;
    std::string Utf8;
};

// Names of the required columns that this engine's grammar keeps for itself, in upper case. One that stands as an
// identifier is quoted; in literals, quoted identifiers and comments nothing is touched, nor where the grammar's
// own word is meant ("OFFSET 10 ROWS").
bool IsReservedColumnName(std::wstring_view upperCaseWord);

tagStatementText TranslateStatement(std::wstring_view text);

} // namespace IDM_dmFirebird
