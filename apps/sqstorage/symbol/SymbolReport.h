// Everything about one symbol, its price setting and its session resolved, with where each value comes from.
//
// The store does not tell where it found values, so that this works it out from the row, as the store does. For a
// symbol that asks the dictionary of roots it compares: values that are not the exchange's are the dictionary's,
// and where both have the same they are called the exchange's. Whoever brings the dictionary can ask it here
// instead.
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
