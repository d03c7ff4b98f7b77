// The dictionary of symbol roots: what a root of a feed says of its symbols' settings, sessions and expirations.
//
// S_FALSE when there was nothing to delete or to list.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace IDM_qxStorage {

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;

struct IqxDictionary : IDispatch {
    virtual HRESULT SelectRootSettings(IdmRequest* Request, IdmTable* Table) = 0;
    virtual HRESULT InsertRootSettings(BSTR SymbolRoot, BSTR RootDescription, BSTR Exchange, BSTR Session,
                                       double BigPointValue, double MinMovement, ULONG PriceScale, ULONG DailyLimit,
                                       BSTR Datafeed, BSTR ExpirationRule, LONG ExpirationMonthsMask,
                                       LONG NeedNotify) = 0;
    virtual HRESULT UpdateRootSettings(BSTR SymbolRoot, BSTR NewSymbolRoot, BSTR RootDescription, BSTR Exchange,
                                       BSTR Session, double BigPointValue, double MinMovement, ULONG PriceScale,
                                       ULONG DailyLimit, BSTR Datafeed, BSTR ExpirationRule,
                                       LONG ExpirationMonthsMask, LONG NeedNotify) = 0;
    virtual HRESULT DeleteRootSettings(BSTR SymbolRoot, BSTR Datafeed, LONG NeedNotify) = 0;
    // The caller destroys the array.
    virtual HRESULT GetRootDataFeedNameList(SAFEARRAY** DataFeedNameArray) = 0;
    virtual HRESULT AdjustRootSettings(IdmTable* Table) = 0;

protected:
    ~IqxDictionary() = default;
};

} // namespace IDM_qxStorage

namespace platform {

template <>
struct InterfaceTraits<IDM_qxStorage::IqxDictionary> {
    static constexpr GUID Uuid = MakeGuid("04556eb2-190d-42ef-8cee-fd889d2a0502");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_qxStorage::IqxDictionary> {
    using IqxDictionary = IDM_qxStorage::IqxDictionary;
    static constexpr std::array Methods{
        Method<&IqxDictionary::SelectRootSettings>(1, L"SelectRootSettings", Optional(L"Request"), L"Table"),
        Method<&IqxDictionary::InsertRootSettings>(2, L"InsertRootSettings", L"SymbolRoot", L"RootDescription",
                                                   L"Exchange", L"Session", L"BigPointValue", L"MinMovement",
                                                   L"PriceScale", L"DailyLimit", L"Datafeed", L"ExpirationRule",
                                                   L"ExpirationMonthsMask", Optional(L"NeedNotify")),
        Method<&IqxDictionary::UpdateRootSettings>(
            3, L"UpdateRootSettings", L"SymbolRoot", L"NewSymbolRoot", L"RootDescription", L"Exchange", L"Session",
            L"BigPointValue", L"MinMovement", L"PriceScale", L"DailyLimit", L"Datafeed", L"ExpirationRule",
            L"ExpirationMonthsMask", Optional(L"NeedNotify")),
        Method<&IqxDictionary::DeleteRootSettings>(4, L"DeleteRootSettings", L"SymbolRoot", L"Datafeed",
                                                   Optional(L"NeedNotify")),
        Method<&IqxDictionary::GetRootDataFeedNameList>(5, L"GetRootDataFeedNameList", L"DataFeedNameArray"),
        Method<&IqxDictionary::AdjustRootSettings>(6, L"AdjustRootSettings", L"Table"),
    };
};

} // namespace platform
