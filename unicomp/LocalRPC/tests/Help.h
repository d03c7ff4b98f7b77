#pragma once
// What these tests share.

#include "diagnostics/tests/recorder/Recorder.h"
#include "platform/tests/support/Gate.h"
#include "platform/tests/support/ProcessLimits.h"
#include "unicomp/LocalRPC/interface/TaskFactory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace LocalRPC {

// Starts with nothing recorded, and expects nothing but what a test asked for to be left at the end.
class CRecordedTest : public ::testing::Test {
protected:
    void SetUp() override { Recorder::Clear(); }
    void TearDown() override { EXPECT_EQ(Recorder::OpenRecords(), 0); }
};

using platform_tests::CGate;

// What the exception says; empty when there is none.
template <class Exception, class Body>
std::string WhatOf(Body body) {
    try {
        body();
    } catch (const Exception& exception) {
        return exception.what();
    }
    return {};
}

// The same with no descriptor to be had. The body runs in peace first, on a thread that takes with it what it
// opened: sanitizers look up through a pipe what they meet for the first time.
template <class Exception, class Body>
std::string WhatOfWithoutDescriptors(Body body) {
    std::thread(body).join();
    return WhatOf<Exception>([&] {
        const platform_tests::CNoMoreDescriptors limit;
        body();
    });
}

inline constexpr const char* Refused = "Synchronous function execution failed!";
inline constexpr const wchar_t* Unhandled = L"Unhandled exception occure during execute task.";

} // namespace LocalRPC
