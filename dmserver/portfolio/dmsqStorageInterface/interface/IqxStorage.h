// Reference data, the portfolio, the dictionary table and custom futures: select, insert, update, delete.
//
// Rows come in an IdmTable that the caller gives; what is wanted is said in an IdmRequest. Keys are integers above
// 0. Dates are day numbers counted from 30 December 1899, but for the date text of DeleteHolidayDetails2.
//
// Statuses: S_OK done; S_FALSE nothing done (no such row, no key given out); E_INVALIDARG an argument refused;
// E_POINTER no storage; E_FAIL an unexpected failure, whose reason stands in the diagnostics log. A statement that
// the database refuses is reported there, too, and the call still answers S_OK.
// Threads: any; the work is done on the caller's thread.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace IDM_qxStorage {

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;

struct IqxStorage : IDispatch {
    // Holiday calendars and their dates.
    virtual HRESULT SelectHoliday(IdmRequest* Request, IdmTable* Table) = 0;
    virtual HRESULT InsertHoliday(BSTR HolidayName, LONG* Holiday) = 0;
    virtual HRESULT DeleteHoliday(LONG Holiday) = 0;
    virtual HRESULT UpdateHoliday(LONG Holiday, BSTR HolidayName) = 0;
    virtual HRESULT SelectHolidayDetails(IdmRequest* Request, IdmTable* Table) = 0;
    // Replaces all dates of the calendar that the current record names.
    virtual HRESULT InsertHolidayDetails(IdmTable* Table) = 0;
    virtual HRESULT DeleteHolidayDetails(LONG Holiday) = 0;
    // Removes one date, given as "dd.mm.yyyy".
    virtual HRESULT DeleteHolidayDetails2(LONG Holiday, BSTR Date) = 0;
    // Price settings.
    virtual HRESULT SelectSetting(IdmRequest* Request, IdmTable* Table) = 0;
    virtual HRESULT InsertSetting(LONG PriceScale, double PointValue, LONG DailyLimit, double MinMovement,
                                  LONG* Setting) = 0;
    virtual HRESULT DeleteSetting(LONG Setting) = 0;
    virtual HRESULT UpdateSetting(LONG Setting, LONG PriceScale, double PointValue, LONG DailyLimit,
                                  double MinMovement) = 0;
    // Data feeds. A deleted feed comes back under its old key when its CLSID is registered again.
    virtual HRESULT SelectDataFeed(IdmRequest* Request, IdmTable* Table) = 0;
    virtual HRESULT InsertDataFeed(BSTR DataFeedName, BSTR DataFeedShortName, BSTR DataFeedDllName, BSTR CLSID,
                                   LONG IsAsc, LONG* Datafeed) = 0;
    virtual HRESULT DeleteDataFeed(LONG Datafeed, LONG* Deleted) = 0;
    virtual HRESULT UpdateDataFeed(LONG Datafeed, BSTR DataFeedName, BSTR DataFeedShortName, BSTR DataFeedDllName,
                                   BSTR CLSID, LONG IsAsc, LONG Active) = 0;
    virtual HRESULT GetDataFeed(BSTR DataFeedName, LONG* DataFeedId) = 0;
    // Exchanges. TimeZoneInformation is a time-zone string.
    virtual HRESULT SelectExchange(IdmRequest* Request, IdmTable* Table) = 0;
    virtual HRESULT InsertExchange(BSTR ExchangeName, BSTR Description, LONG Holiday, LONG Setting, LONG Session,
                                   LONG TimeZone, BSTR MapId, BSTR TimeZoneInformation, LONG* Exchange) = 0;
    virtual HRESULT DeleteExchange(LONG Exchange, LONG* Deleted) = 0;
    virtual HRESULT UpdateExchange(LONG Exchange, BSTR ExchangeName, BSTR Description, LONG Holiday, LONG Setting,
                                   LONG Session, LONG TimeZone, BSTR MapId, BSTR TimeZoneInformation) = 0;
    virtual HRESULT GetExchange(BSTR ExchangeName, LONG* ExchangeId) = 0;
    // Trading sessions and their details.
    virtual HRESULT SelectSession(IdmRequest* Request, IdmTable* Table) = 0;
    virtual HRESULT InsertSession(LONG SessionType, BSTR SessionName, LONG TimeZone, LONG* Session) = 0;
    virtual HRESULT DeleteSession(LONG Session, LONG* Deleted) = 0;
    virtual HRESULT UpdateSession(LONG Session, LONG SessionType, BSTR SessionName, LONG TimeZone) = 0;
    virtual HRESULT SelectSessionDetails(IdmRequest* Request, IdmTable* Table) = 0;
    // Replaces all details of the session that the current record names.
    virtual HRESULT InsertSessionDetails(IdmTable* Table) = 0;
    virtual HRESULT DeleteSessionDetails(LONG Session) = 0;
    // Symbols of the portfolio. Without a request all of them are selected. An insert answers S_OK with a new key,
    // and S_FALSE with the key of the row that is there already when one has the same name, category, feed and
    // exchange; what the database refuses is reported and answers S_OK with a key that has no row.
    virtual HRESULT SelectPortfolio(LONG Mode, IdmRequest* Request, IdmTable* Table) = 0;
    virtual HRESULT InsertPortfolio(BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP, LONG Category,
                                    LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting, LONG SessionType,
                                    LONG CustomSession, LONG TemplateSession, LONG ContractMonth, LONG ContractYear,
                                    double StrikePrice, LONG CallPut, LONG Margin, LONG ExpirationDate,
                                    LONG Expired, LONG ExpirationRule, LONG FirstNoticeDate, LONG Delivery,
                                    LONG* Symbol) = 0;
    virtual HRESULT DeletePortfolio(LONG Symbol) = 0;
    virtual HRESULT UpdatePortfolio(LONG Symbol, BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP,
                                    LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting,
                                    LONG SessionType, LONG CustomSession, LONG TemplateSession, LONG ContractMonth,
                                    LONG ContractYear, double StrikePrice, LONG CallPut, LONG Margin,
                                    LONG ExpirationDate, LONG Expired, LONG ExpirationRule, LONG FirstNoticeDate,
                                    LONG Delivery) = 0;
    // The dictionary table: rows of the same shape. Its insert looks for the same symbol in the portfolio and
    // answers S_OK with that row's key, too.
    virtual HRESULT SelectDictionary(LONG Mode, IdmRequest* Request, IdmTable* Table) = 0;
    virtual HRESULT InsertDictionary(BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP, LONG Category,
                                     LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting, LONG SessionType,
                                     LONG CustomSession, LONG TemplateSession, LONG ContractMonth,
                                     LONG ContractYear, double StrikePrice, LONG CallPut, LONG Margin,
                                     LONG ExpirationDate, LONG Expired, LONG ExpirationRule, LONG FirstNoticeDate,
                                     LONG Delivery, LONG* Symbol) = 0;
    virtual HRESULT DeleteDictionary(LONG Symbol) = 0;
    virtual HRESULT UpdateDictionary(LONG Symbol, BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP,
                                     LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting,
                                     LONG SessionType, LONG CustomSession, LONG TemplateSession, LONG ContractMonth,
                                     LONG ContractYear, double StrikePrice, LONG CallPut, LONG Margin,
                                     LONG ExpirationDate, LONG Expired, LONG ExpirationRule, LONG FirstNoticeDate,
                                     LONG Delivery) = 0;
    // Lookups; 0 when there is no such symbol.
    virtual HRESULT GetSymbol(LONG Datafeed, BSTR SymbolName, LONG Category, LONG Exchange, LONG ExpirationDate,
                              BSTR StrikePrice, LONG CallPut, LONG* Symbol) = 0;
    virtual HRESULT GetAvailableSessions(LONG Symbol, IdmTable* Table) = 0;
    virtual HRESULT GetSymbolByName(LONG Datafeed, BSTR SymbolName, LONG* Symbol) = 0;
    virtual HRESULT GetSymbolByDescription(LONG Datafeed, BSTR Description, BSTR* SymbolName, LONG* Symbol) = 0;
    // Custom futures.
    virtual HRESULT SelectCustomFutures(LONG Mode, IdmRequest* Request, IdmTable* Table) = 0;
    virtual HRESULT InsertCustomFutures(BSTR CFName, BSTR CFRoot, BSTR CFCode, BSTR Description, LONG Datafeed,
                                        LONG Exchange, LONG SettingType, LONG Setting, LONG SessionType,
                                        LONG CustomSession, LONG TemplateSession, LONG Margin, LONG* CF) = 0;
    virtual HRESULT DeleteCustomFutures(LONG CF) = 0;
    virtual HRESULT UpdateCustomFutures(LONG CF, BSTR CFName, BSTR CFRoot, BSTR CFCode, BSTR Description,
                                        LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting,
                                        LONG SessionType, LONG CustomSession, LONG TemplateSession,
                                        LONG Margin) = 0;
    virtual HRESULT UpdateCustomFuturesFormula(LONG CF, BSTR CFRoot, BSTR CFCode, BSTR Description) = 0;

protected:
    ~IqxStorage() = default;
};

} // namespace IDM_qxStorage

namespace platform {

template <>
struct InterfaceTraits<IDM_qxStorage::IqxStorage> {
    static constexpr GUID Uuid = MakeGuid("8f5c2d0e-53b1-4c0d-9a7e-2b6f1d3c4a01");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_qxStorage::IqxStorage> {
    using IqxStorage = IDM_qxStorage::IqxStorage;
    static constexpr std::array Methods{
        Method<&IqxStorage::SelectHoliday>(1, L"SelectHoliday", L"Request", L"Table"),
        Method<&IqxStorage::InsertHoliday>(2, L"InsertHoliday", L"HolidayName", L"Holiday"),
        Method<&IqxStorage::DeleteHoliday>(3, L"DeleteHoliday", L"Holiday"),
        Method<&IqxStorage::UpdateHoliday>(4, L"UpdateHoliday", L"Holiday", L"HolidayName"),
        Method<&IqxStorage::SelectHolidayDetails>(5, L"SelectHolidayDetails", L"Request", L"Table"),
        Method<&IqxStorage::InsertHolidayDetails>(6, L"InsertHolidayDetails", L"Table"),
        Method<&IqxStorage::DeleteHolidayDetails>(7, L"DeleteHolidayDetails", L"Holiday"),
        Method<&IqxStorage::DeleteHolidayDetails2>(8, L"DeleteHolidayDetails2", L"Holiday", L"Date"),
        Method<&IqxStorage::SelectSetting>(9, L"SelectSetting", L"Request", L"Table"),
        Method<&IqxStorage::InsertSetting>(10, L"InsertSetting", L"PriceScale", L"PointValue", L"DailyLimit",
                                           L"MinMovement", L"Setting"),
        Method<&IqxStorage::DeleteSetting>(11, L"DeleteSetting", L"Setting"),
        Method<&IqxStorage::UpdateSetting>(12, L"UpdateSetting", L"Setting", L"PriceScale", L"PointValue",
                                           L"DailyLimit", L"MinMovement"),
        Method<&IqxStorage::SelectDataFeed>(13, L"SelectDataFeed", L"Request", L"Table"),
        Method<&IqxStorage::InsertDataFeed>(14, L"InsertDataFeed", L"DataFeedName", L"DataFeedShortName",
                                            L"DataFeedDllName", L"CLSID", L"IsAsc", L"Datafeed"),
        Method<&IqxStorage::DeleteDataFeed>(15, L"DeleteDataFeed", L"Datafeed", L"Deleted"),
        Method<&IqxStorage::UpdateDataFeed>(16, L"UpdateDataFeed", L"Datafeed", L"DataFeedName",
                                            L"DataFeedShortName", L"DataFeedDllName", L"CLSID", L"IsAsc",
                                            L"Active"),
        Method<&IqxStorage::GetDataFeed>(17, L"GetDataFeed", L"DataFeedName", L"DataFeedId"),
        Method<&IqxStorage::SelectExchange>(18, L"SelectExchange", L"Request", L"Table"),
        Method<&IqxStorage::InsertExchange>(19, L"InsertExchange", L"ExchangeName", L"Description", L"Holiday",
                                            L"Setting", L"Session", L"TimeZone", L"MapId", L"TimeZoneInformation",
                                            L"Exchange"),
        Method<&IqxStorage::DeleteExchange>(20, L"DeleteExchange", L"Exchange", L"Deleted"),
        Method<&IqxStorage::UpdateExchange>(21, L"UpdateExchange", L"Exchange", L"ExchangeName", L"Description",
                                            L"Holiday", L"Setting", L"Session", L"TimeZone", L"MapId",
                                            L"TimeZoneInformation"),
        Method<&IqxStorage::GetExchange>(22, L"GetExchange", L"ExchangeName", L"ExchangeId"),
        Method<&IqxStorage::SelectSession>(23, L"SelectSession", L"Request", L"Table"),
        Method<&IqxStorage::InsertSession>(24, L"InsertSession", L"SessionType", L"SessionName", L"TimeZone",
                                           L"Session"),
        Method<&IqxStorage::DeleteSession>(25, L"DeleteSession", L"Session", L"Deleted"),
        Method<&IqxStorage::UpdateSession>(26, L"UpdateSession", L"Session", L"SessionType", L"SessionName",
                                           L"TimeZone"),
        Method<&IqxStorage::SelectSessionDetails>(27, L"SelectSessionDetails", L"Request", L"Table"),
        Method<&IqxStorage::InsertSessionDetails>(28, L"InsertSessionDetails", L"Table"),
        Method<&IqxStorage::DeleteSessionDetails>(29, L"DeleteSessionDetails", L"Session"),
        Method<&IqxStorage::SelectPortfolio>(30, L"SelectPortfolio", L"Mode", Optional(L"Request"), L"Table"),
        Method<&IqxStorage::InsertPortfolio>(
            31, L"InsertPortfolio", L"SymbolName", L"SymbolRoot", L"Description", L"CUSIP", L"Category",
            L"Datafeed", L"Exchange", L"SettingType", L"Setting", L"SessionType", L"CustomSession",
            L"TemplateSession", L"ContractMonth", L"ContractYear", L"StrikePrice", L"CallPut", L"Margin",
            L"ExpirationDate", L"Expired", L"ExpirationRule", L"FirstNoticeDate", L"Delivery", L"Symbol"),
        Method<&IqxStorage::DeletePortfolio>(32, L"DeletePortfolio", L"Symbol"),
        Method<&IqxStorage::UpdatePortfolio>(
            33, L"UpdatePortfolio", L"Symbol", L"SymbolName", L"SymbolRoot", L"Description", L"CUSIP", L"Category",
            L"Datafeed", L"Exchange", L"SettingType", L"Setting", L"SessionType", L"CustomSession",
            L"TemplateSession", L"ContractMonth", L"ContractYear", L"StrikePrice", L"CallPut", L"Margin",
            L"ExpirationDate", L"Expired", L"ExpirationRule", L"FirstNoticeDate", L"Delivery"),
        Method<&IqxStorage::SelectDictionary>(34, L"SelectDictionary", L"Mode", L"Request", L"Table"),
        Method<&IqxStorage::InsertDictionary>(
            35, L"InsertDictionary", L"SymbolName", L"SymbolRoot", L"Description", L"CUSIP", L"Category",
            L"Datafeed", L"Exchange", L"SettingType", L"Setting", L"SessionType", L"CustomSession",
            L"TemplateSession", L"ContractMonth", L"ContractYear", L"StrikePrice", L"CallPut", L"Margin",
            L"ExpirationDate", L"Expired", L"ExpirationRule", L"FirstNoticeDate", L"Delivery", L"Symbol"),
        Method<&IqxStorage::DeleteDictionary>(36, L"DeleteDictionary", L"Symbol"),
        Method<&IqxStorage::UpdateDictionary>(
            37, L"UpdateDictionary", L"Symbol", L"SymbolName", L"SymbolRoot", L"Description", L"CUSIP", L"Category",
            L"Datafeed", L"Exchange", L"SettingType", L"Setting", L"SessionType", L"CustomSession",
            L"TemplateSession", L"ContractMonth", L"ContractYear", L"StrikePrice", L"CallPut", L"Margin",
            L"ExpirationDate", L"Expired", L"ExpirationRule", L"FirstNoticeDate", L"Delivery"),
        Method<&IqxStorage::GetSymbol>(38, L"GetSymbol", L"Datafeed", L"SymbolName", L"Category", L"Exchange",
                                       L"ExpirationDate", L"StrikePrice", L"CallPut", L"Symbol"),
        Method<&IqxStorage::GetAvailableSessions>(39, L"GetAvailableSessions", L"Symbol", L"Table"),
        Method<&IqxStorage::GetSymbolByName>(40, L"GetSymbolByName", L"Datafeed", L"SymbolName", L"Symbol"),
        Method<&IqxStorage::GetSymbolByDescription>(41, L"GetSymbolByDescription", L"Datafeed", L"Description",
                                                    L"SymbolName", L"Symbol"),
        Method<&IqxStorage::SelectCustomFutures>(42, L"SelectCustomFutures", L"Mode", Optional(L"Request"),
                                                 L"Table"),
        Method<&IqxStorage::InsertCustomFutures>(
            43, L"InsertCustomFutures", L"CFName", L"CFRoot", L"CFCode", L"Description", L"Datafeed", L"Exchange",
            L"SettingType", L"Setting", L"SessionType", L"CustomSession", L"TemplateSession", L"Margin", L"CF"),
        Method<&IqxStorage::DeleteCustomFutures>(44, L"DeleteCustomFutures", L"CF"),
        Method<&IqxStorage::UpdateCustomFutures>(45, L"UpdateCustomFutures", L"CF", L"CFName", L"CFRoot", L"CFCode",
                                                 L"Description", L"Datafeed", L"Exchange", L"SettingType",
                                                 L"Setting", L"SessionType", L"CustomSession", L"TemplateSession",
                                                 L"Margin"),
        Method<&IqxStorage::UpdateCustomFuturesFormula>(46, L"UpdateCustomFuturesFormula", L"CF", L"CFRoot",
                                                        L"CFCode", L"Description"),
    };
};

} // namespace platform
