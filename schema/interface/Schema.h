#pragma once

#include <cstdint>
#include <span>
#include <string_view>

// The definition of the store's database, as statements for whoever has a connection. Nothing here talks to a
// database. All texts are UTF-8, end without a terminator, and live as long as the program. All functions may
// be called from any thread.
//
// The statements need what a connection gives: a database of dialect 3 in UTF8, whose pages of 16384 bytes hold the
// longest index key, and, for the procedures, the machine's time zone in two variables of the connection (see
// procedures.sql).
namespace sqSchema {

// The version that the program expects in SCHEMA_INFO.
inline constexpr std::int32_t CurrentVersion = 2;

// Gives one row with one integer. Fails on a database that was not made by this definition, and gives no row on
// one whose creation did not finish: neither can be worked with or upgraded.
inline constexpr std::string_view SelectVersionStatement = "SELECT SCHEMA_VERSION FROM SCHEMA_INFO";

// Everything that turns an empty database into one of CurrentVersion, in order. Commit after each statement: a
// table takes no rows in the transaction that creates it. The last statement writes the version, so a database
// that holds one is complete; one that failed on the way is to be dropped.
std::span<const std::string_view> CreateStatements();

// What takes a database from one version to the next. Run all statements in one transaction; the last one writes
// the new version, so that a step that failed is as if it had never begun.
struct tagUpgradeStep {
    std::int32_t From;
    std::int32_t To;
    std::span<const std::string_view> Statements;
};

// All known steps, oldest first, without gaps from version 1 to CurrentVersion. A database of version n needs those
// whose From is n or more.
std::span<const tagUpgradeStep> UpgradeSteps();

// Makes the database count its indexes anew, so that it chooses the right ones. To be run after a large import:
// the counts of a fresh database were taken while it was empty.
inline constexpr std::string_view RefreshStatisticsStatement =
    "EXECUTE BLOCK AS DECLARE VARIABLE INDEX_NAME VARCHAR(31); BEGIN "
    "FOR SELECT TRIM(RDB$INDEX_NAME) FROM RDB$INDICES WHERE COALESCE(RDB$SYSTEM_FLAG,0)=0 INTO :INDEX_NAME DO "
    "EXECUTE STATEMENT 'SET STATISTICS INDEX \"'||:INDEX_NAME||'\"'; END";

} // namespace sqSchema
