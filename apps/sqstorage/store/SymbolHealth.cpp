#include "SymbolHealth.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <string_view>

namespace sqCli {

namespace {

using IDM_dmudfcom::ITableRows;

// A symbol P with its exchange E, its feed D, and the setting S and the session N that are in effect for it: type 0
// has its own, session type 2 a template, and every other type what the exchange has. A null counts as 0.
constexpr std::string_view SymbolsWithWhatTheyHave =
    "PORTFOLIO P LEFT JOIN EXCHANGES E ON E.EXCHANGE=P.EXCHANGE LEFT JOIN DATA_FEEDS D ON D.DATA_FEED=P.DATA_FEED "
    "LEFT JOIN SETTINGS S ON S.SETTING=IIF(COALESCE(P.SETTING_TYPE,0)=0,P.SETTING,E.SETTING) "
    "LEFT JOIN SESSIONS N ON N.SESSION=CASE COALESCE(P.SESSION_TYPE,0) WHEN 0 THEN P.CUSTOM_SESSION "
    "WHEN 2 THEN P.TEMPLATE_SESSION ELSE E.SESSION END";

// Without any of these the store cannot tell hosts all of a symbol.
constexpr std::string_view LacksARow =
    "E.EXCHANGE IS NULL OR D.DATA_FEED IS NULL OR S.SETTING IS NULL OR N.SESSION IS NULL";

// Whether the session is one of these: in several lists, since the database takes 1500 members in one.
std::string SessionIsOneOf(std::span<const LONG> keys) {
    constexpr std::size_t most = 1000;
    std::string condition = "1=0";
    for (; !keys.empty(); keys = keys.subspan(std::min(most, keys.size())))
        condition += fmt::format(" OR N.SESSION IN ({})", fmt::join(keys.first(std::min(most, keys.size())), ","));
    return condition;
}

// What an insert takes for the same symbol: the name to the letter, though the database ignores blanks at its end.
constexpr std::string_view Repeated =
    "(SELECT SYMBOL_NAME FROM PORTFOLIO GROUP BY SYMBOL_NAME,CHAR_LENGTH(SYMBOL_NAME),COALESCE(CATEGORY,0),"
    "COALESCE(DATA_FEED,0),COALESCE(EXCHANGE,0) HAVING COUNT(*)>1) P";

struct tagFlaw {
    std::string_view Condition;
    std::string_view What;
    std::string_view Advice;
};

constexpr std::array Gaps{
    tagFlaw{"E.EXCHANGE IS NULL", "have an exchange that is gone, and no list shows them",
            "import them with an exchange that is there, and have a host delete the old ones"},
    tagFlaw{"D.DATA_FEED IS NULL", "have a feed that is gone, and no list shows them",
            "import them with a feed that is there, and have a host delete the old ones"},
    tagFlaw{"D.DELETED<>0", "have a feed that is deleted",
            "import a feed of its CLSID to have it back, or have a host delete the symbols"},
    tagFlaw{"COALESCE(P.SETTING_TYPE,0)=0 AND S.SETTING IS NULL", "have a price setting of their own that is gone",
            "import them with prices and --update"},
    tagFlaw{"COALESCE(P.SETTING_TYPE,0)<>0 AND E.EXCHANGE IS NOT NULL AND S.SETTING IS NULL",
            "have the price setting of their exchange, which is gone",
            "import the exchange with prices and --update"},
    tagFlaw{"COALESCE(P.SESSION_TYPE,0)=0 AND N.SESSION IS NULL", "have a session of their own that is gone",
            "import them with SESSION_TIMES and --update"},
    tagFlaw{"P.SESSION_TYPE=2 AND N.SESSION IS NULL", "have a template session that is gone",
            "import them with one that is there and --update"},
    tagFlaw{"COALESCE(P.SESSION_TYPE,0) NOT IN (0,2) AND E.EXCHANGE IS NOT NULL AND N.SESSION IS NULL",
            "have the session of their exchange, which is gone",
            "import the exchange with a session that is there and --update"}};

// The flaws there may be. Views of the condition are in it.
std::vector<tagFlaw> FlawsWith(const std::string& isUnwritable) {
    std::vector<tagFlaw> flaws(Gaps.begin(), Gaps.end());
    flaws.push_back({isUnwritable, "have a session that cannot be written as text", "correct its details"});
    return flaws;
}

// The names of the first, sorted; and whether there are more.
std::string FirstNames(CDatabaseReader& reader, std::string_view from) {
    constexpr std::size_t most = 3;
    std::string text;
    std::size_t count = 0;
    reader.ForEach(
        fmt::format("SELECT FIRST {} DISTINCT P.SYMBOL_NAME FROM {} ORDER BY P.SYMBOL_NAME", most + 1, from),
        [&](const ITableRows& rows, ULONG row) {
            std::string scratch;
            if (++count > most)
                text += " and others";
            else
                text += fmt::format("{}\"{}\"", text.empty() ? "" : ", ", rows.Text(row, 0, scratch));
        });
    return text;
}

// How many symbols there are, how many have each flaw, and how many are incomplete: one walk over all.
std::vector<std::int64_t> CountFlaws(CDatabaseReader& reader, const std::vector<tagFlaw>& flaws,
                                     const std::string& isIncomplete) {
    std::string counts = "COUNT(*) AS C";
    for (std::size_t flaw = 0; flaw < flaws.size(); ++flaw)
        counts += fmt::format(",COUNT(IIF({},1,NULL)) AS C{}", flaws[flaw].Condition, flaw);
    counts += fmt::format(",COUNT(IIF({},1,NULL)) AS CX", isIncomplete);
    std::vector<std::int64_t> numbers;
    reader.ForEach(fmt::format("SELECT {} FROM {}", counts, SymbolsWithWhatTheyHave),
                   [&](const ITableRows& rows, ULONG row) {
                       for (ULONG column = 0; column < rows.ColumnCount(); ++column)
                           numbers.push_back(rows.Integer(row, column));
                   });
    return numbers;
}

// A host that reads the whole portfolio gets it in the order of names, and completed as far as that goes.
std::string Effect(CDatabaseReader& reader, const std::string& isIncomplete) {
    std::string name;
    reader.ForEach(fmt::format("SELECT FIRST 1 P.SYMBOL_NAME FROM {} WHERE {} ORDER BY P.SYMBOL_NAME",
                               SymbolsWithWhatTheyHave, isIncomplete),
                   [&](const ITableRows& rows, ULONG row) {
                       std::string scratch;
                       name = rows.Text(row, 0, scratch);
                   });
    return fmt::format("Hosts that read the whole portfolio get it without exchange, prices and times from \"{}\" "
                       "on, in the order of names: do what is said above.",
                       name);
}

} // namespace

tagSymbolHealth ExamineSymbols(CDatabaseReader& reader, std::span<const LONG> unwritable) {
    const std::string isUnwritable = SessionIsOneOf(unwritable);
    const std::string isIncomplete = fmt::format("{} OR {}", LacksARow, isUnwritable);
    const std::vector<tagFlaw> flaws = FlawsWith(isUnwritable);
    const std::vector<std::int64_t> counts = CountFlaws(reader, flaws, isIncomplete);
    tagSymbolHealth health{counts.front(), {}};
    for (std::size_t flaw = 0; flaw < flaws.size(); ++flaw)
        if (const std::int64_t count = counts[flaw + 1]; count > 0)
            health.Problems.push_back(fmt::format(
                "{} symbol(s) {} ({}): {}.", count, flaws[flaw].What,
                FirstNames(reader, fmt::format("{} WHERE {}", SymbolsWithWhatTheyHave, flaws[flaw].Condition)),
                flaws[flaw].Advice));
    if (counts.back() > 0)
        health.Problems.push_back(Effect(reader, isIncomplete));
    if (const std::int64_t count = reader.Number(fmt::format("SELECT COUNT(*) AS C FROM {}", Repeated)); count > 0)
        health.Problems.push_back(fmt::format("{} symbol(s) are there more than once, with the same category, feed "
                                              "and exchange ({}): have a host delete all but one of each.",
                                              count, FirstNames(reader, Repeated)));
    return health;
}

} // namespace sqCli
