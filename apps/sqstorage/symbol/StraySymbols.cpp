#include "StraySymbols.h"

namespace sqCli {

using IDM_dmudfcom::ITableRows;

std::vector<tagStraySymbol> FindStraySymbols(CDatabaseReader& reader, const std::string& name) {
    std::vector<tagStraySymbol> found;
    reader.ForEachWith(
        name,
        "SELECT P.SYMBOL,P.DATA_FEED,P.EXCHANGE,IIF(D.DATA_FEED IS NULL,0,1) AS HAS_FEED,"
        "IIF(E.EXCHANGE IS NULL,0,1) AS HAS_EXCHANGE,P.SYMBOL_NAME FROM PORTFOLIO P "
        "LEFT JOIN EXCHANGES E ON E.EXCHANGE=P.EXCHANGE LEFT JOIN DATA_FEEDS D ON D.DATA_FEED=P.DATA_FEED "
        "WHERE P.SYMBOL_NAME=? AND (D.DATA_FEED IS NULL OR E.EXCHANGE IS NULL) ORDER BY P.SYMBOL",
        [&](const ITableRows& rows, ULONG row) {
            const auto number = [&](ULONG column) { return static_cast<LONG>(rows.Integer(row, column)); };
            std::string scratch;
            if (rows.Text(row, 5, scratch) == name) // the database ignores blanks at the end
                found.push_back({number(0), number(1), number(2), number(3) != 0, number(4) != 0});
        });
    return found;
}

} // namespace sqCli
