// CqxStorageBase: the class of the storage in this process, with its eleven interfaces.
//
// An instance has one field, the handle on the process's storage. A method tests its arguments, finds the storage,
// calls the operation of the same name and turns the outcome into a status; CallPath.h tells how.
//
// Life: creation takes the handle, which opens the database for the first instance; it fails with E_FAIL when the
// database is not open. The last release gives the handle back.
// Threads: calls may come from any thread. The reference count is plain: one thread at a time counts.
#pragma once

#include "StorageHolder.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorage.h"
#include "platform/com/object.h"

#include <memory>

class CqxStorageBase final
    : public platform::CObject<
          CqxStorageBase, platform::ECounter::Plain, platform::CDispatchImpl<IDM_qxStorage::IqxStorage>,
          platform::CDispatchImpl<IDM_qxStorage::IqxPortfolio>, platform::CDispatchImpl<IDM_qxStorage::IascStorage>,
          platform::CDispatchImpl<IDM_qxStorage::IqxStorageNotify>,
          platform::CDispatchImpl<IDM_dmSupplier::IqxAddingSymbol>,
          platform::CDispatchImpl<IDM_qxStorage::IqxStorageSmartNotify>,
          platform::CDispatchImpl<IDM_qxStorage::IqxNativePortfolio>,
          platform::CDispatchImpl<IDM_qxStorage::IqxDictionary>,
          platform::CDispatchImpl<IDM_qxStorage::IqxExpirationRuleSettings>,
          platform::CDispatchImpl<IDM_qxStorage::IqxExpirationDateCalculator>,
          platform::CDispatchImpl<IDM_qxStorage::IqxCurrency>> {
public:
    using IdmRequest = IDM_dmudfcom::IdmRequest;
    using IdmTable = IDM_dmudfcom::IdmTable;

    // Makes an instance and gives out one of its interfaces. Raises nothing.
    static HRESULT Create(IUnknown* outer, REFIID iid, void** object);

    LONG FinalConstruct();
    void FinalRelease();

    ~CqxStorageBase() { FinalRelease(); }

    // IqxStorage
    HRESULT SelectHoliday(IdmRequest* Request, IdmTable* Table) override;
    HRESULT InsertHoliday(BSTR HolidayName, LONG* Holiday) override;
    HRESULT DeleteHoliday(LONG Holiday) override;
    HRESULT UpdateHoliday(LONG Holiday, BSTR HolidayName) override;
    HRESULT SelectHolidayDetails(IdmRequest* Request, IdmTable* Table) override;
    HRESULT InsertHolidayDetails(IdmTable* Table) override;
    HRESULT DeleteHolidayDetails(LONG Holiday) override;
    HRESULT DeleteHolidayDetails2(LONG Holiday, BSTR Date) override;
    HRESULT SelectSetting(IdmRequest* Request, IdmTable* Table) override;
    HRESULT InsertSetting(LONG PriceScale, double PointValue, LONG DailyLimit, double MinMovement,
                          LONG* Setting) override;
    HRESULT DeleteSetting(LONG Setting) override;
    HRESULT UpdateSetting(LONG Setting, LONG PriceScale, double PointValue, LONG DailyLimit,
                          double MinMovement) override;
    HRESULT SelectDataFeed(IdmRequest* Request, IdmTable* Table) override;
    HRESULT InsertDataFeed(BSTR DataFeedName, BSTR DataFeedShortName, BSTR DataFeedDllName, BSTR CLSID, LONG IsAsc,
                           LONG* Datafeed) override;
    HRESULT DeleteDataFeed(LONG Datafeed, LONG* Deleted) override;
    HRESULT UpdateDataFeed(LONG Datafeed, BSTR DataFeedName, BSTR DataFeedShortName, BSTR DataFeedDllName,
                           BSTR CLSID, LONG IsAsc, LONG Active) override;
    HRESULT GetDataFeed(BSTR DataFeedName, LONG* DataFeedId) override;
    HRESULT SelectExchange(IdmRequest* Request, IdmTable* Table) override;
    HRESULT InsertExchange(BSTR ExchangeName, BSTR Description, LONG Holiday, LONG Setting, LONG Session,
                           LONG TimeZone, BSTR MapId, BSTR TimeZoneInformation, LONG* Exchange) override;
    HRESULT DeleteExchange(LONG Exchange, LONG* Deleted) override;
    HRESULT UpdateExchange(LONG Exchange, BSTR ExchangeName, BSTR Description, LONG Holiday, LONG Setting,
                           LONG Session, LONG TimeZone, BSTR MapId, BSTR TimeZoneInformation) override;
    HRESULT GetExchange(BSTR ExchangeName, LONG* ExchangeId) override;
    HRESULT SelectSession(IdmRequest* Request, IdmTable* Table) override;
    HRESULT InsertSession(LONG SessionType, BSTR SessionName, LONG TimeZone, LONG* Session) override;
    HRESULT DeleteSession(LONG Session, LONG* Deleted) override;
    HRESULT UpdateSession(LONG Session, LONG SessionType, BSTR SessionName, LONG TimeZone) override;
    HRESULT SelectSessionDetails(IdmRequest* Request, IdmTable* Table) override;
    HRESULT InsertSessionDetails(IdmTable* Table) override;
    HRESULT DeleteSessionDetails(LONG Session) override;
    HRESULT SelectPortfolio(LONG Mode, IdmRequest* Request, IdmTable* Table) override;
    HRESULT InsertPortfolio(BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP, LONG Category,
                            LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting, LONG SessionType,
                            LONG CustomSession, LONG TemplateSession, LONG ContractMonth, LONG ContractYear,
                            double StrikePrice, LONG CallPut, LONG Margin, LONG ExpirationDate, LONG Expired,
                            LONG ExpirationRule, LONG FirstNoticeDate, LONG Delivery, LONG* Symbol) override;
    HRESULT DeletePortfolio(LONG Symbol) override;
    HRESULT UpdatePortfolio(LONG Symbol, BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP,
                            LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting,
                            LONG SessionType, LONG CustomSession, LONG TemplateSession, LONG ContractMonth,
                            LONG ContractYear, double StrikePrice, LONG CallPut, LONG Margin, LONG ExpirationDate,
                            LONG Expired, LONG ExpirationRule, LONG FirstNoticeDate, LONG Delivery) override;
    HRESULT SelectDictionary(LONG Mode, IdmRequest* Request, IdmTable* Table) override;
    HRESULT InsertDictionary(BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP, LONG Category,
                             LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting, LONG SessionType,
                             LONG CustomSession, LONG TemplateSession, LONG ContractMonth, LONG ContractYear,
                             double StrikePrice, LONG CallPut, LONG Margin, LONG ExpirationDate, LONG Expired,
                             LONG ExpirationRule, LONG FirstNoticeDate, LONG Delivery, LONG* Symbol) override;
    HRESULT DeleteDictionary(LONG Symbol) override;
    HRESULT UpdateDictionary(LONG Symbol, BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP,
                             LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting,
                             LONG SessionType, LONG CustomSession, LONG TemplateSession, LONG ContractMonth,
                             LONG ContractYear, double StrikePrice, LONG CallPut, LONG Margin, LONG ExpirationDate,
                             LONG Expired, LONG ExpirationRule, LONG FirstNoticeDate, LONG Delivery) override;
    HRESULT GetSymbol(LONG Datafeed, BSTR SymbolName, LONG Category, LONG Exchange, LONG ExpirationDate,
                      BSTR StrikePrice, LONG CallPut, LONG* Symbol) override;
    HRESULT GetAvailableSessions(LONG Symbol, IdmTable* Table) override;
    HRESULT GetSymbolByName(LONG Datafeed, BSTR SymbolName, LONG* Symbol) override;
    HRESULT GetSymbolByDescription(LONG Datafeed, BSTR Description, BSTR* SymbolName, LONG* Symbol) override;
    HRESULT SelectCustomFutures(LONG Mode, IdmRequest* Request, IdmTable* Table) override;
    HRESULT InsertCustomFutures(BSTR CFName, BSTR CFRoot, BSTR CFCode, BSTR Description, LONG Datafeed,
                                LONG Exchange, LONG SettingType, LONG Setting, LONG SessionType, LONG CustomSession,
                                LONG TemplateSession, LONG Margin, LONG* CF) override;
    HRESULT DeleteCustomFutures(LONG CF) override;
    HRESULT UpdateCustomFutures(LONG CF, BSTR CFName, BSTR CFRoot, BSTR CFCode, BSTR Description, LONG Datafeed,
                                LONG Exchange, LONG SettingType, LONG Setting, LONG SessionType, LONG CustomSession,
                                LONG TemplateSession, LONG Margin) override;
    HRESULT UpdateCustomFuturesFormula(LONG CF, BSTR CFRoot, BSTR CFCode, BSTR Description) override;

    // IqxPortfolio
    HRESULT Advise(LONG Mode, IdmRequest* Request, IdmTable* Table, LONG* Id) override;
    HRESULT Unadvise(LONG Id) override;
    HRESULT Fetch(LONG Id, LONG* Count) override;

    // IascStorage
    HRESULT get_Datafeed(LONG* Value) override;
    HRESULT Load(IdmTable* Table, IdmTable* TemplatesTable) override;
    HRESULT Save(IdmTable* Table, IdmTable* TemplatesTable) override;

    // IqxStorageNotify
    HRESULT AdviseNotify(ULONG Mask, IDispatch* pSink) override;
    HRESULT UnadviseNotify(ULONG Mask, IDispatch* pSink) override;

    // IqxAddingSymbol
    HRESULT AddSymbol(BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP, LONG Category, LONG Datafeed,
                      BSTR ExchangeName, LONG ContractMonth, LONG ContractYear, double StrikePrice, LONG CallPut,
                      LONG Margin, LONG ExpirationDate, LONG Expired, LONG ExpirationRule, LONG FirstNoticeDate,
                      LONG Delivery, LONG* pVal) override;

    // IqxStorageSmartNotify
    HRESULT DeletePortfolioSmart(LONG Symbol, LONG isNotify) override;
    HRESULT InsertPortfolioSmart(BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP, LONG Category,
                                 LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting, LONG SessionType,
                                 LONG CustomSession, LONG TemplateSession, LONG ContractMonth, LONG ContractYear,
                                 double StrikePrice, LONG CallPut, LONG Margin, LONG ExpirationDate, LONG Expired,
                                 LONG ExpirationRule, LONG FirstNoticeDate, LONG Delivery, LONG* Symbol,
                                 LONG isNotify) override;
    HRESULT UpdatePortfolioSmart(LONG Symbol, BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP,
                                 LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting,
                                 LONG SessionType, LONG CustomSession, LONG TemplateSession, LONG ContractMonth,
                                 LONG ContractYear, double StrikePrice, LONG CallPut, LONG Margin,
                                 LONG ExpirationDate, LONG Expired, LONG ExpirationRule, LONG FirstNoticeDate,
                                 LONG Delivery, LONG isNotify) override;
    HRESULT InsertSymbols(IdmTable* Table, IdmTable* OutTable, LONG UpdateExisting) override;
    HRESULT SendNotify(LONG Mask) override;

    // IqxNativePortfolio
    HRESULT UpdatePortfolioNative(LONG Symbol, BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP,
                                  LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting,
                                  LONG SessionType, LONG CustomSession, LONG TemplateSession, LONG ContractMonth,
                                  LONG ContractYear, double StrikePrice, LONG CallPut, LONG Margin,
                                  LONG ExpirationDate, LONG Expired, LONG ExpirationRule, LONG FirstNoticeDate,
                                  LONG Delivery) override;

    // IqxDictionary
    HRESULT SelectRootSettings(IdmRequest* Request, IdmTable* Table) override;
    HRESULT InsertRootSettings(BSTR SymbolRoot, BSTR RootDescription, BSTR Exchange, BSTR Session,
                               double BigPointValue, double MinMovement, ULONG PriceScale, ULONG DailyLimit,
                               BSTR Datafeed, BSTR ExpirationRule, LONG ExpirationMonthsMask,
                               LONG NeedNotify) override;
    HRESULT UpdateRootSettings(BSTR SymbolRoot, BSTR NewSymbolRoot, BSTR RootDescription, BSTR Exchange,
                               BSTR Session, double BigPointValue, double MinMovement, ULONG PriceScale,
                               ULONG DailyLimit, BSTR Datafeed, BSTR ExpirationRule, LONG ExpirationMonthsMask,
                               LONG NeedNotify) override;
    HRESULT DeleteRootSettings(BSTR SymbolRoot, BSTR Datafeed, LONG NeedNotify) override;
    HRESULT GetRootDataFeedNameList(SAFEARRAY** DataFeedNameArray) override;
    HRESULT AdjustRootSettings(IdmTable* Table) override;

    // IqxExpirationRuleSettings
    HRESULT SelectExpirationRule(IdmRequest* pRequest, IdmTable* pAnswer) override;
    HRESULT InsertExpirationRule(BSTR RuleName, LONG Offset, LONG OffsetType, LONG ExpirationDateMethod,
                                 LONG ByDaysNumber, LONG ByDaysMonthType, LONG ByDaysOfWeekNumber, LONG WeekNumber,
                                 LONG ByDaysOfWeekMonthType, LONG* RuleID) override;
    HRESULT UpdateExpirationRule(LONG RuleID, BSTR RuleName, LONG Offset, LONG OffsetType,
                                 LONG ExpirationDateMethod, LONG ByDaysNumber, LONG ByDaysMonthType,
                                 LONG ByDaysOfWeekNumber, LONG WeekNumber, LONG ByDaysOfWeekMonthType) override;
    HRESULT DeleteExpirationRule(LONG RuleID, LONG* IsDeleted) override;

    // IqxExpirationDateCalculator
    HRESULT Calculate(BSTR SymbolName, BSTR SymbolRoot, LONG DataFeedId, LONG* ExpirationDate,
                      LONG* MonthCode) override;

    // IqxCurrency
    HRESULT SetCurrency(LONG Id, LONG CurrencyCode) override;
    HRESULT GetCurrency(LONG Id, LONG* pCurrencyCode) override;
    HRESULT DeleteCurrency(LONG Id) override;
    HRESULT SelectCurrency(IdmRequest* Request, IdmTable* Table) override;

private:
    friend class CCallPath;

    // Whether the row that the key names is there, asked through the object's own public Select.
    bool ExistsHoliday(LONG Holiday);
    bool ExistsHolidayDetails(LONG Holiday);
    bool ExistsSetting(LONG Setting);
    bool ExistsDataFeed(LONG Datafeed);
    bool ExistsExchange(LONG Exchange);
    bool ExistsSession(LONG Session);
    bool ExistsSessionDetails(LONG Session);
    bool ExistsDictionary(LONG Symbol);

    // For methods without a guard of their own: what fails here or below reaches the caller as an exception.
    sqStorage::CStorage& StorageOrRaise() const;

    std::unique_ptr<sqStorage::CStorageHolder> m_Holder;
};
