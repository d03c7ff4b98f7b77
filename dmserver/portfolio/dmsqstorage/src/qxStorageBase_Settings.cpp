#include "CallPath.h"

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using sqStorage::CStorage;

namespace {

// The range of a price value: above 0 and below this.
constexpr double PriceLimit = 1000000000.0;

// Written so that a value that is no number is refused as well.
bool IsPrice(double value) { return value > 0 && value < PriceLimit; }

struct tagPriceWarnings {
    const wchar_t* PointValue;
    const wchar_t* MinMovement;
};

constexpr tagPriceWarnings NotInserted{L"[Warning] PointValue = %f. [Setting wasn't inserted]",
                                       L"[Warning] MinMovement = %f. [Setting wasn't inserted]"};
constexpr tagPriceWarnings NotUpdated{L"[Warning] PointValue = %f. [Setting wasn't updated]",
                                      L"[Warning] MinMovement = %f. [Setting wasn't updated]"};

// The first value out of range ends the test; a price value says so in the trace, a whole number says nothing.
bool ArePricesGood(const BugSlayerUtil::CScope& scope, const tagPriceWarnings& warnings, LONG PriceScale,
                   double PointValue, LONG DailyLimit, double MinMovement) {
    if (PriceScale < 1)
        return false;
    if (!IsPrice(PointValue)) {
        scope.Trace(warnings.PointValue, PointValue);
        return false;
    }
    if (DailyLimit < 1)
        return false;
    if (!IsPrice(MinMovement)) {
        scope.Trace(warnings.MinMovement, MinMovement);
        return false;
    }
    return true;
}

} // namespace

HRESULT CqxStorageBase::SelectSetting(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(Request && Table, [&](CStorage& storage) {
        storage.SelectSetting(Request, Table);
    });
}

HRESULT CqxStorageBase::InsertSetting(LONG PriceScale, double PointValue, LONG DailyLimit, double MinMovement,
                                      LONG* Setting) {
    const BugSlayerUtil::CScope scope(this);
    const bool good = ArePricesGood(scope, NotInserted, PriceScale, PointValue, DailyLimit, MinMovement);
    return CCallPath(scope, *this).Insert(good, Setting, [&](CStorage& storage) {
        return storage.InsertSetting(PriceScale, PointValue, DailyLimit, MinMovement);
    });
}

HRESULT CqxStorageBase::DeleteSetting(LONG Setting) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this)
        .Change(
            true, [&] { return ExistsSetting(Setting); },
            [&](CStorage& storage) { storage.DeleteSetting(Setting); });
}

HRESULT CqxStorageBase::UpdateSetting(LONG Setting, LONG PriceScale, double PointValue, LONG DailyLimit,
                                      double MinMovement) {
    const BugSlayerUtil::CScope scope(this);
    const bool good = ArePricesGood(scope, NotUpdated, PriceScale, PointValue, DailyLimit, MinMovement);
    return CCallPath(scope, *this)
        .Change(
            good && Setting > 0, [&] { return ExistsSetting(Setting); },
            [&](CStorage& storage) {
                storage.UpdateSetting(Setting, PriceScale, PointValue, DailyLimit, MinMovement);
            });
}
