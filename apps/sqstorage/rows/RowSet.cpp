#include "RowSet.h"

#include "Numbers.h"

namespace sqCli {

namespace {

struct CTextOf {
    std::string operator()(tagNull) const { return {}; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(float value) const { return ShortestText(value); }
    std::string operator()(tagDay value) const { return DayText(value); }
    std::string operator()(const std::string& value) const { return value; }
};

} // namespace

std::string TextOf(const Cell& cell) { return std::visit(CTextOf{}, cell); }

bool IsNumber(const Cell& cell) {
    return std::holds_alternative<std::int64_t>(cell) || std::holds_alternative<float>(cell);
}

} // namespace sqCli
