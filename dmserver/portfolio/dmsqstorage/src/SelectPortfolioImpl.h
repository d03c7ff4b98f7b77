// The whole portfolio with all that a symbol has from its exchange, data feed, setting and session, joined in
// memory: six statements in place of one procedure call for each symbol.
//
// Life: what a call reads it forgets at its end; the next call of the same helper reads everything anew.
// Threads: one helper belongs to one thread; helpers of several threads do not meet.
// Errors: everything is raised. The table then stays as it was at that moment: the rows before the failing one are
// complete, the others have what the portfolio itself holds.
#pragma once

#include "DatabaseRequest.h"
#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmudfcom/interface/TableRows.h"

#include <exception>
#include <map>
#include <string>
#include <vector>

namespace select_portfolio_impl {

using IDM_dmudfcom::tagSharedText;

// A text goes from one table into another's column as it is stored, in UTF-8.
struct tagExchange {
    LONG Exchange = 0;
    tagSharedText Name = {};
    LONG Setting = 0;
    LONG Session = 0;
    tagSharedText TimeZoneInformation = {};
    LONG Bias = 0;
    // The same text for the column of the sessions' zones.
    tagSharedText SessionsTimeZoneInformation = {};
};

struct tagDataFeed {
    LONG DataFeed = 0;
    tagSharedText Name = {};
};

struct tagSetting {
    LONG Setting = 0;
    LONG PriceScale = 0;
    double PointValue = 0;
    LONG DailyLimit = 0;
    double MinMovement = 0;
};

// A row of SESSION_DETAILS. Days are day numbers, times are seconds.
struct tagSessionDetails {
    LONG Session = 0;
    LONG StartDay = 0;
    LONG StartTime = 0;
    LONG EndDay = 0;
    LONG EndTime = 0;
    LONG Value5 = 0;
    LONG Value6 = 0;
    LONG Value7 = 0;
};

struct tagSession {
    LONG Session = 0;
    LONG SessionType = 0;
    LONG TimeZone = 0; // 0 that of this machine, 1 GMT, 2 that of the exchange
    std::vector<tagSessionDetails> Details = {};
    mutable tagSharedText SessionsString = {}; // empty until a symbol first needs it
};

using Exchanges = std::map<LONG, tagExchange>;
using DataFeeds = std::map<LONG, tagDataFeed>;
using Settings = std::map<LONG, tagSetting>;
using Sessions = std::map<LONG, tagSession>;

// The entry with that key. A missing one is traced and raised as a std::exception.
template <class T>
const T& _get_impl(const std::map<LONG, T>& Map, LONG Id) {
    const auto found = Map.lower_bound(Id);
    if (found == Map.end() || found->first != Id) {
        const BugSlayerUtil::CScope scope;
        scope.Trace(L"[WARNING]: Id %d not found", Id);
        throw std::exception();
    }
    return found->second;
}

// The trading times in one text: the number of details and ":", then for each its start and its end in minutes and
// the values 6, 7 and 5, separated by "," and closed by ";". What does not fit into 511 characters, or a number
// into seven digits, is reported as an invalid parameter and raised as std::length_error, because readers would
// take a cut text for a shorter trading week. A number is written without a sign, so that a negative one does not
// fit.
std::wstring MakeSessionsString(const tagSession& session);

class CSelectPortfolioHelper {
public:
    explicit CSelectPortfolioHelper(sqStorage::IdmDatabase* database);

    // Appends every symbol, in the order of the names. The table must be one of this library's, for its ITableRows.
    void SelectAllPortfolio(sqStorage::IdmTable* Table);

private:
    void LoadExchanges();
    void LoadDataFeeds();
    void LoadSettings();
    void LoadSessions();
    void LoadSessionDetails();
    void Select(const wchar_t* sql, sqStorage::IdmTable& table);
    void Forget();

    sqStorage::CComPtr<sqStorage::IdmDatabase> m_Database;
    // Released without being finished it is rolled back, and there is nothing in it to lose.
    sqStorage::CComPtr<sqStorage::IdmDatabaseTransaction> m_Transaction;
    Exchanges m_Exchanges;
    DataFeeds m_DataFeeds;
    Settings m_Settings;
    Sessions m_Sessions;
};

} // namespace select_portfolio_impl
