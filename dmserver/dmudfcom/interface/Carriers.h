// The carriers: every row that the storage hands out or takes in travels in one of them.
//
//   IdmRequest      says what is wanted: a bag of plain values
//   IdmTable        named, identified columns and a record cursor
//   IdmField        one column of the table's current record
//   IdmAnswer       unpacks bytes that came from another process; IdmTransaction is the step between
//
// Slots stand in the order below, behind those of IDispatch; a property's get and put are neighbours.
//
// Ownership: a carrier belongs to its creator. An IdmField lives inside its table and keeps it alive.
// Threads: a carrier has no lock. One thread at a time uses one; reference counts are interlocked.
// Errors: every operation answers with a status and raises nothing. A null out pointer gives E_POINTER.
// What each operation does is told in Table.h, Field.h and Request.h beside this file.
#pragma once

#include "platform/com/dispatch.h"

namespace IDM_dmudfcom {

inline constexpr CLSID CLSID_dmRequest = platform::MakeGuid("0b7c1d54-6a0e-4d52-9a55-1f6f3c0a5d01");
inline constexpr CLSID CLSID_dmTable = platform::MakeGuid("0b7c1d54-6a0e-4d52-9a55-1f6f3c0a5d02");
inline constexpr CLSID CLSID_dmAnswer = platform::MakeGuid("2bccb88b-5aab-4bf9-87d6-f8289ca99ada");

struct IdmRequest : IDispatch {
    virtual HRESULT get_Id(LONG* Value) = 0;
    virtual HRESULT put_Id(LONG Value) = 0;
    virtual HRESULT get_Type(LONG* Value) = 0;
    virtual HRESULT get_UserData(LONG* Value) = 0;
    virtual HRESULT put_UserData(LONG Value) = 0;
    virtual HRESULT Assign(BSTR Request) = 0;
    virtual HRESULT Advise(IDispatch* pSink) = 0;
    virtual HRESULT Unadvise() = 0;
    virtual HRESULT get_Request(BSTR* Value) = 0;
    virtual HRESULT get_QueryType(LONG* Value) = 0;
    virtual HRESULT get_SymbolListType(LONG* Value) = 0;
    virtual HRESULT get_Datafeed(LONG Mode, LONG* Value) = 0;
    virtual HRESULT put_Datafeed(LONG Mode, LONG Value) = 0;
    virtual HRESULT get_Symbol(LONG Mode, LONG* Value) = 0;
    virtual HRESULT put_Symbol(LONG Mode, LONG Value) = 0;
    virtual HRESULT get_SymbolName(LONG Mode, BSTR* Value) = 0;
    virtual HRESULT put_SymbolName(LONG Mode, BSTR Value) = 0;
    virtual HRESULT get_SymbolRoot(LONG Mode, BSTR* Value) = 0;
    virtual HRESULT put_SymbolRoot(LONG Mode, BSTR Value) = 0;
    virtual HRESULT get_Description(LONG Mode, BSTR* Value) = 0;
    virtual HRESULT put_Description(LONG Mode, BSTR Value) = 0;
    virtual HRESULT get_Category(LONG Mode, LONG* Value) = 0;
    virtual HRESULT put_Category(LONG Mode, LONG Value) = 0;
    virtual HRESULT get_PriceScale(LONG Mode, LONG* Value) = 0;
    virtual HRESULT put_PriceScale(LONG Mode, LONG Value) = 0;
    virtual HRESULT get_Resolution(LONG* Value) = 0;
    virtual HRESULT put_Resolution(LONG Value) = 0;
    virtual HRESULT get_ResolutionSize(LONG* Value) = 0;
    virtual HRESULT put_ResolutionSize(LONG Value) = 0;
    virtual HRESULT get_FieldType(LONG* Value) = 0;
    virtual HRESULT put_FieldType(LONG Value) = 0;
    virtual HRESULT get_Sessions(BSTR* Value) = 0;
    virtual HRESULT put_Sessions(BSTR Value) = 0;
    virtual HRESULT get_StartDate(LONG* Value) = 0;
    virtual HRESULT get_FinishDate(LONG* Value) = 0;
    virtual HRESULT get_BackType(LONG* Value) = 0;
    virtual HRESULT get_BackCapacity(LONG* Value) = 0;
    virtual HRESULT get_TimeZone(LONG* Value) = 0;
    virtual HRESULT get_SessionsTZI(BSTR* Value) = 0;
    virtual HRESULT put_SessionsTZI(BSTR Value) = 0;
    virtual HRESULT get_ExchangeTZI(BSTR* Value) = 0;
    virtual HRESULT put_ExchangeTZI(BSTR Value) = 0;
    virtual HRESULT get_ExactMatch(LONG* Value) = 0;
    virtual HRESULT get_Expired(LONG* Value) = 0;
    virtual HRESULT get_BrowseDirection(LONG* Value) = 0;
    virtual HRESULT get_BrowseType(LONG* Value) = 0;
    virtual HRESULT get_GroupBy(LONG* Value) = 0;
    virtual HRESULT get_Contents(LONG* Value) = 0;
    virtual HRESULT put_Contents(LONG Value) = 0;
    virtual HRESULT Supplement(LONG Mode, VARIANT Data) = 0;
    virtual HRESULT Send(VARIANT Data) = 0;
    virtual HRESULT get_HolidayId(LONG* Value) = 0;
    virtual HRESULT put_HolidayId(LONG Value) = 0;
    virtual HRESULT get_SettingId(LONG* Value) = 0;
    virtual HRESULT put_SettingId(LONG Value) = 0;
    virtual HRESULT get_SessionId(LONG* Value) = 0;
    virtual HRESULT put_SessionId(LONG Value) = 0;
    virtual HRESULT get_SessionType(LONG* Value) = 0;
    virtual HRESULT put_SessionType(LONG Value) = 0;
    virtual HRESULT get_ExchangeId(LONG Mode, LONG* Value) = 0;
    virtual HRESULT put_ExchangeId(LONG Mode, LONG Value) = 0;
    virtual HRESULT get_ExchangeName(LONG Mode, BSTR* Value) = 0;
    virtual HRESULT put_ExchangeName(LONG Mode, BSTR Value) = 0;
    virtual HRESULT get_IncludeDeleted(LONG* Value) = 0;
    virtual HRESULT put_IncludeDeleted(LONG Value) = 0;
    virtual HRESULT get_ActiveOnly(LONG* Value) = 0;
    virtual HRESULT put_ActiveOnly(LONG Value) = 0;
    virtual HRESULT get_Gap(LONG* Value) = 0;
    virtual HRESULT put_Gap(LONG Value) = 0;
    virtual HRESULT get_HourType(LONG* Value) = 0;
    virtual HRESULT put_HourType(LONG Value) = 0;
    virtual HRESULT get_RequestType(LONG* Value) = 0;
    virtual HRESULT put_RequestType(LONG Value) = 0;
    virtual HRESULT get_LIBResolution(LONG* Value) = 0;
    virtual HRESULT put_LIBResolution(LONG Value) = 0;
    virtual HRESULT get_LIBResolutionSize(LONG* Value) = 0;
    virtual HRESULT put_LIBResolutionSize(LONG Value) = 0;
    virtual HRESULT get_LIBStartDate(LONG* Value) = 0;
    virtual HRESULT get_LIBStartTime(LONG* Value) = 0;
    virtual HRESULT get_LIBEndDate(LONG* Value) = 0;
    virtual HRESULT get_LIBEndTime(LONG* Value) = 0;
    virtual HRESULT get_LIBSkipIdenticalTicks(LONG* Value) = 0;
    virtual HRESULT get_DataFeedName(BSTR* Value) = 0;
    virtual HRESULT put_DataFeedName(BSTR Value) = 0;
    virtual HRESULT get_ChartType(LONG* Value) = 0;
    virtual HRESULT put_ChartType(LONG Value) = 0;
    virtual HRESULT get_Attribute(LONG Id, VARIANT* Value) = 0;
    virtual HRESULT put_Attribute(LONG Id, VARIANT Value) = 0;
    virtual HRESULT get_IsCF_Data(LONG* Value) = 0;
    virtual HRESULT get_BuildOnVolume(LONG* Value) = 0;

protected:
    ~IdmRequest() = default;
};

struct IdmField : IDispatch {
    virtual HRESULT get_Id(LONG* Value) = 0;
    virtual HRESULT get_Name(BSTR* Value) = 0;
    virtual HRESULT get_Type(LONG* Value) = 0;
    virtual HRESULT get_TypeName(BSTR* Value) = 0;
    virtual HRESULT get_Offset(LONG* Value) = 0;
    virtual HRESULT get_Size(LONG* Value) = 0;
    virtual HRESULT get_SizeEx(LONG* Value) = 0;
    virtual HRESULT IsName(BSTR Val, LONG* Value) = 0;
    virtual HRESULT get_BaseCode(LONG* Value) = 0;
    virtual HRESULT put_BaseCode(LONG Value) = 0;
    virtual HRESULT get_HasStatus(LONG* Value) = 0;
    virtual HRESULT put_HasStatus(LONG Value) = 0;
    virtual HRESULT get_Status(LONG* Value) = 0;
    virtual HRESULT put_Status(LONG Value) = 0;
    virtual HRESULT get_AsString(BSTR* Value) = 0;
    virtual HRESULT put_AsString(BSTR Value) = 0;
    virtual HRESULT get_AsShort(SHORT* Value) = 0;
    virtual HRESULT put_AsShort(SHORT Value) = 0;
    virtual HRESULT get_AsLong(LONG* Value) = 0;
    virtual HRESULT put_AsLong(LONG Value) = 0;
    virtual HRESULT get_AsFloat(FLOAT* Value) = 0;
    virtual HRESULT put_AsFloat(FLOAT Value) = 0;
    virtual HRESULT get_AsDouble(DOUBLE* Value) = 0;
    virtual HRESULT put_AsDouble(DOUBLE Value) = 0;
    virtual HRESULT get_AsDate(LONG* Value) = 0;
    virtual HRESULT put_AsDate(LONG Value) = 0;
    virtual HRESULT get_AsTime(LONG* Value) = 0;
    virtual HRESULT put_AsTime(LONG Value) = 0;
    virtual HRESULT get_AsPieces(LONG* Value) = 0;
    virtual HRESULT put_AsPieces(LONG Value) = 0;
    virtual HRESULT get_DisplayLength(LONG* Value) = 0;

protected:
    ~IdmField() = default;
};

struct IdmTable : IDispatch {
    virtual HRESULT get_Id(LONG* Value) = 0;
    virtual HRESULT put_Id(LONG Value) = 0;
    virtual HRESULT get_FieldCount(LONG* Value) = 0;
    virtual HRESULT get_RecordCount(LONG* Value) = 0;
    virtual HRESULT get_Contents(LONG* Value) = 0;
    virtual HRESULT put_Contents(LONG Value) = 0;
    virtual HRESULT get_Field(LONG Index, IdmField** Value) = 0;
    virtual HRESULT get_FieldById(LONG FieldId, IdmField** Value) = 0;
    virtual HRESULT get_FieldByName(BSTR FieldName, IdmField** Value) = 0;
    virtual HRESULT AddFieldById(LONG FieldId, LONG BaseCode, LONG HasStatus, LONG Status) = 0;
    virtual HRESULT AddFieldByName(BSTR FieldName, LONG BaseCode, LONG HasStatus, LONG Status) = 0;
    virtual HRESULT Clear() = 0;
    virtual HRESULT Append() = 0;
    virtual HRESULT Post() = 0;
    virtual HRESULT Cancel() = 0;
    virtual HRESULT Delete() = 0;
    virtual HRESULT First() = 0;
    virtual HRESULT Last() = 0;
    virtual HRESULT Prev() = 0;
    virtual HRESULT Next() = 0;
    virtual HRESULT get_Eof(LONG* Value) = 0;
    virtual HRESULT get_Bof(LONG* Value) = 0;
    virtual HRESULT CreateIndex(BSTR FieldList, LONG Id) = 0;
    virtual HRESULT SetIndex(LONG Id) = 0;
    virtual HRESULT ResetIndex() = 0;
    virtual HRESULT SetKey() = 0;
    virtual HRESULT GotoKey(LONG* Value) = 0;
    virtual HRESULT PostTo(LONG Position) = 0;
    virtual HRESULT DeleteKey() = 0;
    virtual HRESULT get_KeyRecordCount(LONG* Value) = 0;
    virtual HRESULT get_KeyPosition(LONG* Value) = 0;
    virtual HRESULT Attach(IdmTable* Table) = 0;
    virtual HRESULT get_AsVariant(VARIANT* Value) = 0;
    virtual HRESULT put_AsVariant(VARIANT Value) = 0;
    virtual HRESULT AddNewField(BSTR Name, ULONG FieldType, ULONG FieldSize) = 0;

protected:
    ~IdmTable() = default;
};

struct IdmTransaction : IDispatch {
    virtual HRESULT get_TableCount(LONG* Value) = 0;
    virtual HRESULT get_Table(LONG Index, IdmTable** Value) = 0;

protected:
    ~IdmTransaction() = default;
};

struct IdmAnswer : IDispatch {
    virtual HRESULT Assign(VARIANT Answer) = 0;
    virtual HRESULT get_TransactionCount(LONG* Value) = 0;
    virtual HRESULT get_Transaction(LONG Index, IdmTransaction** Value) = 0;

protected:
    ~IdmAnswer() = default;
};

} // namespace IDM_dmudfcom

namespace platform {

template <>
struct InterfaceTraits<IDM_dmudfcom::IdmRequest> {
    static constexpr GUID Uuid = MakeGuid("0cc15727-c930-484b-b934-3ff8a817bc39");
    using Base = IDispatch;
};
template <>
struct InterfaceTraits<IDM_dmudfcom::IdmTable> {
    static constexpr GUID Uuid = MakeGuid("e88c0533-9eca-4e53-a440-83fa7bbee370");
    using Base = IDispatch;
};
template <>
struct InterfaceTraits<IDM_dmudfcom::IdmField> {
    static constexpr GUID Uuid = MakeGuid("6b085b07-bcc6-47c1-9095-057d2bc13b56");
    using Base = IDispatch;
};
template <>
struct InterfaceTraits<IDM_dmudfcom::IdmAnswer> {
    static constexpr GUID Uuid = MakeGuid("05f310a5-466e-467f-bc3b-d72c787650b0");
    using Base = IDispatch;
};
template <>
struct InterfaceTraits<IDM_dmudfcom::IdmTransaction> {
    static constexpr GUID Uuid = MakeGuid("0b7c1d54-6a0e-4d52-9a55-1f6f3c0a5d03");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_dmudfcom::IdmRequest> {
    using IdmRequest = IDM_dmudfcom::IdmRequest;
    static constexpr std::array Methods{
        PropertyGet<&IdmRequest::get_Id>(1, L"Id", L"Value"),
        PropertyPut<&IdmRequest::put_Id>(1, L"Id", L"Value"),
        PropertyGet<&IdmRequest::get_Type>(2, L"Type", L"Value"),
        PropertyGet<&IdmRequest::get_UserData>(3, L"UserData", L"Value"),
        PropertyPut<&IdmRequest::put_UserData>(3, L"UserData", L"Value"),
        Method<&IdmRequest::Assign>(4, L"Assign", L"Request"),
        Method<&IdmRequest::Advise>(5, L"Advise", L"pSink"),
        Method<&IdmRequest::Unadvise>(6, L"Unadvise"),
        PropertyGet<&IdmRequest::get_Request>(7, L"Request", L"Value"),
        PropertyGet<&IdmRequest::get_QueryType>(8, L"QueryType", L"Value"),
        PropertyGet<&IdmRequest::get_SymbolListType>(9, L"SymbolListType", L"Value"),
        PropertyGet<&IdmRequest::get_Datafeed>(10, L"Datafeed", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_Datafeed>(10, L"Datafeed", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_Symbol>(11, L"Symbol", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_Symbol>(11, L"Symbol", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_SymbolName>(12, L"SymbolName", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_SymbolName>(12, L"SymbolName", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_SymbolRoot>(13, L"SymbolRoot", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_SymbolRoot>(13, L"SymbolRoot", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_Description>(14, L"Description", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_Description>(14, L"Description", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_Category>(15, L"Category", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_Category>(15, L"Category", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_PriceScale>(16, L"PriceScale", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_PriceScale>(16, L"PriceScale", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_Resolution>(17, L"Resolution", L"Value"),
        PropertyPut<&IdmRequest::put_Resolution>(17, L"Resolution", L"Value"),
        PropertyGet<&IdmRequest::get_ResolutionSize>(18, L"ResolutionSize", L"Value"),
        PropertyPut<&IdmRequest::put_ResolutionSize>(18, L"ResolutionSize", L"Value"),
        PropertyGet<&IdmRequest::get_FieldType>(19, L"FieldType", L"Value"),
        PropertyPut<&IdmRequest::put_FieldType>(19, L"FieldType", L"Value"),
        PropertyGet<&IdmRequest::get_Sessions>(20, L"Sessions", L"Value"),
        PropertyPut<&IdmRequest::put_Sessions>(20, L"Sessions", L"Value"),
        PropertyGet<&IdmRequest::get_StartDate>(21, L"StartDate", L"Value"),
        PropertyGet<&IdmRequest::get_FinishDate>(22, L"FinishDate", L"Value"),
        PropertyGet<&IdmRequest::get_BackType>(23, L"BackType", L"Value"),
        PropertyGet<&IdmRequest::get_BackCapacity>(24, L"BackCapacity", L"Value"),
        PropertyGet<&IdmRequest::get_TimeZone>(25, L"TimeZone", L"Value"),
        PropertyGet<&IdmRequest::get_SessionsTZI>(26, L"SessionsTZI", L"Value"),
        PropertyPut<&IdmRequest::put_SessionsTZI>(26, L"SessionsTZI", L"Value"),
        PropertyGet<&IdmRequest::get_ExchangeTZI>(27, L"ExchangeTZI", L"Value"),
        PropertyPut<&IdmRequest::put_ExchangeTZI>(27, L"ExchangeTZI", L"Value"),
        PropertyGet<&IdmRequest::get_ExactMatch>(28, L"ExactMatch", L"Value"),
        PropertyGet<&IdmRequest::get_Expired>(29, L"Expired", L"Value"),
        PropertyGet<&IdmRequest::get_BrowseDirection>(30, L"BrowseDirection", L"Value"),
        PropertyGet<&IdmRequest::get_BrowseType>(31, L"BrowseType", L"Value"),
        PropertyGet<&IdmRequest::get_GroupBy>(32, L"GroupBy", L"Value"),
        PropertyGet<&IdmRequest::get_Contents>(33, L"Contents", L"Value"),
        PropertyPut<&IdmRequest::put_Contents>(33, L"Contents", L"Value"),
        Method<&IdmRequest::Supplement>(34, L"Supplement", L"Mode", L"Data"),
        Method<&IdmRequest::Send>(35, L"Send", L"Data"),
        PropertyGet<&IdmRequest::get_HolidayId>(36, L"HolidayId", L"Value"),
        PropertyPut<&IdmRequest::put_HolidayId>(36, L"HolidayId", L"Value"),
        PropertyGet<&IdmRequest::get_SettingId>(37, L"SettingId", L"Value"),
        PropertyPut<&IdmRequest::put_SettingId>(37, L"SettingId", L"Value"),
        PropertyGet<&IdmRequest::get_SessionId>(38, L"SessionId", L"Value"),
        PropertyPut<&IdmRequest::put_SessionId>(38, L"SessionId", L"Value"),
        PropertyGet<&IdmRequest::get_SessionType>(39, L"SessionType", L"Value"),
        PropertyPut<&IdmRequest::put_SessionType>(39, L"SessionType", L"Value"),
        PropertyGet<&IdmRequest::get_ExchangeId>(40, L"ExchangeId", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_ExchangeId>(40, L"ExchangeId", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_ExchangeName>(41, L"ExchangeName", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_ExchangeName>(41, L"ExchangeName", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_IncludeDeleted>(42, L"IncludeDeleted", L"Value"),
        PropertyPut<&IdmRequest::put_IncludeDeleted>(42, L"IncludeDeleted", L"Value"),
        PropertyGet<&IdmRequest::get_ActiveOnly>(43, L"ActiveOnly", L"Value"),
        PropertyPut<&IdmRequest::put_ActiveOnly>(43, L"ActiveOnly", L"Value"),
        PropertyGet<&IdmRequest::get_Gap>(44, L"Gap", L"Value"),
        PropertyPut<&IdmRequest::put_Gap>(44, L"Gap", L"Value"),
        PropertyGet<&IdmRequest::get_HourType>(45, L"HourType", L"Value"),
        PropertyPut<&IdmRequest::put_HourType>(45, L"HourType", L"Value"),
        PropertyGet<&IdmRequest::get_RequestType>(46, L"RequestType", L"Value"),
        PropertyPut<&IdmRequest::put_RequestType>(46, L"RequestType", L"Value"),
        PropertyGet<&IdmRequest::get_LIBResolution>(47, L"LIBResolution", L"Value"),
        PropertyPut<&IdmRequest::put_LIBResolution>(47, L"LIBResolution", L"Value"),
        PropertyGet<&IdmRequest::get_LIBResolutionSize>(48, L"LIBResolutionSize", L"Value"),
        PropertyPut<&IdmRequest::put_LIBResolutionSize>(48, L"LIBResolutionSize", L"Value"),
        PropertyGet<&IdmRequest::get_LIBStartDate>(49, L"LIBStartDate", L"Value"),
        PropertyGet<&IdmRequest::get_LIBStartTime>(50, L"LIBStartTime", L"Value"),
        PropertyGet<&IdmRequest::get_LIBEndDate>(51, L"LIBEndDate", L"Value"),
        PropertyGet<&IdmRequest::get_LIBEndTime>(52, L"LIBEndTime", L"Value"),
        PropertyGet<&IdmRequest::get_LIBSkipIdenticalTicks>(53, L"LIBSkipIdenticalTicks", L"Value"),
        PropertyGet<&IdmRequest::get_DataFeedName>(54, L"DataFeedName", L"Value"),
        PropertyPut<&IdmRequest::put_DataFeedName>(54, L"DataFeedName", L"Value"),
        PropertyGet<&IdmRequest::get_ChartType>(55, L"ChartType", L"Value"),
        PropertyPut<&IdmRequest::put_ChartType>(55, L"ChartType", L"Value"),
        PropertyGet<&IdmRequest::get_Attribute>(56, L"Attribute", L"Id", L"Value"),
        PropertyPut<&IdmRequest::put_Attribute>(56, L"Attribute", L"Id", L"Value"),
        PropertyGet<&IdmRequest::get_IsCF_Data>(57, L"IsCF_Data", L"Value"),
        PropertyGet<&IdmRequest::get_BuildOnVolume>(58, L"BuildOnVolume", L"Value"),
    };
};

template <>
struct DispatchTable<IDM_dmudfcom::IdmField> {
    using IdmField = IDM_dmudfcom::IdmField;
    static constexpr std::array Methods{
        PropertyGet<&IdmField::get_Id>(1, L"Id", L"Value"),
        PropertyGet<&IdmField::get_Name>(2, L"Name", L"Value"),
        PropertyGet<&IdmField::get_Type>(3, L"Type", L"Value"),
        PropertyGet<&IdmField::get_TypeName>(4, L"TypeName", L"Value"),
        PropertyGet<&IdmField::get_Offset>(5, L"Offset", L"Value"),
        PropertyGet<&IdmField::get_Size>(6, L"Size", L"Value"),
        PropertyGet<&IdmField::get_SizeEx>(7, L"SizeEx", L"Value"),
        Method<&IdmField::IsName>(8, L"IsName", L"Val", L"Value"),
        PropertyGet<&IdmField::get_BaseCode>(9, L"BaseCode", L"Value"),
        PropertyPut<&IdmField::put_BaseCode>(9, L"BaseCode", L"Value"),
        PropertyGet<&IdmField::get_HasStatus>(10, L"HasStatus", L"Value"),
        PropertyPut<&IdmField::put_HasStatus>(10, L"HasStatus", L"Value"),
        PropertyGet<&IdmField::get_Status>(11, L"Status", L"Value"),
        PropertyPut<&IdmField::put_Status>(11, L"Status", L"Value"),
        PropertyGet<&IdmField::get_AsString>(12, L"AsString", L"Value"),
        PropertyPut<&IdmField::put_AsString>(12, L"AsString", L"Value"),
        PropertyGet<&IdmField::get_AsShort>(13, L"AsShort", L"Value"),
        PropertyPut<&IdmField::put_AsShort>(13, L"AsShort", L"Value"),
        PropertyGet<&IdmField::get_AsLong>(14, L"AsLong", L"Value"),
        PropertyPut<&IdmField::put_AsLong>(14, L"AsLong", L"Value"),
        PropertyGet<&IdmField::get_AsFloat>(15, L"AsFloat", L"Value"),
        PropertyPut<&IdmField::put_AsFloat>(15, L"AsFloat", L"Value"),
        PropertyGet<&IdmField::get_AsDouble>(16, L"AsDouble", L"Value"),
        PropertyPut<&IdmField::put_AsDouble>(16, L"AsDouble", L"Value"),
        PropertyGet<&IdmField::get_AsDate>(17, L"AsDate", L"Value"),
        PropertyPut<&IdmField::put_AsDate>(17, L"AsDate", L"Value"),
        PropertyGet<&IdmField::get_AsTime>(18, L"AsTime", L"Value"),
        PropertyPut<&IdmField::put_AsTime>(18, L"AsTime", L"Value"),
        PropertyGet<&IdmField::get_AsPieces>(19, L"AsPieces", L"Value"),
        PropertyPut<&IdmField::put_AsPieces>(19, L"AsPieces", L"Value"),
        PropertyGet<&IdmField::get_DisplayLength>(20, L"DisplayLength", L"Value"),
    };
};

template <>
struct DispatchTable<IDM_dmudfcom::IdmTable> {
    using IdmTable = IDM_dmudfcom::IdmTable;
    static constexpr std::array Methods{
        PropertyGet<&IdmTable::get_Id>(1, L"Id", L"Value"),
        PropertyPut<&IdmTable::put_Id>(1, L"Id", L"Value"),
        PropertyGet<&IdmTable::get_FieldCount>(2, L"FieldCount", L"Value"),
        PropertyGet<&IdmTable::get_RecordCount>(3, L"RecordCount", L"Value"),
        PropertyGet<&IdmTable::get_Contents>(4, L"Contents", L"Value"),
        PropertyPut<&IdmTable::put_Contents>(4, L"Contents", L"Value"),
        PropertyGet<&IdmTable::get_Field>(5, L"Field", L"Index", L"Value"),
        PropertyGet<&IdmTable::get_FieldById>(6, L"FieldById", L"FieldId", L"Value"),
        PropertyGet<&IdmTable::get_FieldByName>(7, L"FieldByName", L"FieldName", L"Value"),
        Method<&IdmTable::AddFieldById>(8, L"AddFieldById", L"FieldId", L"BaseCode", L"HasStatus", L"Status"),
        Method<&IdmTable::AddFieldByName>(9, L"AddFieldByName", L"FieldName", L"BaseCode", L"HasStatus", L"Status"),
        Method<&IdmTable::Clear>(10, L"Clear"),
        Method<&IdmTable::Append>(11, L"Append"),
        Method<&IdmTable::Post>(12, L"Post"),
        Method<&IdmTable::Cancel>(13, L"Cancel"),
        Method<&IdmTable::Delete>(14, L"Delete"),
        Method<&IdmTable::First>(15, L"First"),
        Method<&IdmTable::Last>(16, L"Last"),
        Method<&IdmTable::Prev>(17, L"Prev"),
        Method<&IdmTable::Next>(18, L"Next"),
        PropertyGet<&IdmTable::get_Eof>(19, L"Eof", L"Value"),
        PropertyGet<&IdmTable::get_Bof>(20, L"Bof", L"Value"),
        Method<&IdmTable::CreateIndex>(21, L"CreateIndex", L"FieldList", L"Id"),
        Method<&IdmTable::SetIndex>(22, L"SetIndex", L"Id"),
        Method<&IdmTable::ResetIndex>(23, L"ResetIndex"),
        Method<&IdmTable::SetKey>(24, L"SetKey"),
        Method<&IdmTable::GotoKey>(25, L"GotoKey", L"Value"),
        Method<&IdmTable::PostTo>(26, L"PostTo", L"Position"),
        Method<&IdmTable::DeleteKey>(27, L"DeleteKey"),
        PropertyGet<&IdmTable::get_KeyRecordCount>(28, L"KeyRecordCount", L"Value"),
        PropertyGet<&IdmTable::get_KeyPosition>(29, L"KeyPosition", L"Value"),
        Method<&IdmTable::Attach>(30, L"Attach", L"Table"),
        PropertyGet<&IdmTable::get_AsVariant>(31, L"AsVariant", L"Value"),
        PropertyPut<&IdmTable::put_AsVariant>(31, L"AsVariant", L"Value"),
        Method<&IdmTable::AddNewField>(32, L"AddNewField", L"Name", L"FieldType", L"FieldSize"),
    };
};

template <>
struct DispatchTable<IDM_dmudfcom::IdmTransaction> {
    using IdmTransaction = IDM_dmudfcom::IdmTransaction;
    static constexpr std::array Methods{
        PropertyGet<&IdmTransaction::get_TableCount>(1, L"TableCount", L"Value"),
        PropertyGet<&IdmTransaction::get_Table>(2, L"Table", L"Index", L"Value"),
    };
};

template <>
struct DispatchTable<IDM_dmudfcom::IdmAnswer> {
    using IdmAnswer = IDM_dmudfcom::IdmAnswer;
    static constexpr std::array Methods{
        Method<&IdmAnswer::Assign>(1, L"Assign", L"Answer"),
        PropertyGet<&IdmAnswer::get_TransactionCount>(2, L"TransactionCount", L"Value"),
        PropertyGet<&IdmAnswer::get_Transaction>(3, L"Transaction", L"Index", L"Value"),
    };
};

} // namespace platform
