// week: the trading week of an exchange's session, drawn.
#include "Command.h"
#include "CommandOptions.h"
#include "apps/sqstorage/datasets/ZoneRules.h"
#include "apps/sqstorage/rows/Numbers.h"
#include "apps/sqstorage/rows/TextTable.h"
#include "apps/sqstorage/store/Exchanges.h"
#include "apps/sqstorage/store/HolidayCalendars.h"
#include "apps/sqstorage/store/Sessions.h"
#include "apps/sqstorage/week/TradingWeek.h"
#include "apps/sqstorage/week/WeekStrip.h"
#include "platform/clock.h"
#include "platform/local_time_zone.h"
#include "platform/terminal.h"

#include <algorithm>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <string>

namespace sqCli {

namespace {

using namespace std::chrono;

constexpr const char* Manual = R"(
Draws the week from Sunday to Saturday, a strip for each day: when the session of
EXCHANGE trades, on the clock of the exchange, of this machine or of UTC. The week
is the one that holds today, on that clock, or the day given with --date; the
clocks' changes to and from daylight saving in that week are taken into account.
Holidays of the exchange's calendar are named below; the strips show the session
as it is in any week.

csv and json have a row for each stretch of trading: EXCHANGE_NAME, ZONE, and
START and END as the clock shows them, with their distance from UTC. A stretch
that begins or ends in another week is whole.

  sqstorage week CME
  sqstorage week CME --zone local
  sqstorage --format json week LSE --zone utc --date 2027-03-28
)";

struct tagWeekArguments {
    std::string Exchange;
    std::string Zone = "exchange";
    std::string Date;
};

TIME_ZONE_INFORMATION LocalZone() {
    TIME_ZONE_INFORMATION zone{};
    if (platform::GetTimeZoneInformation(&zone) == platform::TimeZoneIdInvalid)
        throw CCommandError(EExitStatus::WrongUsage,
                            "The time zone of this machine is not known: correct the environment variable TZ.");
    return zone;
}

tagExchange FindExchange(CStore& store, const std::string& name) {
    for (auto& [key, exchange] : SelectExchanges(store))
        if (exchange.Name == name)
            return exchange;
    throw CCommandError(EExitStatus::Refused,
                        fmt::format("There is no exchange \"{}\": see \"sqstorage list exchanges\".", name));
}

tagSession FindSession(CStore& store, const tagExchange& exchange) {
    for (auto& [key, session] : SelectSessions(store))
        if (key == exchange.Session)
            return session;
    throw CCommandError(EExitStatus::Refused,
                        fmt::format("The exchange \"{}\" has no session: name one in exchanges.csv and import it "
                                    "with --update.",
                                    exchange.Name));
}

std::vector<tagSessionDetail> FindDetails(CStore& store, const tagExchange& exchange, const tagSession& session) {
    auto details = SelectSessionDetails(store, exchange.Session);
    if (details.empty())
        throw CCommandError(EExitStatus::Refused,
                            fmt::format("The session \"{}\" of the exchange \"{}\" has no trading times: import "
                                        "session_details.csv.",
                                        session.Name, exchange.Name));
    return details;
}

CZoneClock ExchangeClockOf(const tagExchange& exchange) { return CZoneClock(ParseZone(exchange.ZoneInformation)); }

CZoneClock ClockOf(const tagExchange& exchange, const tagSession& session) {
    switch (session.TimeZone) {
    case LocalClock:
        return CZoneClock(LocalZone());
    case UtcClock:
        return CZoneClock({});
    case ExchangeClock:
        return ExchangeClockOf(exchange);
    default:
        throw CCommandError(
            EExitStatus::Refused,
            fmt::format("The session \"{}\" has the time zone {}, which says no clock: make it 0, 1 "
                        "or 2, for local, UTC or the exchange.",
                        session.Name, session.TimeZone));
    }
}

CZoneClock ClockOf(const tagExchange& exchange, const std::string& zone) {
    if (zone == "local")
        return CZoneClock(LocalZone());
    return zone == "utc" ? CZoneClock({}) : ExchangeClockOf(exchange);
}

constexpr local_days DayZero = local_days(1899y / December / 30);

local_days DayOf(const std::string& text, const CZoneClock& shown) {
    if (text.empty())
        return floor<days>(shown.ToLocal(floor<seconds>(platform::WallClock())));
    std::string reason;
    const auto day = ParseDay(text, reason);
    if (!day)
        throw CCommandError(EExitStatus::WrongUsage, fmt::format("--date: {}.", reason));
    return DayZero + days(day->Number);
}

std::string OffsetText(minutes offset) {
    const auto away = abs(offset).count();
    return fmt::format("{}{:02}:{:02}", offset < 0min ? '-' : '+', away / 60, away % 60);
}

std::string DateText(local_days day) { return DayText({static_cast<std::int32_t>((day - DayZero).count())}); }

// "2027-03-28T09:30:00+01:00"
std::string MomentOn(const CZoneClock& clock, sys_seconds moment) {
    const local_seconds time = clock.ToLocal(moment);
    const local_days day = floor<days>(time);
    const hh_mm_ss clockTime(time - day);
    return fmt::format("{}T{:02}:{:02}:{:02}{}", DateText(day), clockTime.hours().count(),
                       clockTime.minutes().count(), clockTime.seconds().count(),
                       OffsetText(clock.OffsetAt(moment)));
}

// What the clock is in that week: "UTC-06:00", and when it changes.
std::string OffsetsText(const CZoneClock& clock, const tagWeek& week) {
    const minutes before = clock.OffsetAt(week.Span.Start);
    std::string text = "UTC" + OffsetText(before);
    for (sys_seconds moment = week.Span.Start; moment < week.Span.End; moment += minutes(1))
        if (const minutes after = clock.OffsetAt(moment); after != before)
            return fmt::format("{}, from {} UTC{}", text, MomentOn(clock, moment).substr(0, 10), OffsetText(after));
    return text;
}

std::string Title(const tagExchange& exchange, const std::string& zone, const CZoneClock& shown,
                  const tagWeek& week) {
    const std::string clock = zone == "utc" ? "UTC" : fmt::format("{} time ({})", zone, OffsetsText(shown, week));
    const std::string name =
        exchange.Description.empty() ? exchange.Name : fmt::format("{}, {}", exchange.Name, exchange.Description);
    return fmt::format("{}\nWeek of {} in {}\n\n", Printable(name), DateText(week.Sunday), clock);
}

// "2026-02-16 to 2026-02-20"
std::string DaysText(const tagHolidayDate& date) {
    const std::string start = DayText(*date.Start);
    return date.End && *date.Start < *date.End ? fmt::format("{} to {}", start, DayText(*date.End)) : start;
}

// A line for each holiday of the week.
std::string HolidayLines(CStore& store, const tagExchange& exchange, const tagWeek& week) {
    const auto first = static_cast<std::int32_t>((week.Sunday - DayZero).count());
    std::string lines;
    auto dates = SelectHolidayDates(store);
    std::ranges::sort(dates, {}, &tagOwnedHolidayDate::Date);
    for (const auto& [calendar, date] : dates)
        if (calendar == exchange.Holiday && date.Start && date.Start->Number < first + 7 &&
            date.End.value_or(*date.Start).Number >= first)
            lines += fmt::format("Holiday: {}{}{}\n", DaysText(date), date.Description.empty() ? "" : ", ",
                                 Printable(date.Description));
    return lines.empty() ? lines : "\n" + lines;
}

tagRowSet RowsOf(const tagExchange& exchange, const std::string& zone, const CZoneClock& shown,
                 const std::vector<tagInterval>& trading) {
    tagRowSet rows{{"EXCHANGE_NAME", "ZONE", "START", "END"}, {}};
    for (const tagInterval& interval : trading)
        rows.Rows.push_back({exchange.Name, zone, MomentOn(shown, interval.Start), MomentOn(shown, interval.End)});
    return rows;
}

EExitStatus Week(const tagWeekArguments& arguments, const CConsole& console) {
    CStore store;
    const tagExchange exchange = FindExchange(store, arguments.Exchange);
    const tagSession session = FindSession(store, exchange);
    const auto details = FindDetails(store, exchange, session);
    const CZoneClock shown = ClockOf(exchange, arguments.Zone);
    const tagWeek week = WeekOf(shown, DayOf(arguments.Date, shown));
    const auto trading = TradingIn(week.Span, ClockOf(exchange, session), details);
    if (console.Format() != EFormat::Table) {
        console.Print(RowsOf(exchange, arguments.Zone, shown, trading));
        return EExitStatus::Done;
    }
    console.PrintText(Title(exchange, arguments.Zone, shown, week));
    console.PrintText(DrawWeek(week.Sunday, MinutesOf(week, shown, trading),
                               platform::TerminalWidth(platform::EStandardStream::Output),
                               console.ColoursOutput()));
    console.PrintText(HolidayLines(store, exchange, week));
    return EExitStatus::Done;
}

} // namespace

void AddWeekCommand(CLI::App& program, Action& chosen) {
    const auto arguments = std::make_shared<tagWeekArguments>();
    CCommandOptions command(program, "week", "Draw the trading week of an exchange", Manual);
    command.Argument("EXCHANGE", arguments->Exchange, "The exchange's name");
    command.Choice("--zone", arguments->Zone, "exchange|local|utc",
                   "Whose clock the times are on. Default: exchange");
    command.Option("--date", arguments->Date, "DATE", "A day of the week to draw. Default: today");
    command.Does(chosen, [arguments](const CConsole& console) { return Week(*arguments, console); });
}

} // namespace sqCli
