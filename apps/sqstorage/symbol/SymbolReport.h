// Everything about one symbol, its price setting and its session resolved, with where each value comes from.
//
// Errors: CStoreRefusal.
#pragma once

#include "apps/sqstorage/store/Store.h"

#include <string>
#include <string_view>
#include <vector>

namespace sqCli {

struct tagReportValue {
    std::string_view Column;
    Cell Value;
    std::string_view From; // own, exchange, template, dictionary or machine
    // What people read instead of the value, if anything: a line or more.
    std::vector<std::string> Lines;
};

struct tagSymbolReport {
    std::vector<tagReportValue> Values;
    std::string_view SettingFrom;
    std::string_view SessionFrom;
    std::vector<std::string> Gaps; // sentences: what the symbol refers to and the store does not hold
};

[[nodiscard]] tagSymbolReport ReportSymbol(CStore& store, const std::string& feedName, LONG symbol);

} // namespace sqCli
