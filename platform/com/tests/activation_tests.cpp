#include "platform/com/activation.h"
#include "platform/com/tests/Thing.h"
#include "platform/com/tests/modules/Classes.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/module.h"
#include "platform/registry.h"
#include "platform/text.h"

#include <fstream>
#include <gtest/gtest.h>
#include <latch>
#include <stdexcept>
#include <thread>

namespace platform::tests {

namespace {

constexpr CLSID PartClass = MakeGuid("5b4e2c10-3333-4c6a-9d0e-7a3a51f0aa01");
constexpr CLSID ThrowingClass = MakeGuid("5b4e2c10-3333-4c6a-9d0e-7a3a51f0aa02");
constexpr CLSID NobodysClass = MakeGuid("5b4e2c10-3333-4c6a-9d0e-7a3a51f0aa03");

class CThrowing final : public CObject<CThrowing, ECounter::Plain, IPlain> {
public:
    CThrowing() { throw std::runtime_error("no object today"); }
    HRESULT Touch() override { return S_OK; }
};

constexpr tagClassEntry Table[] = {{PartClass, &CreatePlain<CPart>}, {ThrowingClass, &CreatePlain<CThrowing>}};
const CModuleClasses Classes(Table);

// A registry of its own for each test.
class Activation : public testing::Test {
protected:
    static void Register(REFCLSID clsid, std::wstring_view file) {
        CRegistryKey::Create(ERegistryRoot::Classes, L"CLSID\\" + ToText(clsid) + L"\\InprocServer32")
            .WriteText(L"", file);
    }
    static void RegisterProgId(const std::wstring& progId, const std::wstring& clsid) {
        CRegistryKey::Create(ERegistryRoot::Classes, progId + L"\\CLSID").WriteText(L"", clsid);
    }
    static HRESULT StatusOf(REFCLSID clsid, DWORD context = CLSCTX_ALL) {
        void* object = &object;
        const HRESULT status = CoCreateInstance(clsid, nullptr, context, UuidOf<IUnknown>, &object);
        EXPECT_TRUE(FAILED(status));
        EXPECT_EQ(object, nullptr);
        return status;
    }

    CTemporaryDirectory Directory;
    CScopedEnvironment Registry{L"SQSTORAGE_REGISTRY_DIR", Directory.Name()};
};

} // namespace

TEST_F(Activation, LoadedModulesClassNeedsNoRegistration) {
    CComPtr<IPart> part;
    EXPECT_EQ(CreateInstance(PartClass, part), S_OK);
    ASSERT_TRUE(part);
    EXPECT_EQ(CountOf(part.Get()), 1u);
    part.Reset();
    EXPECT_EQ(CPart::Alive, 0);
}

TEST_F(Activation, LoadedModulesClassComesBeforeTheRegistrys) {
    Register(PartClass, L"/nowhere/libmissing.so");
    CComPtr<IPart> part;
    EXPECT_EQ(CreateInstance(PartClass, part), S_OK);
}

TEST_F(Activation, ClassObjectMakesInstancesAndGivesEveryReferenceBack) {
    const LONG before = CModuleCount::Value();
    {
        CComPtr<IClassFactory> factory;
        ASSERT_EQ(CoGetClassObject(PartClass, CLSCTX_ALL, nullptr, UuidOf<IClassFactory>, factory.PutVoid()), S_OK);
        EXPECT_EQ(CountOf(factory.Get()), 1u);
        CComPtr<IPart> part;
        EXPECT_EQ(factory->CreateInstance(nullptr, UuidOf<IPart>, part.PutVoid()), S_OK);
        EXPECT_EQ(CountOf(part.Get()), 1u);
        EXPECT_EQ(CountOf(factory.Get()), 1u);
        EXPECT_EQ(factory->CreateInstance(nullptr, UuidOf<IPart>, nullptr), E_POINTER);
        CComPtr<IUnknown> refused;
        EXPECT_EQ(factory->CreateInstance(part.Get(), UuidOf<IUnknown>, refused.PutVoid()), CLASS_E_NOAGGREGATION);
    }
    EXPECT_EQ(CModuleCount::Value(), before);
    EXPECT_EQ(CPart::Alive, 0);
}

TEST_F(Activation, LockKeepsTheModule) {
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(CoGetClassObject(PartClass, CLSCTX_ALL, nullptr, UuidOf<IClassFactory>, factory.PutVoid()), S_OK);
    const LONG before = CModuleCount::Value();
    EXPECT_EQ(factory->LockServer(1), S_OK);
    EXPECT_EQ(CModuleCount::Value(), before + 1);
    EXPECT_EQ(factory->LockServer(0), S_OK);
    EXPECT_EQ(CModuleCount::Value(), before);
}

TEST_F(Activation, ModulesOwnExportKnowsItsTableOnly) {
    CComPtr<IClassFactory> factory;
    EXPECT_EQ(Classes.GetClassObject(PartClass, UuidOf<IClassFactory>, factory.PutVoid()), S_OK);
    void* object = &object;
    EXPECT_EQ(Classes.GetClassObject(NobodysClass, UuidOf<IClassFactory>, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(Classes.GetClassObject(PartClass, UuidOf<IThing>, &object), E_NOINTERFACE);
    EXPECT_EQ(Classes.GetClassObject(PartClass, UuidOf<IClassFactory>, nullptr), E_POINTER);
}

TEST_F(Activation, TableThatIsGoneOffersNothing) {
    constexpr tagClassEntry entries[] = {{NobodysClass, &CreatePlain<CPart>}};
    {
        const CModuleClasses classes(entries);
        CComPtr<IPart> part;
        EXPECT_EQ(CreateInstance(NobodysClass, part), S_OK);
    }
    EXPECT_EQ(StatusOf(NobodysClass), REGDB_E_CLASSNOTREG);
}

TEST_F(Activation, InterfaceThatTheClassLacksIsRefused) {
    void* object = &object;
    EXPECT_EQ(CoCreateInstance(PartClass, nullptr, CLSCTX_ALL, UuidOf<IThing>, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CPart::Alive, 0);
}

TEST_F(Activation, AggregationIsRefused) {
    const CComPtr<IPart> outer = MakeObject<CPart>();
    void* object = &object;
    EXPECT_EQ(CoCreateInstance(PartClass, outer.Get(), CLSCTX_ALL, UuidOf<IUnknown>, &object),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CountOf(outer.Get()), 1u);
}

TEST_F(Activation, ExceptionOfAConstructorBecomesAStatus) { EXPECT_EQ(StatusOf(ThrowingClass), E_FAIL); }

TEST_F(Activation, ContextWithoutAnInProcessServerFindsNothing) {
    for (const DWORD context :
         {0u, CLSCTX_INPROC_HANDLER, CLSCTX_LOCAL_SERVER, CLSCTX_REMOTE_SERVER, CLSCTX_ALL & ~CLSCTX_INPROC_SERVER})
        EXPECT_EQ(StatusOf(PartClass, context), REGDB_E_CLASSNOTREG) << context;
    void* object = &object;
    EXPECT_EQ(CoGetClassObject(PartClass, CLSCTX_LOCAL_SERVER, nullptr, UuidOf<IClassFactory>, &object),
              REGDB_E_CLASSNOTREG);
    EXPECT_EQ(object, nullptr);
}

TEST_F(Activation, NullOutPointerIsRefused) {
    EXPECT_EQ(CoCreateInstance(PartClass, nullptr, CLSCTX_ALL, UuidOf<IUnknown>, nullptr), E_POINTER);
    EXPECT_EQ(CoGetClassObject(PartClass, CLSCTX_ALL, nullptr, UuidOf<IClassFactory>, nullptr), E_POINTER);
}

TEST_F(Activation, ClassThatNobodyOffersIsNotRegistered) { EXPECT_EQ(StatusOf(NobodysClass), REGDB_E_CLASSNOTREG); }

TEST_F(Activation, ClassKeyWithoutAModuleIsNotRegistered) {
    CRegistryKey::Create(ERegistryRoot::Classes, L"CLSID\\" + ToText(NobodysClass) + L"\\InprocServer32");
    EXPECT_EQ(StatusOf(NobodysClass), REGDB_E_CLASSNOTREG);
}

TEST_F(Activation, RegistryNamesTheModule) {
    ASSERT_EQ(StatusOf(ModulePartClass), REGDB_E_CLASSNOTREG);
    Register(ModulePartClass, FromUtf8(SQ_CLASS_MODULE));
    CComPtr<IPart> part;
    EXPECT_EQ(CreateInstance(ModulePartClass, part), S_OK);
    ASSERT_TRUE(part);
    LONG number = 0;
    EXPECT_EQ(part->get_Number(&number), S_OK);
    EXPECT_EQ(number, NumberOfModulePart);
    EXPECT_EQ(CountOf(part.Get()), 1u);
}

TEST_F(Activation, RegisteredModuleWithoutTheClassSaysSo) {
    Register(NobodysClass, FromUtf8(SQ_CLASS_MODULE));
    EXPECT_EQ(StatusOf(NobodysClass), CLASS_E_CLASSNOTAVAILABLE);
}

TEST_F(Activation, RegisteredModulesFactoryRefusesAggregation) {
    Register(ModulePartClass, FromUtf8(SQ_CLASS_MODULE));
    const CComPtr<IPart> outer = MakeObject<CPart>();
    void* object = &object;
    EXPECT_EQ(CoCreateInstance(ModulePartClass, outer.Get(), CLSCTX_ALL, UuidOf<IUnknown>, &object),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
}

TEST_F(Activation, ModuleThatIsNotThereIsNotFound) {
    Register(NobodysClass, L"/nowhere/libmissing.so");
    EXPECT_EQ(StatusOf(NobodysClass), CO_E_DLLNOTFOUND);
    Register(NobodysClass, L"");
    EXPECT_EQ(StatusOf(NobodysClass), CO_E_DLLNOTFOUND);
}

TEST_F(Activation, ModuleWithoutTheExportIsFaulty) {
    Register(NobodysClass, FromUtf8(SQ_SILENT_MODULE));
    EXPECT_EQ(StatusOf(NobodysClass), CO_E_ERRORINDLL);
}

TEST_F(Activation, ModuleThatSucceedsWithNothingIsFaulty) {
    Register(NobodysClass, FromUtf8(SQ_HOLLOW_MODULE));
    EXPECT_EQ(StatusOf(NobodysClass), CO_E_ERRORINDLL);
}

TEST_F(Activation, RegistrationRepairedWhileRunningIsSeen) {
    Register(ModulePartClass, L"/nowhere/libmissing.so");
    EXPECT_EQ(StatusOf(ModulePartClass), CO_E_DLLNOTFOUND);
    Register(ModulePartClass, FromUtf8(SQ_CLASS_MODULE));
    CComPtr<IPart> part;
    EXPECT_EQ(CreateInstance(ModulePartClass, part), S_OK);
}

TEST_F(Activation, MalformedRegistryIsAStatusNotAnException) {
    std::ofstream(Directory.Path() / "classes.toml") << "[[[";
    EXPECT_EQ(StatusOf(NobodysClass), REGDB_E_READREGDB);
    CLSID clsid = PartClass;
    EXPECT_EQ(CLSIDFromProgID(L"test.Part", &clsid), REGDB_E_READREGDB);
    EXPECT_EQ(clsid, NullGuid);
    CComPtr<IPart> part;
    EXPECT_EQ(CreateInstance(PartClass, part), S_OK);
}

TEST_F(Activation, ProgIdLeadsToItsClass) {
    RegisterProgId(L"test.Part.1", L"{5b4e2c10-3333-4c6a-9d0e-7a3a51f0aa01}");
    CLSID clsid{};
    EXPECT_EQ(CLSIDFromProgID(L"test.Part.1", &clsid), S_OK);
    EXPECT_EQ(clsid, PartClass);
    EXPECT_EQ(CLSIDFromProgID(L"TEST.part.1", &clsid), S_OK);
    EXPECT_EQ(clsid, PartClass);
}

TEST_F(Activation, ProgIdThatLeadsNowhereIsRefused) {
    RegisterProgId(L"test.Broken", L"{5b4e2c10-3333}");
    CRegistryKey::Create(ERegistryRoot::Classes, L"test.Empty\\CLSID");
    for (const wchar_t* progId : {L"test.Missing", L"test.Broken", L"test.Empty", L""}) {
        CLSID clsid = PartClass;
        EXPECT_EQ(CLSIDFromProgID(progId, &clsid), CO_E_CLASSSTRING) << ToUtf8(progId);
        EXPECT_EQ(clsid, NullGuid);
    }
    CLSID clsid{};
    EXPECT_EQ(CLSIDFromProgID(nullptr, &clsid), E_INVALIDARG);
    EXPECT_EQ(CLSIDFromProgID(L"test.Part", nullptr), E_INVALIDARG);
}

TEST_F(Activation, ThreadsCreateAtTheSameTime) {
    Register(ModulePartClass, FromUtf8(SQ_CLASS_MODULE));
    std::latch start(2);
    int created[2] = {};
    const auto work = [&](int& count) {
        start.arrive_and_wait();
        for (int i = 0; i < 50; ++i) {
            CComPtr<IPart> local;
            CComPtr<IPart> registered;
            if (CreateInstance(PartClass, local) == S_OK && CreateInstance(ModulePartClass, registered) == S_OK)
                ++count;
        }
    };
    std::thread first(work, std::ref(created[0]));
    std::thread second(work, std::ref(created[1]));
    first.join();
    second.join();
    EXPECT_EQ(created[0], 50);
    EXPECT_EQ(created[1], 50);
}

} // namespace platform::tests
