#pragma once

#include <cstdint>
#include <span>
#include <string_view>

// The definition of the store's database, as statements for whoever has a connection. Nothing here talks to a
// database. All texts are UTF-8, end without a terminator, and live as long as the program. All functions may
// be called from any thread.
namespace sqSchema {

// The version that the program expects in SCHEMA_INFO.
inline constexpr std::int32_t CurrentVersion = 1;

// The oldest version that UpgradeSteps() can start from.
inline constexpr std::int32_t OldestVersion = 1;

// What a database has to be created with; the page has to hold the longest index key. DDL needs dialect 3.
inline constexpr std::string_view CharacterSet = "UTF8";
inline constexpr std::int32_t PageSize = 16384;
inline constexpr std::int32_t SqlDialect = 3;

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

// All known steps, oldest first, without gaps from OldestVersion to CurrentVersion. A database of version n needs
// those whose From is n or more.
std::span<const tagUpgradeStep> UpgradeSteps();

// Whether the steps lead from one version to the other, each starting where the one before it ends, and each
// with something to run. No steps are a complete chain between equal versions.
bool IsCompleteChain(std::span<const tagUpgradeStep> steps, std::int32_t from, std::int32_t to);

// What only the connected machine knows, kept in variables of the connection (name space USER_SESSION). Without
// them the database takes GMT for the local zone.
inline constexpr std::string_view LocalBiasVariable = "LOCAL_BIAS";          // minutes, in decimal
inline constexpr std::string_view LocalTimeZoneVariable = "LOCAL_TIME_ZONE"; // seventeen numbers, as an exchange's

// Sets both, once for each connection, in any transaction. Two text parameters in the order of the names above;
// the one row that it gives means nothing.
inline constexpr std::string_view SetLocalZoneStatement =
    "SELECT RDB$SET_CONTEXT('USER_SESSION','LOCAL_BIAS',?),RDB$SET_CONTEXT('USER_SESSION','LOCAL_TIME_ZONE',?) "
    "FROM RDB$DATABASE";

// Makes the database count its indexes anew, so that it chooses the right ones. To be run after a large import:
// the counts of a fresh database were taken while it was empty.
inline constexpr std::string_view RefreshStatisticsStatement =
    "EXECUTE BLOCK AS DECLARE VARIABLE INDEX_NAME VARCHAR(31); BEGIN "
    "FOR SELECT TRIM(RDB$INDEX_NAME) FROM RDB$INDICES WHERE COALESCE(RDB$SYSTEM_FLAG,0)=0 INTO :INDEX_NAME DO "
    "EXECUTE STATEMENT 'SET STATISTICS INDEX \"'||:INDEX_NAME||'\"'; END";

} // namespace sqSchema
