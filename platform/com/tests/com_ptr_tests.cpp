#include "platform/com/com_ptr.h"
#include "platform/com/tests/Thing.h"

#include <gtest/gtest.h>

namespace platform::tests {

TEST(ComPtr, EveryReferenceIsGivenBack) {
    const CComPtr<CPart> part = MakeObject<CPart>();
    EXPECT_EQ(CountOf(static_cast<IPart*>(part.Get())), 1u);
    IPart* const raw = part.Get();
    {
        const CComPtr<IPart> second(raw);
        EXPECT_EQ(CountOf(raw), 2u);
        const CComPtr<IPart> third(second);
        EXPECT_EQ(CountOf(raw), 3u);
        const CComPtr<IPart> fourth = part;
        EXPECT_EQ(CountOf(raw), 4u);
    }
    EXPECT_EQ(CountOf(raw), 1u);
}

TEST(ComPtr, MovesCostNoReference) {
    CComPtr<IPart> first = MakeObject<CPart>();
    IPart* const raw = first.Get();
    CComPtr<IPart> second(std::move(first));
    EXPECT_EQ(first.Get(), nullptr);
    EXPECT_EQ(CountOf(raw), 1u);
    first = std::move(second);
    EXPECT_EQ(CountOf(raw), 1u);
    const CComPtr<IDispatch> base(std::move(first));
    EXPECT_EQ(first.Get(), nullptr);
    EXPECT_EQ(CountOf(raw), 1u);
}

TEST(ComPtr, AssignmentReleasesWhatWasHeldAndSurvivesItself) {
    CComPtr<IPart> first = MakeObject<CPart>(1);
    const CComPtr<IPart> second = MakeObject<CPart>(2);
    EXPECT_EQ(CPart::Alive, 2);
    const CComPtr<IPart>& self = first;
    first = self;
    EXPECT_EQ(CountOf(first.Get()), 1u);
    first = second;
    EXPECT_EQ(CPart::Alive, 1);
    EXPECT_EQ(CountOf(second.Get()), 2u);
    first = nullptr;
    EXPECT_EQ(CountOf(second.Get()), 1u);
}

TEST(ComPtr, AdoptAttachAndDetachTakeTheReferenceAsItIs) {
    CComPtr<IPart> pointer = MakeObject<CPart>();
    IPart* const raw = pointer.Detach();
    EXPECT_EQ(CountOf(raw), 1u);
    pointer.Attach(raw);
    EXPECT_EQ(CountOf(raw), 1u);
    const auto adopted = CComPtr<IPart>::Adopt(pointer.Detach());
    EXPECT_EQ(CountOf(raw), 1u);
}

TEST(ComPtr, PutReleasesAndCopyToCounts) {
    CComPtr<IPart> source = MakeObject<CPart>(1);
    CComPtr<IPart> target = MakeObject<CPart>(2);
    source.CopyTo(target.Put());
    EXPECT_EQ(CPart::Alive, 1);
    EXPECT_EQ(CountOf(source.Get()), 2u);
    CComPtr<IPart>().CopyTo(target.Put());
    EXPECT_EQ(target, nullptr);
    EXPECT_EQ(CountOf(source.Get()), 1u);
}

TEST(ComPtr, OtherInterfaceIsCountedAndAMissingOneIsNull) {
    const CComPtr<IPart> part = MakeObject<CPart>();
    {
        const auto plain = part.As<IPlain>();
        ASSERT_TRUE(plain);
        EXPECT_EQ(CountOf(part.Get()), 2u);
        EXPECT_EQ(plain.As<IPart>(), part);
    }
    EXPECT_EQ(part.As<IThing>(), nullptr);
    EXPECT_EQ(CountOf(part.Get()), 1u);
    EXPECT_EQ(CComPtr<IPart>().As<IPlain>(), nullptr);
}

} // namespace platform::tests
