#include "platform/com/com_error.h"

#include <gtest/gtest.h>
#include <new>
#include <stdexcept>

namespace platform {

namespace {

template <class Exception>
HRESULT StatusOf(const Exception& exception) {
    try {
        throw exception;
    } catch (...) {
        return StatusOfException();
    }
}

} // namespace

TEST(ComError, CarriesStatusAndText) {
    const CComError error(E_FAIL, L"zażółć");
    EXPECT_EQ(error.Code(), E_FAIL);
    EXPECT_EQ(error.Text(), L"zażółć");
    EXPECT_STREQ(error.what(), "0x80004005: za\u017c\u00f3\u0142\u0107");
    EXPECT_STREQ(CComError(E_POINTER).what(), "0x80004003");
}

TEST(ComError, TextThatIsNoUnicodeDoesNotHideTheStatus) {
    const CComError error(E_ABORT, std::wstring(1, static_cast<wchar_t>(0xD800)));
    EXPECT_EQ(error.Code(), E_ABORT);
    EXPECT_STREQ(error.what(), "0x80004004");
}

TEST(ComError, OnlyFailuresThrow) {
    EXPECT_NO_THROW(ThrowIfFailed(S_OK));
    EXPECT_NO_THROW(ThrowIfFailed(S_FALSE));
    EXPECT_THROW(ThrowIfFailed(E_FAIL), CComError);
}

TEST(ComError, EveryExceptionHasAStatusAtTheInterface) {
    EXPECT_EQ(StatusOf(CComError(DISP_E_BADINDEX)), DISP_E_BADINDEX);
    EXPECT_EQ(StatusOf(std::bad_alloc()), E_OUTOFMEMORY);
    EXPECT_EQ(StatusOf(std::runtime_error("x")), E_FAIL);
    EXPECT_EQ(StatusOf(5), E_FAIL);
}

} // namespace platform
