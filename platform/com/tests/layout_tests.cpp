// Sizes, offsets and slots of the automation ABI. A host that was compiled elsewhere relies on each of them.
#include "platform/com/activation.h"
#include "platform/com/dispatch.h"
#include "platform/com/tests/Slots.h"
#include "platform/com/tests/Thing.h"

#include <cstddef>
#include <gtest/gtest.h>

namespace platform::tests {

TEST(Layout, IntegersHaveTheWidthsOfTheAbi) {
    EXPECT_EQ(sizeof(BYTE), 1u);
    EXPECT_EQ(sizeof(SHORT), 2u);
    EXPECT_EQ(sizeof(WORD), 2u);
    EXPECT_EQ(sizeof(VARTYPE), 2u);
    EXPECT_EQ(sizeof(VARIANT_BOOL), 2u);
    EXPECT_EQ(sizeof(LONG), 4u);
    EXPECT_EQ(sizeof(ULONG), 4u);
    EXPECT_EQ(sizeof(DWORD), 4u);
    EXPECT_EQ(sizeof(BOOL), 4u);
    EXPECT_EQ(sizeof(HRESULT), 4u);
    EXPECT_EQ(sizeof(DISPID), 4u);
    EXPECT_EQ(sizeof(LONGLONG), 8u);
    EXPECT_EQ(sizeof(DATE), 8u);
    EXPECT_LT(LONG{-1}, 0);
    EXPECT_GT(ULONG(-1), 0u);
}

TEST(Layout, StatusCodesHaveTheirBits) {
    const auto bits = [](HRESULT status) { return static_cast<std::uint32_t>(status); };
    EXPECT_EQ(bits(S_FALSE), 1u);
    EXPECT_EQ(bits(E_POINTER), 0x80004003u);
    EXPECT_EQ(bits(E_FAIL), 0x80004005u);
    EXPECT_EQ(bits(DISP_E_TYPEMISMATCH), 0x80020005u);
    EXPECT_EQ(bits(REGDB_E_CLASSNOTREG), 0x80040154u);
    EXPECT_TRUE(SUCCEEDED(S_FALSE));
    EXPECT_FALSE(FAILED(S_FALSE));
    EXPECT_TRUE(FAILED(E_FAIL));
}

TEST(Layout, Guid) {
    EXPECT_EQ(sizeof(GUID), 16u);
    EXPECT_EQ(alignof(GUID), 4u);
    EXPECT_EQ(offsetof(GUID, Data2), 4u);
    EXPECT_EQ(offsetof(GUID, Data3), 6u);
    EXPECT_EQ(offsetof(GUID, Data4), 8u);
}

TEST(Layout, Variant) {
    EXPECT_EQ(sizeof(VARIANT), 24u);
    EXPECT_EQ(alignof(VARIANT), 8u);
    EXPECT_EQ(offsetof(VARIANT, vt), 0u);
    EXPECT_EQ(offsetof(VARIANT, wReserved1), 2u);
    EXPECT_EQ(offsetof(VARIANT, wReserved3), 6u);
    EXPECT_EQ(offsetof(VARIANT, lVal), 8u);
    EXPECT_EQ(offsetof(VARIANT, bstrVal), 8u);
    EXPECT_EQ(offsetof(VARIANT, brecVal), 8u);
    EXPECT_TRUE(std::is_trivially_copyable_v<VARIANT>);
    EXPECT_TRUE(std::is_standard_layout_v<VARIANT>);
}

TEST(Layout, SafeArray) {
    EXPECT_EQ(sizeof(SAFEARRAY), 32u);
    EXPECT_EQ(offsetof(SAFEARRAY, cDims), 0u);
    EXPECT_EQ(offsetof(SAFEARRAY, fFeatures), 2u);
    EXPECT_EQ(offsetof(SAFEARRAY, cbElements), 4u);
    EXPECT_EQ(offsetof(SAFEARRAY, cLocks), 8u);
    EXPECT_EQ(offsetof(SAFEARRAY, pvData), 16u);
    EXPECT_EQ(offsetof(SAFEARRAY, rgsabound), 24u);
    EXPECT_EQ(sizeof(SAFEARRAYBOUND), 8u);
    EXPECT_EQ(offsetof(SAFEARRAYBOUND, cElements), 0u);
    EXPECT_EQ(offsetof(SAFEARRAYBOUND, lLbound), 4u);
}

TEST(Layout, DispatchParameters) {
    EXPECT_EQ(sizeof(DISPPARAMS), 24u);
    EXPECT_EQ(offsetof(DISPPARAMS, rgvarg), 0u);
    EXPECT_EQ(offsetof(DISPPARAMS, rgdispidNamedArgs), 8u);
    EXPECT_EQ(offsetof(DISPPARAMS, cArgs), 16u);
    EXPECT_EQ(offsetof(DISPPARAMS, cNamedArgs), 20u);
}

TEST(Layout, ExceptionInformation) {
    EXPECT_EQ(sizeof(EXCEPINFO), 64u);
    EXPECT_EQ(offsetof(EXCEPINFO, wCode), 0u);
    EXPECT_EQ(offsetof(EXCEPINFO, bstrSource), 8u);
    EXPECT_EQ(offsetof(EXCEPINFO, bstrDescription), 16u);
    EXPECT_EQ(offsetof(EXCEPINFO, bstrHelpFile), 24u);
    EXPECT_EQ(offsetof(EXCEPINFO, dwHelpContext), 32u);
    EXPECT_EQ(offsetof(EXCEPINFO, pvReserved), 40u);
    EXPECT_EQ(offsetof(EXCEPINFO, pfnDeferredFillIn), 48u);
    EXPECT_EQ(offsetof(EXCEPINFO, scode), 56u);
}

TEST(Layout, VariantTypesHaveTheirNumbers) {
    EXPECT_EQ(VT_I4, 3);
    EXPECT_EQ(VT_BSTR, 8);
    EXPECT_EQ(VT_DISPATCH, 9);
    EXPECT_EQ(VT_ERROR, 10);
    EXPECT_EQ(VT_BOOL, 11);
    EXPECT_EQ(VT_VARIANT, 12);
    EXPECT_EQ(VT_UNKNOWN, 13);
    EXPECT_EQ(VT_UI4, 19);
    EXPECT_EQ(VT_ARRAY | VT_UI1, 0x2011);
    EXPECT_EQ(VT_BYREF, 0x4000);
}

TEST(Slots, Unknown) {
    EXPECT_EQ(SlotOf(&IUnknown::QueryInterface), 0);
    EXPECT_EQ(SlotOf(&IUnknown::AddRef), 1);
    EXPECT_EQ(SlotOf(&IUnknown::Release), 2);
    EXPECT_EQ(sizeof(IUnknown), sizeof(void*));
}

TEST(Slots, ClassFactory) {
    EXPECT_EQ(SlotOf(&IClassFactory::CreateInstance), UnknownSlots);
    EXPECT_EQ(SlotOf(&IClassFactory::LockServer), UnknownSlots + 1);
}

TEST(Slots, Dispatch) {
    EXPECT_EQ(SlotOf(&IDispatch::GetTypeInfoCount), 3);
    EXPECT_EQ(SlotOf(&IDispatch::GetTypeInfo), 4);
    EXPECT_EQ(SlotOf(&IDispatch::GetIDsOfNames), 5);
    EXPECT_EQ(SlotOf(&IDispatch::Invoke), 6);
    EXPECT_EQ(sizeof(IDispatch), sizeof(void*));
}

TEST(Slots, OwnMethodsFollowThoseOfDispatch) {
    EXPECT_EQ(SlotOf(&IThing::Add), DispatchSlots);
    EXPECT_EQ(SlotOf(&IThing::get_Text), DispatchSlots + 1);
    EXPECT_EQ(SlotOf(&IThing::put_Text), DispatchSlots + 2);
    EXPECT_EQ(SlotOf(&IPlain::Touch), UnknownSlots);
}

TEST(Slots, HelperTellsAMethodThatIsNotVirtual) {
    struct tagPlain {
        void Method() {}
    };
    EXPECT_EQ(SlotOf(&tagPlain::Method), NotVirtual);
}

// What a caller without these headers does: index the table that the object begins with.
TEST(Slots, AnObjectIsCalledThroughItsTable) {
    const auto thing = MakeObject<CThing>();
    IThing* object = thing.Get();
    void** const table = *reinterpret_cast<void***>(object);
    EXPECT_EQ(reinterpret_cast<ULONG (*)(void*)>(table[1])(object), 2u);
    EXPECT_EQ(reinterpret_cast<ULONG (*)(void*)>(table[2])(object), 1u);
    LONG sum = 0;
    EXPECT_EQ(reinterpret_cast<HRESULT (*)(void*, LONG, LONG, LONG*)>(table[DispatchSlots])(object, 4, 5, &sum),
              S_OK);
    EXPECT_EQ(sum, 405);
}

TEST(Activation, AllServerContextsTogetherAre23) {
    EXPECT_EQ(CLSCTX_ALL, 23u);
    EXPECT_EQ(CLSCTX_INPROC_SERVER, 1u);
}

} // namespace platform::tests
