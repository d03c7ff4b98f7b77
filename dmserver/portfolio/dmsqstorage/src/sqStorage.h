// CStorage: the one storage object of the process.
//
// It owns the database connection, the key generator, the registry of change sinks and what is read once at
// start-up. All logic of a table is written as member functions, one source file for each table or subsystem:
//
//     sqStorage.cpp               life: construction, start-up, the one way to a statement, the end
//     sqStorage_Keys.cpp          delete guards and the small checks around keys
//     sqStorage_Holidays.cpp      holiday calendars
//     sqStorage_Settings.cpp      price settings
//     sqStorage_DataFeeds.cpp     data feeds
//     sqStorage_Exchanges.cpp     exchanges with their zones
//     sqStorage_Sessions.cpp      trading sessions
//     sqStorage_Currency.cpp      currency codes
//     sqStorage_Symbols.cpp       symbols, as they are written
//     sqStorage_SymbolLookup.cpp  small questions about symbols
//     sqStorage_Portfolio.cpp     the selection of symbols, one or all
//     sqStorage_Cursors.cpp       symbols, feeds and custom futures batch by batch
//     sqStorage_Asc.cpp           text files of symbols
//     sqStorage_RootSettings.cpp  what the dictionary of roots says
//     sqStorage_Lookup.cpp        keys by name
//     sqStorage_Notify.cpp        announcing changes
//
// Life: made by the process singleton with the first CStorageHolder and destroyed with the last.
// Threads: operations run on the caller's thread with no lock around statements; the database accepts that. What a
// member says of its own lock holds.
// Errors: an operation ends in the error guard, which reports and swallows; it then returns 0 or leaves the table
// as far as it was filled. What has no guard of its own says so.
#pragma once

#include "DatabaseRequest.h"
#include "IDataAccessor.h"
#include "IdGenerator.h"
#include "NotifySinks.h"
#include "dmserver/dmSingleton/interface/CriticalSection.h"
#include "unicomp/LocalRPC/interface/AO_ThreadTransport.h"
#include "unicomp/LocalRPC/interface/AO_WndMsgPumpTransport.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace BugSlayerUtil {
class CScope;
}

namespace sqStorage {

class CDataBaseParams;
class CRequestes;
struct tagSymbol;

// One bit for each kind of change that sinks can be told of.
enum tagNOTIFYMASK : ULONG {
    notifyInsertSymbol = 0x1,
    notifyUpdateSymbol = 0x2,
    notifyDeleteSymbol = 0x4,
    notifyHoliday = 0x8,
    notifyHolidayDetails = 0x10,
    notifySetting = 0x20,
    notifyDataFeed = 0x40,
    notifyExchange = 0x80,
    notifySession = 0x100,
    notifySessionDetails = 0x200,
    notifyAscDelete = 0x400,
    notifyRootSettings = 0x4000,
    notifyCurrency = 0x80000,
};

class CStorage : public dm::CCriticalSection, public IDataAccessor {
public:
    CStorage();
    ~CStorage() override;

    // Called by the process singleton right after construction and right before destruction.
    void FinalConstruct();
    void FinalRelease();

    // Opens the database unless that was done, on a thread of its own, and returns when that has run.
    void init();
    // More than 0 once the database is open.
    LONG DatabaseOpened() const { return m_DatabaseOpened; }

    // Runs one statement in a transaction of its own and returns the number of rows that came. Without an error
    // guard, as all that serves other operations.
    LONG Execute(const wchar_t* sql, IDispatch* parameters, IDispatch* results);

    // The sinks of each kind of change. S_OK when a list changed, S_FALSE when none did.
    LONG AdviseNotify(ULONG Mask, IDispatch* pSink);
    LONG UnadviseNotify(ULONG Mask, IDispatch* pSink);
    LONG UnadviseNotifyAllMasks(IDispatch* pSink);
    // Tells the sinks of every bit in Mask, later and on the thread that created this object. Any thread may call;
    // it returns at once.
    void BroadcastNotifyToSinks(ULONG Mask, LONG ValueID);

    // Holiday calendars. A HolidayId of 0 in the request means all.
    void SelectHoliday(IdmRequest* Request, IdmTable* Table) override;
    LONG InsertHoliday(const wchar_t* HolidayName);
    void DeleteHoliday(LONG Holiday);
    void UpdateHoliday(LONG Holiday, const wchar_t* HolidayName);
    void SelectHolidayDetails(IdmRequest* Request, IdmTable* Table) override;
    // Replaces the dates of the calendar that the current record names with the records of the table.
    void InsertHolidayDetails(IdmTable* Table);
    void DeleteHolidayDetails(LONG Holiday);
    // `Date` as "dd.mm.yyyy".
    void DeleteHolidayDetails2(LONG Holiday, const wchar_t* Date);

    // Price settings. A SettingId of 0 in the request means all.
    void SelectSetting(IdmRequest* Request, IdmTable* Table);
    LONG InsertSetting(LONG PriceScale, double PointValue, LONG DailyLimit, double MinMovement);
    void DeleteSetting(LONG Setting);
    void UpdateSetting(LONG Setting, LONG PriceScale, double PointValue, LONG DailyLimit, double MinMovement);

    // Data feeds. File names and class identifiers go into statements as they are.
    void SelectDataFeed(IdmRequest* Request, IdmTable* Table) override;
    // The key of the row: a new one, or that of a deleted feed of the same class, which comes back.
    LONG InsertDataFeed(const wchar_t* DataFeedName, const wchar_t* DataFeedShortName,
                        const wchar_t* DataFeedDllName, const wchar_t* Clsid, int IsAsc);
    // Not 0 if deleted; a feed that something uses is not.
    int DeleteDataFeed(LONG Datafeed);
    // Also undeletes.
    void UpdateDataFeed(LONG Datafeed, const wchar_t* DataFeedName, const wchar_t* DataFeedShortName,
                        const wchar_t* DataFeedDllName, const wchar_t* Clsid, int IsAsc, int Active);
    LONG SelectDataFeed(const wchar_t* DataFeedName);

    // Exchanges. Each owns its default setting and session, which go with it. TimeZone is a tagEXCHANGETIMEZONE,
    // TimeZoneInformation a zone string.
    void SelectExchange(IdmRequest* Request, IdmTable* Table) override;
    LONG InsertExchange(const wchar_t* ExchangeName, const wchar_t* Description, LONG Holiday, LONG Setting,
                        LONG Session, LONG TimeZone, const wchar_t* MapId, const wchar_t* TimeZoneInformation);
    int DeleteExchange(LONG Exchange);
    void UpdateExchange(LONG Exchange, const wchar_t* ExchangeName, const wchar_t* Description, LONG Holiday,
                        LONG Setting, LONG Session, LONG TimeZone, const wchar_t* MapId,
                        const wchar_t* TimeZoneInformation);
    LONG SelectExchange(const wchar_t* ExchangeName) override;

    // Trading sessions, of a tagSESSIONTYPE and in a tagTIMEZONE. A SessionId of 0 in the request asks for all of
    // its SessionType.
    void SelectSession(IdmRequest* Request, IdmTable* Table);
    // 0 when a template has the name already.
    LONG InsertSession(LONG SessionType, const wchar_t* SessionName, LONG TimeZone);
    void UpdateSession(LONG Session, LONG SessionType, const wchar_t* SessionName, LONG TimeZone);
    // 0 when a symbol or custom future uses the template.
    LONG DeleteSession(LONG Session);
    void SelectSessionDetails(IdmRequest* Request, IdmTable* Table);
    // Replaces the details of the session that the current record names with the records of the table.
    void InsertSessionDetails(IdmTable* Table);
    void DeleteSessionDetails(LONG Session);

    // Currency codes, without an error guard.
    void SetCurrency(LONG Id, LONG CurrencyCode);
    LONG GetCurrency(LONG Id);
    void DeleteCurrency(LONG Id);

    // Symbols. TableName is "PORTFOLIO" or its twin "DICTIONARY".
    // 0 when the statement was run, under a new key, which `Symbol` receives: also when the database refused the
    // statement, which is reported and leaves the key without a row. 1 when none was run: PORTFOLIO, and always
    // that, has a row of the same name, category, feed and exchange, and `Symbol` receives its key; or a text is
    // missing, and `Symbol` stays as it is; or something raised, and `Symbol` receives 0.
    LONG InsertSymbol(const wchar_t* TableName, tagSymbol Row, LONG* Symbol);
    void UpdateSymbol(const wchar_t* TableName, LONG Symbol, tagSymbol Row);
    // The row and nothing else.
    void DeleteSymbol(const wchar_t* TableName, LONG Symbol);
    void UpdatePortfolio(LONG Symbol, const tagSymbol& Row);
    // With its own setting and session and its text files. False when something raised.
    bool DeletePortfolio(LONG Symbol);
    // The same, without an error guard.
    void DeleteDictionary(LONG Symbol);
    // Raises a date to the smallest that a row holds, 1 January 1900.
    void checkDate(LONG& date) const;
    // "dd.mm.yyyy". Raises std::range_error for a day number that is no date.
    std::wstring getDateString(LONG date) const;
    // A request at Symbol(1) names one row; without a key there, what it says at Mode is the filter.
    void SelectDictionary(LONG Mode, IdmRequest* Request, IdmTable* Table);

    // Keys of symbols by exact texts, 0 when there is none. The first takes no part of its last three arguments and
    // its name goes into the statement as it is; the last gives out the name too, if it is wanted.
    LONG SelectSymbol(LONG Datafeed, const wchar_t* SymbolName, LONG Category, LONG Exchange, LONG ExpirationDate,
                      const wchar_t* StrikePrice, LONG CallPut);
    LONG GetSymbolByName(LONG Datafeed, const wchar_t* SymbolName);
    LONG GetSymbolByDescription(LONG Datafeed, const wchar_t* Description, BSTR* SymbolName);
    // The sessions in which a symbol may trade.
    void GetAvailableSessions(LONG Symbol, IdmTable* Table);
    // Inserts with setting and session of the exchange of that name, which replace those of the row. `Symbol`
    // receives the key of the new or existing symbol; it stays as it is when there is no such exchange.
    void AddSymbol(tagSymbol Row, const wchar_t* ExchangeName, LONG* Symbol);

    // The feed that reads text files; 0 when there is none.
    LONG GetASCDataFeed();
    // The text files that a symbol is read from, under this object's lock. Announced only when there were some.
    void ascDeleteSymbol(LONG Symbol, int isNotify);

    // Symbols with all that they have from their exchange, data feed, setting and session. With a request the one
    // that it names, or those that its filters let through, which come without what belongs to them; without one
    // all of them, ordered by name. A symbol that refers to something that is gone ends the selection of all: the
    // ones before it are complete then, and the others have only what their rows hold.
    void SelectPortfolio(LONG Mode, IdmRequest* Request, IdmTable* Table) override;
    // Gives symbols whose setting or session is that of their root what the dictionary says of it.
    void AdjustRootSettings(IdmTable* Table, bool WithExpiration);

    // Cursors: Open gives an id, Fetch appends at most Count rows, 0 for all that remain, to the table that Open
    // was given, and returns how many. 0 when nothing was opened, or nothing came.
    LONG Open(LONG Mode, IdmRequest* Request, IdmTable* Table);
    LONG Fetch(LONG Id, LONG Count);
    void Close(LONG Id);

    // Reads of subsystems that this version does not have: they answer with E_NOTIMPL.
    LONG SelectRootSettings(IdmRequest* Request, IdmTable* Table) override;
    LONG SelectExpirationRule(IdmRequest* Request, IdmTable* Table) override;

    // Guards around keys.
    // Raises what fails. Runs a delete procedure and tells whether it deleted: it did unless it answers with a
    // zero.
    int DeleteAnything(const wchar_t* Sql);
    // The key of a deleted feed with this CLSID, or 0.
    LONG GetDataFeedId1(const wchar_t* Clsid);
    // 1 when no row has this CLSID yet, deleted ones included.
    int IsPrimaryInstance(const wchar_t* Clsid);
    // Whether a template session of this name exists; case does not matter.
    int IsSessionTemplateExists(const wchar_t* Name);
    // Whether a row of Table uses this template.
    int IsSessionTemplateUsed(LONG Session, const wchar_t* Column, const wchar_t* Table);

private:
    // The delivery, on the thread that created this object.
    void BroadcastNotifyToSinksImpl(ULONG Mask, LONG ValueID);
    LONG RemoveSink(const BugSlayerUtil::CScope& scope, ULONG Mask, IDispatch* pSink);
    // The start-up, on the thread of m_InitObject: one after the other, of which the first to succeed is the last
    // to do anything.
    void init_impl();
    // False when the database did not open; the reason is in the trail.
    bool OpenDatabase(const CDataBaseParams& parameters);
    void CreateHelpers();
    // Raises unless the database holds this program's version of the schema.
    void CheckSchema();
    void LoadExchangeTimeZones();
    // A new key, or 0 without a generator.
    LONG GenerateId();
    void ExecuteTraced(const BugSlayerUtil::CScope& scope, const wchar_t* sql);
    // The common end of a write: trace, run, announce.
    void ExecuteAndNotify(const BugSlayerUtil::CScope& scope, const wchar_t* sql, ULONG Mask, LONG ValueID = 0);
    // Runs the statement that `makeSql` makes of the request into the table, within the error guard.
    template <class MakeSql>
    void SelectInto(const BugSlayerUtil::CScope& scope, IdmRequest* Request, IdmTable* Table, MakeSql&& makeSql);
    // Writes all records of the table in place of those that the field of the current record names. An absent field
    // is reported, and nothing is removed then.
    template <class Remove>
    void ReplaceDetails(const BugSlayerUtil::CScope& scope, IdmTable* Table, LONG field, const wchar_t* fieldName,
                        const wchar_t* insertSql, ULONG Mask, Remove&& remove);
    LONG RegisterDataFeed(const BugSlayerUtil::CScope& scope, const wchar_t* DataFeedName,
                          const wchar_t* DataFeedShortName, const wchar_t* DataFeedDllName, const wchar_t* Clsid,
                          int IsAsc);
    bool HasCurrency(LONG Id, IdmTable& Table);
    // Silent while the announcement of symbols is off.
    void NotifySymbol(ULONG Mask, LONG ValueID);
    // The key of the symbol in PORTFOLIO that has this name, already escaped, and the row's category, feed and
    // exchange; 0 when there is none. The select escapes once more, so a name with a quote is not found.
    LONG FindSymbol(const wchar_t* name, const tagSymbol& Row);
    // The setting and the session that belong to the symbol alone.
    void DeleteOwnedBySymbol(const wchar_t* TableName, LONG Symbol);
    // Empty when there is no such feed. Names are read once.
    std::wstring GetDataFeedName(LONG DataFeed);
    // By the root of the name, or else by this root. Empty when the dictionary has neither.
    std::wstring GetDescriptionByRoot(const wchar_t* SymbolName, const wchar_t* SymbolRoot,
                                      const wchar_t* DataFeedName) const;
    // What a lookup by text begins with: a table for its rows. Null when none can be made, which is reported.
    static CComPtr<IdmTable> NewLookup(const BugSlayerUtil::CScope& scope);
    // The first field of the first row, or 0. More rows than one are traced as a warning.
    LONG FindKey(IdmTable& Table, const wchar_t* sql, const wchar_t* text, const wchar_t* tag);
    // The same, leaving the table on that row; false without one.
    bool FindRow(IdmTable& Table, const wchar_t* sql, const wchar_t* text, const wchar_t* tag);
    // Leaves the table behind its last record.
    void dumpWarning(IdmTable* Table, const wchar_t* Text, const std::wstring& Tag) const;
    // Empty when there is no such exchange, or when it cannot be read.
    std::wstring get_exchange_name(LONG Exchange);
    // The dictionary follows a renamed exchange, and its sinks are told, before those of the exchange.
    void update_exchange_in_root_settings(const std::wstring& OldName, const wchar_t* NewName);

    CComPtr<IdmDatabase> m_Database;
    std::wstring m_DictionaryPath;
    std::unique_ptr<CIdGenerator> m_IdGenerator;
    std::unique_ptr<CRequestes> m_Requestes;
    std::atomic<int> m_NotifyEnabled{1}; // gates the three masks of symbols
    std::atomic<LONG> m_DatabaseOpened{0};
    CComPtr<IdmTable> m_SymbolTable;
    std::map<std::wstring, std::wstring> m_ExchangeTimeZones;
    std::mutex m_DataFeedNamesLock;
    std::map<LONG, std::wstring> m_DataFeedNames; // guarded by m_DataFeedNamesLock
    CNotifySinks m_NotifySinks;
    const std::map<wchar_t, LONG> m_MonthCodes;
    std::atomic<int> m_Initialized{0};
    LocalRPC::CActiveObject_WndMsg m_NotifyObject{true};
    LocalRPC::CActiveObject_thread m_InitObject;
};

} // namespace sqStorage
