// Requests: plain values, and the text that carries them.
#include "TableFixture.h"

#include "dmserver/dmudfcom/interface/RequestText.h"

#include "platform/com/object.h"
#include "platform/com/safearray.h"

#include <algorithm>
#include <span>

namespace dmudfcom_tests {

namespace {

using LongGet = HRESULT (IdmRequest::*)(LONG*);
using LongPut = HRESULT (IdmRequest::*)(LONG);
using TextGet = HRESULT (IdmRequest::*)(BSTR*);
using TextPut = HRESULT (IdmRequest::*)(BSTR);
using ModeGet = HRESULT (IdmRequest::*)(LONG, LONG*);
using ModePut = HRESULT (IdmRequest::*)(LONG, LONG);
using ModeTextGet = HRESULT (IdmRequest::*)(LONG, BSTR*);
using ModeTextPut = HRESULT (IdmRequest::*)(LONG, BSTR);

template <class Read, class Write>
struct tagProperty {
    ERequestProperty Property;
    Read Get;
    Write Put; // null for a property that only Assign sets
};

using enum ERequestProperty;

constexpr tagProperty<LongGet, LongPut> Numbers[] = {
    {Id, &IdmRequest::get_Id, &IdmRequest::put_Id},
    {Type, &IdmRequest::get_Type, nullptr},
    {UserData, &IdmRequest::get_UserData, &IdmRequest::put_UserData},
    {QueryType, &IdmRequest::get_QueryType, nullptr},
    {SymbolListType, &IdmRequest::get_SymbolListType, nullptr},
    {Resolution, &IdmRequest::get_Resolution, &IdmRequest::put_Resolution},
    {ResolutionSize, &IdmRequest::get_ResolutionSize, &IdmRequest::put_ResolutionSize},
    {FieldType, &IdmRequest::get_FieldType, &IdmRequest::put_FieldType},
    {StartDate, &IdmRequest::get_StartDate, nullptr},
    {FinishDate, &IdmRequest::get_FinishDate, nullptr},
    {BackType, &IdmRequest::get_BackType, nullptr},
    {BackCapacity, &IdmRequest::get_BackCapacity, nullptr},
    {TimeZone, &IdmRequest::get_TimeZone, nullptr},
    {ExactMatch, &IdmRequest::get_ExactMatch, nullptr},
    {Expired, &IdmRequest::get_Expired, nullptr},
    {BrowseDirection, &IdmRequest::get_BrowseDirection, nullptr},
    {BrowseType, &IdmRequest::get_BrowseType, nullptr},
    {GroupBy, &IdmRequest::get_GroupBy, nullptr},
    {Contents, &IdmRequest::get_Contents, &IdmRequest::put_Contents},
    {HolidayId, &IdmRequest::get_HolidayId, &IdmRequest::put_HolidayId},
    {SettingId, &IdmRequest::get_SettingId, &IdmRequest::put_SettingId},
    {SessionId, &IdmRequest::get_SessionId, &IdmRequest::put_SessionId},
    {SessionType, &IdmRequest::get_SessionType, &IdmRequest::put_SessionType},
    {IncludeDeleted, &IdmRequest::get_IncludeDeleted, &IdmRequest::put_IncludeDeleted},
    {ActiveOnly, &IdmRequest::get_ActiveOnly, &IdmRequest::put_ActiveOnly},
    {Gap, &IdmRequest::get_Gap, &IdmRequest::put_Gap},
    {HourType, &IdmRequest::get_HourType, &IdmRequest::put_HourType},
    {RequestType, &IdmRequest::get_RequestType, &IdmRequest::put_RequestType},
    {LIBResolution, &IdmRequest::get_LIBResolution, &IdmRequest::put_LIBResolution},
    {LIBResolutionSize, &IdmRequest::get_LIBResolutionSize, &IdmRequest::put_LIBResolutionSize},
    {LIBStartDate, &IdmRequest::get_LIBStartDate, nullptr},
    {LIBStartTime, &IdmRequest::get_LIBStartTime, nullptr},
    {LIBEndDate, &IdmRequest::get_LIBEndDate, nullptr},
    {LIBEndTime, &IdmRequest::get_LIBEndTime, nullptr},
    {LIBSkipIdenticalTicks, &IdmRequest::get_LIBSkipIdenticalTicks, nullptr},
    {ChartType, &IdmRequest::get_ChartType, &IdmRequest::put_ChartType},
    {IsCF_Data, &IdmRequest::get_IsCF_Data, nullptr},
    {BuildOnVolume, &IdmRequest::get_BuildOnVolume, nullptr},
};

constexpr tagProperty<TextGet, TextPut> Texts[] = {
    {Sessions, &IdmRequest::get_Sessions, &IdmRequest::put_Sessions},
    {SessionsTZI, &IdmRequest::get_SessionsTZI, &IdmRequest::put_SessionsTZI},
    {ExchangeTZI, &IdmRequest::get_ExchangeTZI, &IdmRequest::put_ExchangeTZI},
    {DataFeedName, &IdmRequest::get_DataFeedName, &IdmRequest::put_DataFeedName},
};

constexpr tagProperty<ModeGet, ModePut> ModeNumbers[] = {
    {Datafeed, &IdmRequest::get_Datafeed, &IdmRequest::put_Datafeed},
    {Symbol, &IdmRequest::get_Symbol, &IdmRequest::put_Symbol},
    {Category, &IdmRequest::get_Category, &IdmRequest::put_Category},
    {PriceScale, &IdmRequest::get_PriceScale, &IdmRequest::put_PriceScale},
    {ExchangeId, &IdmRequest::get_ExchangeId, &IdmRequest::put_ExchangeId},
};

constexpr tagProperty<ModeTextGet, ModeTextPut> ModeTexts[] = {
    {SymbolName, &IdmRequest::get_SymbolName, &IdmRequest::put_SymbolName},
    {SymbolRoot, &IdmRequest::get_SymbolRoot, &IdmRequest::put_SymbolRoot},
    {Description, &IdmRequest::get_Description, &IdmRequest::put_Description},
    {ExchangeName, &IdmRequest::get_ExchangeName, &IdmRequest::put_ExchangeName},
};

constexpr LONG Modes[] = {0, 1, -1, 2147483647};

std::wstring Number(LONG value) { return L"text " + std::to_wstring(value); }

CVariant BytesVariant(std::string_view bytes) {
    return CVariant::FromArray(platform::MakeByteArray(std::as_bytes(std::span(bytes))), VT_UI1);
}

class CSink final
    : public platform::CObject<CSink, platform::ECounter::Interlocked, platform::CDispatchImpl<IdmTransaction>> {
public:
    HRESULT get_TableCount(LONG*) override { return E_NOTIMPL; }
    HRESULT get_Table(LONG, IdmTable**) override { return E_NOTIMPL; }
};

} // namespace

class RequestTest : public testing::Test {
protected:
    std::wstring Text() {
        CBstr text;
        EXPECT_EQ(m_Request->get_Request(text.Put()), S_OK);
        return std::wstring(text.View());
    }
    HRESULT Assign(IdmRequest& request, std::wstring_view text) { return request.Assign(CBstr(text).Get()); }
    std::wstring TextAt(ModeTextGet get, LONG mode) {
        CBstr text;
        EXPECT_EQ((*m_Request.*get)(mode, text.Put()), S_OK);
        EXPECT_FALSE(text.IsNull());
        return std::wstring(text.View());
    }
    LONG At(ModeGet get, LONG mode) {
        LONG value = -77;
        EXPECT_EQ((*m_Request.*get)(mode, &value), S_OK);
        return value;
    }
    std::wstring TextOf(TextGet get) {
        CBstr text;
        EXPECT_EQ((*m_Request.*get)(text.Put()), S_OK);
        EXPECT_FALSE(text.IsNull());
        return std::wstring(text.View());
    }
    CVariant Attribute(IdmRequest& request, LONG id) {
        CVariant value;
        EXPECT_EQ(request.get_Attribute(id, value.Put()), S_OK);
        return value;
    }

    CComPtr<IdmRequest> m_Request = Make<IdmRequest>(CLSID_dmRequest);
};

TEST_F(RequestTest, WhatWasNeverWrittenIsZeroOrAnEmptyTextAtEveryMode) {
    for (const auto& property : Numbers)
        EXPECT_EQ(Get(*m_Request, property.Get), 0);
    for (const auto& property : Texts)
        EXPECT_EQ(TextOf(property.Get), L"");
    for (const LONG mode : Modes) {
        for (const auto& property : ModeNumbers)
            EXPECT_EQ(At(property.Get, mode), 0);
        for (const auto& property : ModeTexts)
            EXPECT_EQ(TextAt(property.Get, mode), L"");
    }
    EXPECT_EQ(Attribute(*m_Request, 1151).Type(), VT_EMPTY);
}

TEST_F(RequestTest, EveryPropertyKeepsAValueOfItsOwn) {
    LONG next = 100;
    for (const auto& property : Numbers)
        if (property.Put) {
            EXPECT_EQ((*m_Request.*property.Put)(next++), S_OK);
        }
    for (const auto& property : Texts)
        EXPECT_EQ((*m_Request.*property.Put)(CBstr(Number(next++)).Get()), S_OK);
    next = 100;
    for (const auto& property : Numbers)
        EXPECT_EQ(Get(*m_Request, property.Get), property.Put ? next++ : 0);
    for (const auto& property : Texts)
        EXPECT_EQ(TextOf(property.Get), Number(next++));
}

TEST_F(RequestTest, TheValuesOfOneModeAreKeptApartFromThoseOfAnother) {
    LONG next = 1;
    for (const LONG mode : Modes) {
        for (const auto& property : ModeNumbers)
            EXPECT_EQ((*m_Request.*property.Put)(mode, next++), S_OK);
        for (const auto& property : ModeTexts)
            EXPECT_EQ((*m_Request.*property.Put)(mode, CBstr(Number(next++)).Get()), S_OK);
    }
    next = 1;
    for (const LONG mode : Modes) {
        for (const auto& property : ModeNumbers)
            EXPECT_EQ(At(property.Get, mode), next++);
        for (const auto& property : ModeTexts)
            EXPECT_EQ(TextAt(property.Get, mode), Number(next++));
    }
    EXPECT_EQ(At(&IdmRequest::get_Symbol, 2), 0);
}

TEST_F(RequestTest, ANullTextIsAnEmptyOne) {
    m_Request->put_SymbolName(0, CBstr(L"x").Get());
    EXPECT_EQ(m_Request->put_SymbolName(0, nullptr), S_OK);
    EXPECT_EQ(TextAt(&IdmRequest::get_SymbolName, 0), L"");
}

TEST_F(RequestTest, TextThatIsNoUnicodeIsRefused) {
    const wchar_t loneSurrogate[] = {wchar_t(0xDFFF), 0};
    m_Request->put_SymbolName(0, CBstr(L"x").Get());
    EXPECT_EQ(m_Request->put_SymbolName(0, CBstr(loneSurrogate).Get()), E_INVALIDARG);
    EXPECT_EQ(TextAt(&IdmRequest::get_SymbolName, 0), L"x");
    EXPECT_EQ(m_Request->put_Attribute(1, CVariant(loneSurrogate).Get()), E_INVALIDARG);
    EXPECT_EQ(m_Request->Send(CVariant(loneSurrogate).Get()), E_INVALIDARG);
}

TEST_F(RequestTest, NullOutPointersAreRefused) {
    for (const auto& property : Numbers)
        EXPECT_EQ((*m_Request.*property.Get)(nullptr), E_POINTER);
    for (const auto& property : Texts)
        EXPECT_EQ((*m_Request.*property.Get)(nullptr), E_POINTER);
    for (const auto& property : ModeNumbers)
        EXPECT_EQ((*m_Request.*property.Get)(0, nullptr), E_POINTER);
    for (const auto& property : ModeTexts)
        EXPECT_EQ((*m_Request.*property.Get)(0, nullptr), E_POINTER);
    EXPECT_EQ(m_Request->get_Attribute(1, nullptr), E_POINTER);
    EXPECT_EQ(m_Request->get_Request(nullptr), E_POINTER);
    EXPECT_EQ(m_Request->Advise(nullptr), E_POINTER);
}

TEST_F(RequestTest, AttributesAreValuesOfAnyKindThatCanBeCarried) {
    EXPECT_EQ(m_Request->put_Attribute(1151, CVariant(LONG{1}).Get()), S_OK);
    EXPECT_EQ(m_Request->put_Attribute(-1, CVariant(L"text").Get()), S_OK);
    EXPECT_EQ(Attribute(*m_Request, 1151).AsLong(), 1);
    EXPECT_EQ(Attribute(*m_Request, -1).AsText(), L"text");
    EXPECT_EQ(m_Request->put_Attribute(1151, CVariant().Get()), S_OK);
    EXPECT_EQ(Attribute(*m_Request, 1151).Type(), VT_EMPTY);
    LONG number = 7;
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_I4;
    reference.plVal = &number;
    EXPECT_EQ(m_Request->put_Attribute(2, reference), S_OK);
    number = 8;
    EXPECT_EQ(Attribute(*m_Request, 2).AsLong(), 7);
}

TEST_F(RequestTest, ObjectsAndArraysOfOtherThanBytesAreRefused) {
    EXPECT_EQ(m_Request->put_Attribute(1, CVariant(m_Request.Get()).Get()), DISP_E_BADVARTYPE);
    const auto longs = CVariant::FromArray(SafeArrayCreateVector(VT_I4, 0, 2), VT_I4);
    EXPECT_EQ(m_Request->put_Attribute(1, longs.Get()), DISP_E_BADVARTYPE);
    EXPECT_EQ(m_Request->Supplement(1, longs.Get()), DISP_E_BADVARTYPE);
    EXPECT_EQ(m_Request->Send(longs.Get()), DISP_E_BADVARTYPE);
    EXPECT_EQ(Attribute(*m_Request, 1).Type(), VT_EMPTY);
    EXPECT_EQ(References(*m_Request), 1U);
}

TEST_F(RequestTest, AdviseHoldsTheSinkUntilUnadvise) {
    const auto first = platform::MakeObject<CSink>();
    const auto second = platform::MakeObject<CSink>();
    EXPECT_EQ(m_Request->Unadvise(), S_FALSE);
    EXPECT_EQ(m_Request->Advise(first.Get()), S_OK);
    EXPECT_EQ(References(*first), 2U);
    EXPECT_EQ(m_Request->Advise(second.Get()), S_OK);
    EXPECT_EQ(References(*first), 1U);
    EXPECT_EQ(References(*second), 2U);
    EXPECT_EQ(m_Request->Unadvise(), S_OK);
    EXPECT_EQ(References(*second), 1U);
    m_Request->Advise(first.Get());
    m_Request.Reset();
    EXPECT_EQ(References(*first), 1U);
}

// The text

TEST_F(RequestTest, TheTextCarriesTheWholeRequest) {
    tagRequestData data;
    LONG next = 1;
    for (const auto& property : Numbers)
        data.Number(property.Property) = -next++;
    for (const auto& property : Texts)
        data.Text(property.Property) = Number(next++);
    for (const LONG mode : Modes) {
        for (const auto& property : ModeNumbers)
            data.Number(property.Property, mode) = next++;
        for (const auto& property : ModeTexts)
            data.Text(property.Property, mode) = Number(next++) + L" \u0416\U0001F600";
    }
    data.Attributes[1151] = CVariant(true);
    data.Supplements[3] = CVariant(L"supplement");
    data.Sent = BytesVariant("\x00\xFF bytes");
    ASSERT_EQ(Assign(*m_Request, MakeRequestText(data)), S_OK);
    next = 1;
    for (const auto& property : Numbers)
        EXPECT_EQ(Get(*m_Request, property.Get), -next++);
    for (const auto& property : Texts)
        EXPECT_EQ(TextOf(property.Get), Number(next++));
    for (const LONG mode : Modes) {
        for (const auto& property : ModeNumbers)
            EXPECT_EQ(At(property.Get, mode), next++);
        for (const auto& property : ModeTexts)
            EXPECT_EQ(TextAt(property.Get, mode), Number(next++) + L" \u0416\U0001F600");
    }
    EXPECT_EQ(Attribute(*m_Request, 1151).Type(), VT_BOOL);
    EXPECT_EQ(Text(), MakeRequestText(data));
    const auto copy = Make<IdmRequest>(CLSID_dmRequest);
    ASSERT_EQ(Assign(*copy, Text()), S_OK);
    CBstr copied;
    EXPECT_EQ(copy->get_Request(copied.Put()), S_OK);
    EXPECT_EQ(copied.View(), Text());
}

TEST_F(RequestTest, TheTextIsPlainAsciiInOneLine) {
    m_Request->put_SymbolName(0, CBstr(L"\u0416").Get());
    const std::wstring text = Text();
    EXPECT_FALSE(text.empty());
    for (const wchar_t c : text)
        EXPECT_TRUE(c > L' ' && c < 127);
}

TEST_F(RequestTest, AssignForgetsWhatTheTextDoesNotHaveAndKeepsTheSink) {
    const auto sink = platform::MakeObject<CSink>();
    m_Request->Advise(sink.Get());
    m_Request->put_Symbol(0, 5);
    m_Request->put_Attribute(1, CVariant(LONG{1}).Get());
    tagRequestData data;
    data.Number(Type) = 9;
    ASSERT_EQ(Assign(*m_Request, MakeRequestText(data)), S_OK);
    EXPECT_EQ(Get(*m_Request, &IdmRequest::get_Type), 9);
    EXPECT_EQ(At(&IdmRequest::get_Symbol, 0), 0);
    EXPECT_EQ(Attribute(*m_Request, 1).Type(), VT_EMPTY);
    EXPECT_EQ(References(*sink), 2U);
}

TEST_F(RequestTest, WhatSupplementAndSendKeepIsReadFromTheText) {
    EXPECT_EQ(m_Request->Supplement(2, CVariant(L"more").Get()), S_OK);
    EXPECT_EQ(m_Request->Supplement(3, CVariant(LONG{4}).Get()), S_OK);
    EXPECT_EQ(m_Request->Supplement(3, CVariant().Get()), S_OK);
    EXPECT_EQ(m_Request->Send(BytesVariant("first").Get()), S_OK);
    EXPECT_EQ(m_Request->Send(BytesVariant("second").Get()), S_OK);
    const auto data = ReadRequestText(Text());
    ASSERT_TRUE(data);
    ASSERT_EQ(data->Supplements.size(), 1U);
    EXPECT_EQ(data->Supplements.at(2).AsText(), L"more");
    EXPECT_EQ(platform::BytesOf(data->Sent.Get().parray).size(), 6U);
}

TEST_F(RequestTest, ValuesOfEveryVariantTypeComeBackAsTheyWere) {
    std::vector<CVariant> values;
    const auto add = [&](VARTYPE type, auto member, auto value) {
        CVariant& variant = values.emplace_back();
        variant.Get().vt = type;
        variant.Get().*member = value;
    };
    values.emplace_back().Get().vt = VT_NULL;
    add(VT_I1, &VARIANT::cVal, static_cast<signed char>(-128));
    add(VT_UI1, &VARIANT::bVal, BYTE{255});
    add(VT_I2, &VARIANT::iVal, SHORT{-32768});
    add(VT_UI2, &VARIANT::uiVal, USHORT{65535});
    add(VT_I4, &VARIANT::lVal, LONG{-2147483647 - 1});
    add(VT_UI4, &VARIANT::ulVal, ULONG{4294967295U});
    add(VT_I8, &VARIANT::llVal, std::numeric_limits<LONGLONG>::min());
    add(VT_UI8, &VARIANT::ullVal, std::numeric_limits<ULONGLONG>::max());
    add(VT_CY, &VARIANT::llVal, LONGLONG{12345});
    add(VT_R4, &VARIANT::fltVal, 0.1F);
    add(VT_R8, &VARIANT::dblVal, 0.1);
    add(VT_DATE, &VARIANT::date, 36585.5);
    add(VT_BOOL, &VARIANT::boolVal, VARIANT_TRUE);
    add(VT_ERROR, &VARIANT::scode, DISP_E_PARAMNOTFOUND);
    values.emplace_back(L"text \u0416");
    values.push_back(BytesVariant("bytes"));
    values.push_back(BytesVariant(""));
    for (LONG id = 0; id < static_cast<LONG>(values.size()); ++id)
        ASSERT_EQ(m_Request->put_Attribute(id, values[static_cast<std::size_t>(id)].Get()), S_OK) << id;
    const auto copy = Make<IdmRequest>(CLSID_dmRequest);
    ASSERT_EQ(Assign(*copy, Text()), S_OK);
    for (LONG id = 0; id < static_cast<LONG>(values.size()); ++id) {
        const CVariant& expected = values[static_cast<std::size_t>(id)];
        const CVariant value = Attribute(*copy, id);
        ASSERT_EQ(value.Type(), expected.Type()) << id;
        if (value.Type() == VT_BSTR)
            EXPECT_EQ(value.AsText(), expected.AsText());
        else if (value.Type() & VT_ARRAY)
            EXPECT_TRUE(std::ranges::equal(platform::BytesOf(value.Get().parray),
                                           platform::BytesOf(expected.Get().parray)));
        else
            EXPECT_EQ(value.Get().llVal, expected.Get().llVal) << id;
    }
}

TEST_F(RequestTest, ATextCutOrAlteredAnywhereIsRefusedAndChangesNothing) {
    m_Request->put_Symbol(0, 5);
    m_Request->put_SymbolName(1, CBstr(L"ESZ5").Get());
    const std::wstring good = Text();
    for (std::size_t place = 0; place < good.size(); ++place) {
        ASSERT_EQ(Assign(*m_Request, good.substr(0, place)), E_FAIL) << place;
        for (const wchar_t c : {L'A', L'B', L'/', L'=', L' ', L'\x416'}) {
            std::wstring altered = good;
            altered[place] = c;
            if (altered != good) {
                ASSERT_EQ(Assign(*m_Request, altered), E_FAIL) << place;
            }
        }
    }
    for (const std::wstring& wrong : {good + L"AAAA", L" " + good, good + L"\n", std::wstring(L"Type=2")})
        EXPECT_EQ(Assign(*m_Request, wrong), E_FAIL);
    EXPECT_EQ(m_Request->Assign(nullptr), E_FAIL);
    EXPECT_EQ(Text(), good);
}

TEST_F(RequestTest, BuildingATextNamesTheValueThatIsWrong) {
    const auto messageOf = [](auto spoil) -> std::string {
        tagRequestData data;
        spoil(data);
        try {
            MakeRequestText(data);
        } catch (const std::invalid_argument& error) {
            return error.what();
        }
        return "nothing was refused";
    };
    EXPECT_EQ(messageOf([](tagRequestData& d) { d.Text(Symbol) = L"x"; }),
              "the request's property 11 is a number, not a text");
    EXPECT_EQ(messageOf([](tagRequestData& d) { d.Number(SymbolName) = 1; }),
              "the request's property 12 is a text, not a number");
    EXPECT_EQ(messageOf([](tagRequestData& d) { d.Number(Type, 1) = 1; }),
              "the request's property 2 takes no Mode");
    EXPECT_EQ(messageOf([](tagRequestData& d) { d.Number(ERequestProperty(34)) = 1; }),
              "the request's property 34 does not exist");
    EXPECT_EQ(messageOf([](tagRequestData& d) { d.Text(SymbolName) = std::wstring(1, wchar_t(0xD800)); }),
              "the request's property 12 is no Unicode text");
    EXPECT_EQ(
        messageOf([](tagRequestData& d) { d.Attributes[4] = CVariant(Make<IdmRequest>(CLSID_dmRequest).Get()); }),
        "the request's attribute 4 is of a type that cannot be carried or is no Unicode text");
}

TEST_F(RequestTest, TheKindsOfThePropertiesAreThoseOfTheInterface) {
    for (const auto& property : Numbers)
        EXPECT_TRUE(!IsTextProperty(property.Property) && !IsModeProperty(property.Property));
    for (const auto& property : Texts)
        EXPECT_TRUE(IsTextProperty(property.Property) && !IsModeProperty(property.Property));
    for (const auto& property : ModeNumbers)
        EXPECT_TRUE(!IsTextProperty(property.Property) && IsModeProperty(property.Property));
    for (const auto& property : ModeTexts)
        EXPECT_TRUE(IsTextProperty(property.Property) && IsModeProperty(property.Property));
    for (const auto& property : Numbers) {
        const auto methods = platform::MethodsOf<IdmRequest>();
        EXPECT_TRUE(std::ranges::any_of(methods, [&](const platform::tagMethod& method) {
            return method.Id == static_cast<LONG>(property.Property) && method.Kind == DISPATCH_PROPERTYGET;
        }));
    }
}

} // namespace dmudfcom_tests
