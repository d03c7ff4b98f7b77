#pragma once
// What the tests of reports have in common.

#include "diagnostics/tests/recorder/Recorder.h"
#include "platform/environment.h"
#include "platform/file.h"

#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace TestHelp {

using Texts = std::vector<std::wstring>;

// A test with a registry and a state directory of its own.
class CIsolated : public testing::Test {
protected:
    platform::CTemporaryDirectory m_Directory;
    platform::CScopedEnvironment m_Registry{L"SQSTORAGE_REGISTRY_DIR", m_Directory.Name() + L"/registry"};
    platform::CScopedEnvironment m_State{L"SQSTORAGE_STATE_DIR", m_Directory.Name() + L"/state"};
};

// The same with the recorder in the place of the debug library.
class CRecorded : public CIsolated {
protected:
    void SetUp() override { Recorder::Clear(); }
    void TearDown() override {
        EXPECT_EQ(Recorder::OpenRecords(), 0) << "a record was left behind";
        Recorder::Reset();
    }
};

inline Recorder::tagRecord Only(std::wstring_view type) {
    const auto records = Recorder::RecordsOf(type);
    EXPECT_EQ(records.size(), 1u);
    return records.empty() ? Recorder::tagRecord() : records.front();
}

// For death tests: what the library is sent, as words on the error stream.
inline void EchoVerbs() {
    Recorder::SetVerbHandler([](std::wstring_view verb) {
        std::fprintf(stderr, "[%s]", std::string(verb.begin(), verb.end()).c_str());
    });
}

} // namespace TestHelp
