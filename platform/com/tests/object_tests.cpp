#include "platform/com/object.h"
#include "platform/com/tests/Thing.h"

#include <gtest/gtest.h>
#include <thread>

namespace platform::tests {

TEST(Object, AnswersForItsInterfacesAndTheirBases) {
    const auto part = MakeObject<CPart>();
    for (const IID& iid : {UuidOf<IUnknown>, UuidOf<IDispatch>, UuidOf<IPart>, UuidOf<IPlain>}) {
        CComPtr<IUnknown> object;
        EXPECT_EQ(part->QueryInterface(iid, object.PutVoid()), S_OK) << iid.Data1;
        EXPECT_EQ(CountOf(static_cast<IPart*>(part.Get())), 2u);
    }
    EXPECT_EQ(CountOf(static_cast<IPart*>(part.Get())), 1u);
}

TEST(Object, IdentityIsOneUnknownWhicheverInterfaceIsAsked) {
    const CComPtr<IPart> part = MakeObject<CPart>();
    const CComPtr<IPlain> plain = part.As<IPlain>();
    EXPECT_NE(static_cast<void*>(plain.Get()), static_cast<void*>(part.Get()));
    EXPECT_EQ(part.As<IUnknown>(), plain.As<IUnknown>());
}

TEST(Object, UnknownInterfaceIsRefusedWithNullOut) {
    const auto part = MakeObject<CPart>();
    void* object = part.Get();
    EXPECT_EQ(part->QueryInterface(UuidOf<IThing>, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(part->QueryInterface(UuidOf<IPart>, nullptr), E_POINTER);
    EXPECT_EQ(CountOf(static_cast<IPart*>(part.Get())), 1u);
}

TEST(Object, DeletesItselfWithTheLastReference) {
    ASSERT_EQ(CPart::Alive, 0);
    IPart* const raw = MakeObject<CPart>().Detach();
    EXPECT_EQ(CPart::Alive, 1);
    EXPECT_EQ(raw->AddRef(), 2u);
    EXPECT_EQ(raw->Release(), 1u);
    EXPECT_EQ(raw->Release(), 0u);
    EXPECT_EQ(CPart::Alive, 0);
}

TEST(Object, KeepsItsModuleWhileItLives) {
    const LONG before = CModuleCount::Value();
    {
        const auto part = MakeObject<CPart>();
        const auto thing = MakeObject<CThing>();
        EXPECT_EQ(CModuleCount::Value(), before + 2);
    }
    EXPECT_EQ(CModuleCount::Value(), before);
}

TEST(Object, InterlockedCountIsExactAmongThreads) {
    const CComPtr<IPart> part = MakeObject<CPart>();
    const auto work = [&] {
        for (int i = 0; i < 10000; ++i)
            const CComPtr<IPart> held(part);
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(CountOf(part.Get()), 1u);
}

} // namespace platform::tests
