#pragma once
// What these tests share.

#include "diagnostics/tests/recorder/Recorder.h"
#include "platform/event.h"
#include "unicomp/LocalRPC/interface/TaskFactory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace LocalRPC {

// Starts with nothing recorded, and expects nothing but what a test asked for to be left at the end.
class CRecordedTest : public ::testing::Test {
protected:
    void SetUp() override { Recorder::Clear(); }
    void TearDown() override { EXPECT_EQ(Recorder::OpenRecords(), 0); }
};

// Signalled once; any number may wait.
class CGate {
public:
    void Open() { m_Event.Set(); }
    void Pass() const { EXPECT_EQ(m_Event.Wait(platform::Infinite), platform::WaitSignalled); }

private:
    platform::CEvent m_Event = std::move(*platform::CEvent::Create(platform::EEventReset::Manual, false));
};

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

inline constexpr const char* Refused = "Synchronous function execution failed!";
inline constexpr const wchar_t* Unhandled = L"Unhandled exception occure during execute task.";

} // namespace LocalRPC
