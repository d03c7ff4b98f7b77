// CStorage: the one storage object of the process.
//
// It owns the database connection, the key generator, the registry of change sinks and what is read once at
// start-up. All logic of a table is written as member functions, one source file for each table or subsystem:
//
//     sqStorage.cpp            life: construction, start-up, the one way to a statement, the end
//     sqStorage_Keys.cpp       delete guards and the small checks around keys
//     sqStorage_Holidays.cpp   holiday calendars
//     sqStorage_Settings.cpp   price settings
//     sqStorage_Notify.cpp     announcing changes
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
#include <string>

namespace BugSlayerUtil {
class CScope;
}

namespace sqStorage {

class CDataBaseParams;

// One bit for each kind of change that sinks can be told of.
enum tagNOTIFYMASK : ULONG {
    notifyHoliday = 0x8,
    notifyHolidayDetails = 0x10,
    notifySetting = 0x20,
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

    // Reads of subsystems that this version does not have: they raise, or answer with, E_NOTIMPL.
    void SelectPortfolio(LONG Mode, IdmRequest* Request, IdmTable* Table) override;
    void SelectDataFeed(IdmRequest* Request, IdmTable* Table) override;
    LONG SelectRootSettings(IdmRequest* Request, IdmTable* Table) override;
    LONG SelectExpirationRule(IdmRequest* Request, IdmTable* Table) override;
    void SelectExchange(IdmRequest* Request, IdmTable* Table) override;
    LONG SelectExchange(const wchar_t* ExchangeName) override;

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
    // Raises unless the database holds this program's version of the schema.
    void CheckSchema();
    void LoadExchangeTimeZones();
    // A new key, or 0 without a generator.
    LONG GenerateId();
    // The common end of a write: trace, run, announce.
    void ExecuteAndNotify(const BugSlayerUtil::CScope& scope, const wchar_t* sql, ULONG Mask);

    CComPtr<IdmDatabase> m_Database;
    std::wstring m_DictionaryPath;
    std::unique_ptr<CIdGenerator> m_IdGenerator;
    int m_NotifyEnabled = 1;
    std::atomic<LONG> m_DatabaseOpened{0};
    CComPtr<IdmTable> m_SymbolTable;
    std::map<std::wstring, std::wstring> m_ExchangeTimeZones;
    CNotifySinks m_NotifySinks;
    const std::map<wchar_t, LONG> m_MonthCodes;
    std::atomic<int> m_Initialized{0};
    LocalRPC::CActiveObject_WndMsg m_NotifyObject{true};
    LocalRPC::CActiveObject_thread m_InitObject;
};

} // namespace sqStorage
