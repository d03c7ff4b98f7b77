#include "platform/com/tests/Thing.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace platform::tests {

namespace {

struct tagNames {
    HRESULT Status;
    std::vector<DISPID> Ids;
};

tagNames Find(std::vector<std::wstring> names, REFIID iid = NullGuid) {
    const auto thing = MakeObject<CThing>();
    std::vector<LPOLESTR> pointers;
    for (std::wstring& name : names)
        pointers.push_back(name.data());
    tagNames found{S_OK, std::vector<DISPID>(names.size(), 77)};
    found.Status = thing->GetIDsOfNames(iid, pointers.data(), static_cast<UINT>(names.size()), 0, found.Ids.data());
    return found;
}

} // namespace

TEST(DispatchNames, MemberIsFoundWithoutRegardToCase) {
    for (const wchar_t* name : {L"SplitName", L"splitname", L"SPLITNAME"}) {
        const auto found = Find({name});
        EXPECT_EQ(found.Status, S_OK);
        EXPECT_EQ(found.Ids, std::vector<DISPID>{60});
    }
}

TEST(DispatchNames, ParametersAreNumberedFromZero) {
    const auto found = Find({L"Notify", L"value", L"MASK", L"Text", L"Count"});
    EXPECT_EQ(found.Status, S_OK);
    EXPECT_EQ(found.Ids, (std::vector<DISPID>{3, 3, 0, 2, 1}));
}

TEST(DispatchNames, UnknownMemberMakesEveryNameUnknown) {
    const auto found = Find({L"Missing", L"First"});
    EXPECT_EQ(found.Status, DISP_E_UNKNOWNNAME);
    EXPECT_EQ(found.Ids, (std::vector<DISPID>{DISPID_UNKNOWN, DISPID_UNKNOWN}));
}

TEST(DispatchNames, UnknownParameterLeavesTheOthersKnown) {
    const auto found = Find({L"Add", L"Second", L"Third", L"First"});
    EXPECT_EQ(found.Status, DISP_E_UNKNOWNNAME);
    EXPECT_EQ(found.Ids, (std::vector<DISPID>{1, 1, DISPID_UNKNOWN, 0}));
}

TEST(DispatchNames, NamesMatchAsAWhole) {
    EXPECT_EQ(Find({L"Ad"}).Status, DISP_E_UNKNOWNNAME);
    EXPECT_EQ(Find({L"Add "}).Status, DISP_E_UNKNOWNNAME);
    EXPECT_EQ(Find({L""}).Status, DISP_E_UNKNOWNNAME);
}

TEST(DispatchNames, InterfaceArgumentMustBeNull) {
    const auto found = Find({L"Add"}, UuidOf<IThing>);
    EXPECT_EQ(found.Status, DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(found.Ids, std::vector<DISPID>{DISPID_UNKNOWN});
}

TEST(DispatchNames, NullArgumentsAreRefused) {
    const auto thing = MakeObject<CThing>();
    std::wstring text = L"Add";
    LPOLESTR names[] = {text.data(), nullptr};
    DISPID ids[] = {77, 77};
    EXPECT_EQ(thing->GetIDsOfNames(NullGuid, nullptr, 1, 0, ids), E_INVALIDARG);
    EXPECT_EQ(thing->GetIDsOfNames(NullGuid, names, 1, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(thing->GetIDsOfNames(NullGuid, names, 0, 0, ids), E_INVALIDARG);
    EXPECT_EQ(thing->GetIDsOfNames(NullGuid, names, 2, 0, ids), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids[0], 1);
    EXPECT_EQ(ids[1], DISPID_UNKNOWN);
    EXPECT_EQ(thing->GetIDsOfNames(NullGuid, names + 1, 1, 0, ids), DISP_E_UNKNOWNNAME);
}

TEST(DispatchNames, ThereIsNoTypeInformation) {
    const auto thing = MakeObject<CThing>();
    UINT count = 5;
    EXPECT_EQ(thing->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(thing->GetTypeInfoCount(nullptr), E_POINTER);
    auto* info = reinterpret_cast<ITypeInfo*>(&count);
    EXPECT_EQ(thing->GetTypeInfo(0, 0, &info), E_NOTIMPL);
    EXPECT_EQ(info, nullptr);
    EXPECT_EQ(thing->GetTypeInfo(0, 0, nullptr), E_NOTIMPL);
}

TEST(DispatchTable, TellsTypesDirectionsAndNames) {
    const auto table = MethodsOf<IThing>();
    const tagMethod& notify = table[3];
    EXPECT_STREQ(notify.Name, L"Notify");
    EXPECT_EQ(notify.ParameterCount(), 4u);
    EXPECT_EQ(notify.Types[0].Type, VT_UI4);
    EXPECT_EQ(notify.Types[2].Type, VT_BSTR);
    EXPECT_EQ(notify.Types[3].Type, VT_VARIANT);
    EXPECT_FALSE(notify.Names[0].IsOptional);
    EXPECT_TRUE(notify.Names[1].IsOptional);
    EXPECT_FALSE(notify.HasResult());
    const tagMethod& echo = table[5];
    EXPECT_FALSE(echo.Types[0].ByReference);
    EXPECT_TRUE(echo.Types[1].ByReference);
    EXPECT_TRUE(echo.HasResult());
    EXPECT_EQ(*table[8].Types[0].Object, UuidOf<IPart>);
    EXPECT_EQ(table[8].Types[0].Type, VT_DISPATCH);
    EXPECT_TRUE(table[8].Types[0].ByReference);
    EXPECT_EQ(table[9].Types[0].Type, VT_UNKNOWN);
    EXPECT_EQ(table[10].Types[0].Type, VT_ARRAY | VT_BSTR);
    EXPECT_EQ(table[14].ParameterCount(), 0u);
    EXPECT_FALSE(table[14].HasResult());
}

} // namespace platform::tests
