// One storage for all tests of a program, because a process reads its connection once.
#pragma once

#include "StorageHost.h"

#include <gtest/gtest.h>

namespace tests {

class HostTest : public testing::Test {
protected:
    static void SetUpTestSuite() { Host().Install(); }

    static CStorageHost& Host() {
        static CStorageHost host;
        return host;
    }
    static std::vector<Row> Sql(const std::wstring& statement) { return Host().Sql(statement); }
    static std::wstring Text(LONG number) { return std::to_wstring(number); }
};

} // namespace tests
