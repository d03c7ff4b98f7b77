// Currency codes, as the store keeps them: one for an id.
//
// Errors: CStoreRefusal.
#pragma once

#include "Store.h"

#include <vector>

namespace sqCli {

struct tagCurrency {
    LONG Id;
    LONG Code;
    friend auto operator<=>(const tagCurrency&, const tagCurrency&) = default;
};

// By id.
[[nodiscard]] std::vector<tagCurrency> SelectCurrencies(CStore& store);
// Adds the id, or changes its code.
void SetCurrency(CStore& store, const tagCurrency& currency);

} // namespace sqCli
