// What the writer that is killed inserts, and the test that kills it expects.
#pragma once

#include "SymbolArguments.h"

namespace tests {

// Every text tells the number and is as long as its column allows, so that half a row would show.
inline tagSymbolArguments KilledSymbol(LONG number) {
    const std::wstring tail = L"#" + std::to_wstring(number);
    tagSymbolArguments symbol;
    symbol.SymbolName = std::wstring(31 - tail.size(), L'N') + tail;
    symbol.SymbolRoot = std::wstring(31 - tail.size(), L'R') + tail;
    symbol.Description = std::wstring(62 - tail.size(), L'd') + tail;
    symbol.CUSIP = std::wstring(12 - tail.size(), L'C') + tail;
    symbol.Margin = number;
    return symbol;
}

} // namespace tests
