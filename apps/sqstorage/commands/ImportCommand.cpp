// import: CSV files into the store.
#include "ChangeLines.h"
#include "Command.h"
#include "CommandOptions.h"
#include "apps/sqstorage/datasets/ImportFiles.h"
#include "apps/sqstorage/store/ChangeKinds.h"
#include "apps/sqstorage/store/ChangeWatch.h"
#include "apps/sqstorage/store/Connection.h"
#include "apps/sqstorage/store/StoreFailure.h"
#include "platform/com/com_error.h"

#include <fmt/format.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sqCli {

namespace {

constexpr const char* Manual = R"(
PATH is a CSV file, or a directory of which the files that have a known name are
taken; others in it are left alone. The order of the paths does not matter.

  holidays.csv         HOLIDAY_NAME
  holiday_dates.csv    HOLIDAY_NAME, HOLIDAY_START_DATE,
                       HOLIDAY_END_DATE (optional), HOLIDAY_DESCRIPTION (optional)
  settings.csv         PRICE_SCALE, POINT_VALUE, DAILY_LIMIT, MIN_MOVEMENT
  feeds.csv            DATA_FEED_NAME, DATA_FEED_SHORT_NAME, DATA_FEED_DLL_NAME,
                       CLSID, ASCII (optional), ACTIVE (optional)
  sessions.csv         SESSION_NAME, SESSION_TYPE, TIME_ZONE
  session_details.csv  SESSION_NAME, START_DAY, START_TIME, END_DAY, END_TIME,
                       VALUE5, VALUE6, VALUE7 (all three optional)
  exchanges.csv        EXCHANGE_NAME, DESCRIPTION (optional),
                       HOLIDAY_NAME (optional), SESSION_NAME, PRICE_SCALE,
                       POINT_VALUE, DAILY_LIMIT, MIN_MOVEMENT,
                       TIME_ZONE (optional), MAP_ID (optional),
                       EXCHANGE_TIME_ZONE_INFORMATION
  symbols.csv          SYMBOL_NAME, SYMBOL_ROOT, DESCRIPTION, CUSIP, CATEGORY,
                       DATA_FEED_NAME, EXCHANGE_NAME, SETTING_TYPE, PRICE_SCALE,
                       POINT_VALUE, DAILY_LIMIT, MIN_MOVEMENT, SESSION_TYPE,
                       SESSION_NAME, TIME_ZONE, SESSION_TIMES, CONTRACT_MONTH,
                       CONTRACT_YEAR, STRIKE_PRICE, CALL_PUT, MARGIN,
                       EXPIRATION_DATE, EXPIRED, EXPIRATION_RULE,
                       FIRST_NOTICE_DATE, DELIVERY (all optional but SYMBOL_NAME,
                       CATEGORY, DATA_FEED_NAME, EXCHANGE_NAME)
  currencies.csv       ID, CURRENCY_CODE

UTF-8, commas, quotes as in RFC 4180, a header, columns in any order, dates as
YYYY-MM-DD. A row names what it refers to, which is in the store or in the same
import.

SESSION_TYPE is 1 for an exchange's own session and 2 for a template that symbols
share; 0 and 3 are for hosts. TIME_ZONE of a session says whose clock its times
are on: 0 the local one, 1 UTC, 2 that of the exchange. Days are Sun to Sat, times
09:30 or 09:30:15, up to 24:00. Trading past midnight ends on its END_DAY; 7 is
the Sunday after, 8 its Monday. Session names differ by more than letter case.

An exchange owns its session and its price setting, which go when it is deleted:
give each exchange a session of its own, with the price setting in its row.
settings.csv has the settings that belong to no exchange and no symbol. The
seventeen numbers of EXCHANGE_TIME_ZONE_INFORMATION are, as "360,0,11,0,1,02:00:
00.0000,-60,3,0,2,02:00:00.0000" for Chicago, without the line break: the minutes
to be added for UTC; more of them in winter; the month, weekday, week (5 is the
last) and time at which winter time begins; more minutes in summer; and the same
for summer time. Month 0 says that there is no change.

Symbols differ by name, with its letter case, category, feed and exchange. A
symbol's SETTING_TYPE is 0 when the four price values of its row are its own, 1,
as when it is empty, for those of its exchange and 2 for those of the dictionary
of roots. Its SESSION_TYPE is 0 for times of its own, given as SESSION_TIMES on
the clock of TIME_ZONE (empty: that of the exchange), perhaps with a SESSION_NAME;
1 or empty for the session of its exchange; 2 for the template SESSION_NAME; 3 for
the dictionary of roots. SESSION_TIMES is a text like "Sun 17:00-Mon 16:00; Tue
09:30-16:00"; a stretch may have VALUE5 to VALUE7 behind it, as the first one in
"Tue 09:30-16:00 (1 0 0); Wed 09:30-16:00". What a symbol owns is made with it and
goes with it. EXPIRATION_RULE is the number of the rule. Other empty numbers are
0, and an empty date, which the store keeps as 1900-01-01, is none. SYMBOL_ROOT is
kept in capitals.

ASCII is 1 for the one feed that reads text files, ACTIVE is 0 for a feed that is
switched off. An empty ASCII is 0, an empty ACTIVE 1, an empty VALUE 0.

A file is taken whole or not at all: all its rows are tested before the first is
written, and each that is not good is named with file, line and reason. The
other files are still taken; the command then ends with status 4. The summary
counts rows: REFUSED are those that are not good, and the good ones beside them in
a file that is left alone are in ROWS alone. What the database refuses of a
calendar's dates or a session's details counts with all their rows.

An import adds what the store lacks and removes nothing, so that it can be
repeated. A row that is there is unchanged. One that the store has with other
values stays as it is there and is counted as different; with --update it becomes
as the file has it. Of a calendar's dates a day is compared with the day, and
other days stay; the details of a session are compared and replaced together.
Calendars and free settings have nothing but what they are known by, so --update
does nothing to them.

Dates reach the store a whole calendar at a time, and details a whole session.
--batch asks for the same with every table that the store takes in batches; among
the tables above there are no others.

After 1000 rows or more the database counts its indexes anew.

With --watch the changes that the store tells its hosts of are shown as they are
made, in the form of "sqstorage watch", and the summary behind them.

  sqstorage import data --dry-run      what would happen
  sqstorage import data                do it
  sqstorage import corrections/holiday_dates.csv --update
)";

struct tagImportArguments {
    std::vector<std::string> Paths;
    tagImportOptions Options;
    bool Batch = false;
    bool Watch = false;
};

// From so many rows on, the database's counts of its indexes are worth taking anew.
constexpr std::size_t LargeImport = 1000;

// What is imported stays, however this ends.
void RefreshCounts(const CConsole& console) {
    try {
        sqSetup::RefreshStatistics(ReadConnection());
    } catch (const platform::CComError& error) {
        console.Warn(
            fmt::format("The rows are in the store, and the database did not count its indexes anew, so that "
                        "searches may be slow until its owner does: {}",
                        PlainSentence(error.Text())));
    }
}

EExitStatus Import(const tagImportArguments& arguments, const CConsole& console) {
    const std::vector<tagImportSource> sources = FindSources(arguments.Paths, console);
    CStore store;
    tagImportRun run{store, console, arguments.Options, {}};
    tagRowSet summary = ImportSummary();
    tagImportCounts all;
    CChangeLines lines(console, CChangeLines::EReaderGone::DoesNotMatter);
    std::optional<CChangeWatch> watch;
    if (arguments.Watch)
        watch.emplace(store, AllChanges, [&](ULONG change, LONG value) { lines.Tell(change, value); });
    for (const tagImportSource& source : sources) {
        const tagImportCounts counts = ImportFile(source, run);
        AddToSummary(summary, source, counts);
        all += counts;
        // A call that failed halfway has changed something, too.
        if (watch)
            watch->Deliver();
    }
    lines.Close();
    if (arguments.Options.DryRun)
        console.Note("This was a dry run: the store is as it was.");
    else if (all.Written() >= LargeImport)
        RefreshCounts(console);
    console.Print(summary);
    return all.Problems == 0 ? EExitStatus::Done : EExitStatus::RowsRefused;
}

} // namespace

void AddImportCommand(CLI::App& program, Action& chosen) {
    const auto arguments = std::make_shared<tagImportArguments>();
    CCommandOptions command(program, "import", "Bring CSV files into the store", Manual);
    command.Arguments("PATH", arguments->Paths, "CSV files, or directories of them");
    command.Flag("--dry-run", arguments->Options.DryRun, "Test everything, write nothing");
    command.Flag("--batch", arguments->Batch, "Hand rows to the store in batches where it takes them so");
    command.Flag("--update", arguments->Options.Update, "Change rows that differ to what the file says");
    command.Flag("--watch", arguments->Watch, "Show the changes as they are made");
    command.Does(chosen, [arguments](const CConsole& console) { return Import(*arguments, console); });
}

} // namespace sqCli
