#include "Currencies.h"

#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxCurrency.h"

#include <algorithm>

namespace sqCli {

using IDM_qxStorage::IqxCurrency;

std::vector<tagCurrency> SelectCurrencies(CStore& store) {
    const auto interface = store.As<IqxCurrency>();
    const tagRowSet rows = store.SelectBy([&](CStore::IdmRequest* request, CStore::IdmTable* table) {
        return interface->SelectCurrency(request, table);
    });
    const auto at = ColumnsOf<2>(rows, {"ID", "CURRENCY_CODE"});
    std::vector<tagCurrency> currencies;
    for (const auto& row : rows.Rows)
        currencies.push_back({LongOf(row[at[0]]), LongOf(row[at[1]])});
    std::ranges::sort(currencies);
    return currencies;
}

void SetCurrency(CStore& store, const tagCurrency& currency) {
    const auto interface = store.As<IqxCurrency>();
    store.Run([&](CStore::IqxStorage&) { return interface->SetCurrency(currency.Id, currency.Code); });
}

} // namespace sqCli
