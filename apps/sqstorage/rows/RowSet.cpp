#include "RowSet.h"

#include "Numbers.h"

#include <algorithm>
#include <iterator>

namespace sqCli {

namespace {

struct CTextOf {
    std::string operator()(tagNull) const { return {}; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(float value) const { return ShortestText(value); }
    std::string operator()(tagDay value) const { return DayText(value); }
    std::string operator()(tagWeekday value) const { return WeekdayText(value); }
    std::string operator()(tagClockTime value) const { return ClockText(value); }
    std::string operator()(const std::string& value) const { return value; }
};

struct CIntegerOf {
    std::int64_t operator()(std::int64_t value) const { return value; }
    std::int64_t operator()(tagWeekday value) const { return value.Number; }
    std::int64_t operator()(tagClockTime value) const { return value.Seconds; }
    template <class Other>
    std::int64_t operator()(const Other&) const {
        return 0;
    }
};

} // namespace

std::string TextOf(const Cell& cell) { return std::visit(CTextOf{}, cell); }

bool IsNumber(const Cell& cell) {
    return std::holds_alternative<std::int64_t>(cell) || std::holds_alternative<float>(cell);
}

std::vector<Cell> Joined(std::vector<Cell> first, std::vector<Cell> second) {
    first.reserve(first.size() + second.size());
    std::move(second.begin(), second.end(), std::back_inserter(first));
    return first;
}

std::int64_t IntegerOf(const Cell& cell) { return std::visit(CIntegerOf{}, cell); }

} // namespace sqCli
