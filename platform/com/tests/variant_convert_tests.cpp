// What VariantChangeType makes of every value: the number, or the refusal.
#include "platform/com/tests/Thing.h"
#include "platform/com/variant.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace platform::tests {

namespace {

CVariant Plain(VARTYPE type) {
    CVariant value;
    value.Get().vt = type;
    return value;
}

// The status, and what stands in the target afterwards.
struct tagOutcome {
    HRESULT Status;
    CVariant Value;
};

tagOutcome Change(const CVariant& source, VARTYPE type) {
    tagOutcome outcome{S_OK, CVariant(L"untouched")};
    outcome.Status = VariantChangeType(&outcome.Value.Get(), &source.Get(), 0, type);
    if (FAILED(outcome.Status)) {
        EXPECT_EQ(outcome.Value.Type(), VT_BSTR);
        EXPECT_EQ(ViewOf(outcome.Value.Get().bstrVal), L"untouched");
    } else
        EXPECT_EQ(outcome.Value.Type(), type);
    return outcome;
}

HRESULT StatusOf(const CVariant& source, VARTYPE type) { return Change(source, type).Status; }

LONG LongOf(const CVariant& source) {
    const tagOutcome outcome = Change(source, VT_I4);
    EXPECT_EQ(outcome.Status, S_OK);
    return outcome.Value.Get().lVal;
}

double DoubleOf(const CVariant& source) {
    const tagOutcome outcome = Change(source, VT_R8);
    EXPECT_EQ(outcome.Status, S_OK);
    return outcome.Value.Get().dblVal;
}

std::wstring TextOf(const CVariant& source) {
    const tagOutcome outcome = Change(source, VT_BSTR);
    EXPECT_EQ(outcome.Status, S_OK);
    return std::wstring(ViewOf(outcome.Value.Get().bstrVal));
}

VARIANT_BOOL BoolOf(const CVariant& source) {
    const tagOutcome outcome = Change(source, VT_BOOL);
    EXPECT_EQ(outcome.Status, S_OK);
    return outcome.Value.Get().boolVal;
}

CVariant Float(float value) {
    CVariant variant = Plain(VT_R4);
    variant.Get().fltVal = value;
    return variant;
}

CVariant Unsigned64(ULONGLONG value) {
    CVariant variant = Plain(VT_UI8);
    variant.Get().ullVal = value;
    return variant;
}

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST(ChangeType, HalvesRoundToTheEvenNeighbour) {
    EXPECT_EQ(LongOf(CVariant(0.5)), 0);
    EXPECT_EQ(LongOf(CVariant(1.5)), 2);
    EXPECT_EQ(LongOf(CVariant(2.5)), 2);
    EXPECT_EQ(LongOf(CVariant(3.5)), 4);
    EXPECT_EQ(LongOf(CVariant(-0.5)), 0);
    EXPECT_EQ(LongOf(CVariant(-1.5)), -2);
    EXPECT_EQ(LongOf(CVariant(-2.5)), -2);
    EXPECT_EQ(LongOf(CVariant(2.500001)), 3);
    EXPECT_EQ(LongOf(CVariant(L"2.5")), 2);
    EXPECT_EQ(LongOf(CVariant(L"3.5")), 4);
    EXPECT_EQ(LongOf(Float(4.5f)), 4);
}

TEST(ChangeType, EachWidthOverflowsBeyondItsLimits) {
    constexpr struct {
        VARTYPE Type;
        double Lowest;
        double Highest;
    } widths[] = {{VT_I1, -128, 127},
                  {VT_UI1, 0, 255},
                  {VT_I2, -32768, 32767},
                  {VT_UI2, 0, 65535},
                  {VT_I4, -2147483648.0, 2147483647.0},
                  {VT_INT, -2147483648.0, 2147483647.0},
                  {VT_UI4, 0, 4294967295.0},
                  {VT_UINT, 0, 4294967295.0}};
    for (const auto& width : widths) {
        EXPECT_EQ(StatusOf(CVariant(width.Lowest), width.Type), S_OK) << width.Type;
        EXPECT_EQ(StatusOf(CVariant(width.Highest), width.Type), S_OK) << width.Type;
        EXPECT_EQ(StatusOf(CVariant(width.Highest + 0.4), width.Type), S_OK) << width.Type;
        EXPECT_EQ(StatusOf(CVariant(width.Highest + 0.5), width.Type), DISP_E_OVERFLOW) << width.Type;
        EXPECT_EQ(StatusOf(CVariant(width.Lowest - 1), width.Type), DISP_E_OVERFLOW) << width.Type;
        const auto lowest = static_cast<LONGLONG>(width.Lowest);
        const auto highest = static_cast<LONGLONG>(width.Highest);
        EXPECT_EQ(StatusOf(CVariant(lowest), width.Type), S_OK) << width.Type;
        EXPECT_EQ(StatusOf(CVariant(lowest - 1), width.Type), DISP_E_OVERFLOW) << width.Type;
        EXPECT_EQ(StatusOf(CVariant(highest), width.Type), S_OK) << width.Type;
        EXPECT_EQ(StatusOf(CVariant(highest + 1), width.Type), DISP_E_OVERFLOW) << width.Type;
        EXPECT_EQ(StatusOf(CVariant(std::to_wstring(highest)), width.Type), S_OK) << width.Type;
        EXPECT_EQ(StatusOf(CVariant(std::to_wstring(highest + 1)), width.Type), DISP_E_OVERFLOW) << width.Type;
        for (const double value : {Infinity, -Infinity, NotANumber, 1e300})
            EXPECT_EQ(StatusOf(CVariant(value), width.Type), DISP_E_OVERFLOW) << width.Type;
    }
}

TEST(ChangeType, SixtyFourBitsKeepEveryDigit) {
    constexpr LONGLONG lowest = std::numeric_limits<LONGLONG>::min();
    constexpr LONGLONG highest = std::numeric_limits<LONGLONG>::max();
    EXPECT_EQ(TextOf(CVariant(lowest)), L"-9223372036854775808");
    EXPECT_EQ(Change(CVariant(L"9223372036854775807"), VT_I8).Value.Get().llVal, highest);
    EXPECT_EQ(Change(CVariant(L"18446744073709551615"), VT_UI8).Value.Get().ullVal,
              std::numeric_limits<ULONGLONG>::max());
    EXPECT_EQ(StatusOf(CVariant(L"9223372036854775808"), VT_I8), DISP_E_OVERFLOW);
    EXPECT_EQ(StatusOf(CVariant(L"18446744073709551616"), VT_UI8), DISP_E_OVERFLOW);
    EXPECT_EQ(StatusOf(CVariant(9223372036854775808.0), VT_I8), DISP_E_OVERFLOW);
    EXPECT_EQ(StatusOf(CVariant(-9223372036854775808.0), VT_I8), S_OK);
    EXPECT_EQ(StatusOf(CVariant(18446744073709551616.0), VT_UI8), DISP_E_OVERFLOW);
    EXPECT_EQ(StatusOf(Unsigned64(1ULL << 63), VT_I8), DISP_E_OVERFLOW);
    EXPECT_EQ(TextOf(Unsigned64(~0ULL)), L"18446744073709551615");
    EXPECT_EQ(StatusOf(CVariant(LONGLONG{-1}), VT_UI8), DISP_E_OVERFLOW);
}

TEST(ChangeType, SingleFloatOverflowsButTakesAnyNumberThatFits) {
    EXPECT_EQ(StatusOf(CVariant(1e39), VT_R4), DISP_E_OVERFLOW);
    EXPECT_EQ(Change(CVariant(0.1), VT_R4).Value.Get().fltVal, 0.1f);
    EXPECT_EQ(DoubleOf(Float(0.5f)), 0.5);
    EXPECT_EQ(DoubleOf(CVariant(LONGLONG{1} << 53)), 9007199254740992.0);
}

TEST(ChangeType, TextIsANumberAsAWholeWithBlanksAround) {
    EXPECT_EQ(LongOf(CVariant(L"42")), 42);
    EXPECT_EQ(LongOf(CVariant(L"  42\t ")), 42);
    EXPECT_EQ(LongOf(CVariant(L"+42")), 42);
    EXPECT_EQ(LongOf(CVariant(L"-42")), -42);
    EXPECT_EQ(LongOf(CVariant(L"0042")), 42);
    EXPECT_EQ(LongOf(CVariant(L"1e3")), 1000);
    EXPECT_EQ(DoubleOf(CVariant(L"-1.25E-2")), -0.0125);
    EXPECT_EQ(DoubleOf(CVariant(L".5")), 0.5);
    EXPECT_EQ(DoubleOf(CVariant(L"+0.1")), 0.1);
}

TEST(ChangeType, TextThatIsNoNumberIsRefused) {
    for (const wchar_t* text :
         {L"",     L" ",        L"x",   L"12x",    L"1 2",    L"1,5",  L"1,000", L"0x10",   L"0x1p3", L"inf",
          L"-inf", L"infinity", L"nan", L"NaN(1)", L"1e",     L"+",    L"-",     L"+-5",    L"-+5",   L"--5",
          L"++5",  L"1.2.3",    L"$5",  L"5%",     L"1e999x", L"&H10", L".",     L"\x0661", L"5\n",   L"(5)"})
        for (const VARTYPE type : {VT_I4, VT_R8, VT_UI1, VT_BOOL, VT_DATE})
            EXPECT_EQ(StatusOf(CVariant(text), type), DISP_E_TYPEMISMATCH)
                << testing::PrintToString(std::wstring(text));
    EXPECT_EQ(StatusOf(CVariant(std::wstring_view(L"5\0", 2)), VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(StatusOf(CVariant(static_cast<const wchar_t*>(nullptr)), VT_I4), DISP_E_TYPEMISMATCH);
}

TEST(ChangeType, TextBeyondADoubleOverflowsAndTextBelowOneIsZero) {
    EXPECT_EQ(StatusOf(CVariant(L"1e999"), VT_R8), DISP_E_OVERFLOW);
    EXPECT_EQ(StatusOf(CVariant(L"-1e999"), VT_R8), DISP_E_OVERFLOW);
    EXPECT_EQ(StatusOf(CVariant(L"1e99999999999999999999"), VT_R8), DISP_E_OVERFLOW);
    EXPECT_EQ(StatusOf(CVariant(L"1" + std::wstring(500, L'0')), VT_R8), DISP_E_OVERFLOW);
    EXPECT_EQ(StatusOf(CVariant(L"1" + std::wstring(500, L'0') + L"e-3"), VT_R8), DISP_E_OVERFLOW);
    EXPECT_EQ(DoubleOf(CVariant(L"1e-999")), 0);
    EXPECT_EQ(DoubleOf(CVariant(L"1e-99999999999999999999")), 0);
    EXPECT_EQ(DoubleOf(CVariant(L"0." + std::wstring(500, L'0') + L"1")), 0);
    EXPECT_EQ(DoubleOf(CVariant(L"0." + std::wstring(500, L'0') + L"1e3")), 0);
}

TEST(ChangeType, NumbersWriteTheirShortestText) {
    EXPECT_EQ(TextOf(CVariant(LONG{-12})), L"-12");
    EXPECT_EQ(TextOf(CVariant(ULONG{4294967295u})), L"4294967295");
    EXPECT_EQ(TextOf(CVariant(0.1)), L"0.1");
    EXPECT_EQ(TextOf(CVariant(2.0)), L"2");
    EXPECT_EQ(TextOf(CVariant(-1234.5)), L"-1234.5");
    EXPECT_EQ(TextOf(CVariant(-std::numeric_limits<double>::max())), L"-1.7976931348623157e+308");
    EXPECT_EQ(TextOf(CVariant(std::numeric_limits<double>::denorm_min())), L"5e-324");
    EXPECT_EQ(TextOf(CVariant(-2.2250738585072014e-308)), L"-2.2250738585072014e-308");
    EXPECT_EQ(TextOf(CVariant(-0.00012345678901234567)), L"-0.00012345678901234567");
    EXPECT_EQ(TextOf(Float(0.1f)), L"0.1");
    EXPECT_EQ(TextOf(Float(3.0f)), L"3");
    EXPECT_EQ(DoubleOf(CVariant(TextOf(CVariant(1.0 / 3)))), 1.0 / 3);
}

TEST(ChangeType, Booleans) {
    EXPECT_EQ(BoolOf(CVariant(LONG{0})), VARIANT_FALSE);
    EXPECT_EQ(BoolOf(CVariant(LONG{5})), VARIANT_TRUE);
    EXPECT_EQ(BoolOf(CVariant(0.25)), VARIANT_TRUE);
    EXPECT_EQ(BoolOf(CVariant(L"True")), VARIANT_TRUE);
    EXPECT_EQ(BoolOf(CVariant(L" TRUE ")), VARIANT_TRUE);
    EXPECT_EQ(BoolOf(CVariant(L"false")), VARIANT_FALSE);
    EXPECT_EQ(BoolOf(CVariant(L"0")), VARIANT_FALSE);
    EXPECT_EQ(BoolOf(CVariant(L"-1")), VARIANT_TRUE);
    EXPECT_EQ(BoolOf(CVariant()), VARIANT_FALSE);
    EXPECT_EQ(StatusOf(CVariant(L"yes"), VT_BOOL), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(LongOf(CVariant(true)), -1);
    EXPECT_EQ(DoubleOf(CVariant(true)), -1.0);
    EXPECT_EQ(TextOf(CVariant(true)), L"True");
    EXPECT_EQ(TextOf(CVariant(false)), L"False");
    EXPECT_EQ(StatusOf(CVariant(true), VT_UI4), DISP_E_OVERFLOW);
}

TEST(ChangeType, EmptyIsZeroAndEmptyText) {
    EXPECT_EQ(LongOf(CVariant()), 0);
    EXPECT_EQ(DoubleOf(CVariant()), 0);
    const tagOutcome text = Change(CVariant(), VT_BSTR);
    EXPECT_EQ(text.Status, S_OK);
    ASSERT_NE(text.Value.Get().bstrVal, nullptr);
    EXPECT_EQ(SysStringLen(text.Value.Get().bstrVal), 0u);
}

TEST(ChangeType, NullErrorsAndArraysAreRefused) {
    const CVariant array = CVariant::FromArray(SafeArrayCreateVector(VT_I4, 0, 1), VT_I4);
    for (const VARTYPE type : {VT_I2, VT_I4, VT_R8, VT_BSTR, VT_BOOL, VT_UI4, VT_DISPATCH, VT_UNKNOWN}) {
        EXPECT_EQ(StatusOf(Plain(VT_NULL), type), DISP_E_TYPEMISMATCH) << type;
        EXPECT_EQ(StatusOf(Plain(VT_ERROR), type), DISP_E_TYPEMISMATCH) << type;
        EXPECT_EQ(StatusOf(array, type), DISP_E_TYPEMISMATCH) << type;
    }
    EXPECT_EQ(StatusOf(CVariant(LONG{1}), VT_ARRAY | VT_I4), DISP_E_BADVARTYPE);
    EXPECT_EQ(StatusOf(CVariant(LONG{1}), VT_BYREF | VT_I4), DISP_E_BADVARTYPE);
    EXPECT_EQ(StatusOf(CVariant(LONG{1}), VT_NULL), DISP_E_BADVARTYPE);
    EXPECT_EQ(StatusOf(Plain(VT_CY), VT_I4), DISP_E_TYPEMISMATCH);
}

TEST(ChangeType, ToTheOwnTypeIsACopy) {
    EXPECT_EQ(StatusOf(Plain(VT_NULL), VT_NULL), S_OK);
    EXPECT_EQ(StatusOf(Plain(VT_ERROR), VT_ERROR), S_OK);
    const CVariant array = CVariant::FromArray(SafeArrayCreateVector(VT_I4, 0, 1), VT_I4);
    const tagOutcome copy = Change(array, VT_ARRAY | VT_I4);
    EXPECT_EQ(copy.Status, S_OK);
    EXPECT_NE(copy.Value.Get().parray, array.Get().parray);
}

TEST(ChangeType, TargetMayBeTheSource) {
    CVariant value(L"12");
    EXPECT_EQ(VariantChangeType(&value.Get(), &value.Get(), 0, VT_I4), S_OK);
    EXPECT_EQ(value.Get().lVal, 12);
    EXPECT_EQ(VariantChangeType(&value.Get(), &value.Get(), 0, VT_BSTR), S_OK);
    EXPECT_EQ(value.AsText(), L"12");
    EXPECT_EQ(VariantChangeType(&value.Get(), &value.Get(), 0, VT_BSTR), S_OK);
    EXPECT_EQ(value.AsText(), L"12");
    EXPECT_EQ(VariantChangeType(&value.Get(), &value.Get(), 0, VT_UNKNOWN), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(value.AsText(), L"12");
}

TEST(ChangeType, ObjectsChangeBetweenTheirTwoTypesOnly) {
    const CComPtr<IPart> part = MakeObject<CPart>();
    const CVariant dispatch(static_cast<IDispatch*>(part.Get()));
    {
        const tagOutcome unknown = Change(dispatch, VT_UNKNOWN);
        EXPECT_EQ(unknown.Status, S_OK);
        EXPECT_EQ(CountOf(part.Get()), 3u);
        EXPECT_EQ(StatusOf(unknown.Value, VT_DISPATCH), S_OK);
    }
    EXPECT_EQ(CountOf(part.Get()), 2u);
    EXPECT_EQ(StatusOf(dispatch, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(StatusOf(dispatch, VT_BSTR), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(CountOf(part.Get()), 2u);
    const CComPtr<IPlain> plain = MakeObject<CPlain>();
    EXPECT_EQ(StatusOf(CVariant(static_cast<IUnknown*>(plain.Get())), VT_DISPATCH), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(CountOf(plain.Get()), 1u);
    EXPECT_EQ(StatusOf(CVariant(static_cast<IUnknown*>(nullptr)), VT_DISPATCH), S_OK);
}

} // namespace platform::tests
