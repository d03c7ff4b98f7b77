// Statements that a plain select and a cursor build in the same way, from what a request says.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace sqStorage {

// The feeds that a request asks for: one by key, which must be active, or all that are not deleted. Reads Datafeed
// at Mode 0 and ActiveOnly. `Sql` is cut at `SqlSize` characters. With a null request or buffer nothing happens.
void GetDataFeedSql(IDM_dmudfcom::IdmRequest* Request, wchar_t* Sql, int SqlSize);

// A key that says of itself that it is none.
constexpr bool IsNoSymbol(LONG Symbol) { return Symbol == 0 || Symbol == -1; }

// The symbols of `TableName`, which is "PORTFOLIO" or its twin, that a request asks for at `Mode`: the one of a
// key, or all that every filter given lets through. A name filters by its beginning, or else a description does;
// case does not matter, "*" is no filter, and "%" and "_" in a name stand for any text and character. A category
// filters unless it is negative, an exchange and a data feed when they are above 0. Symbols whose exchange or data
// feed is gone do not come. `FullColumns` not 0 gives whole rows, 0 what a list shows. `Sql` is cut at `SqlSize`
// characters; that takes a name far longer than any that is stored. A null request or table name is reported, and
// `Sql` stays as it was, and so does one without room. A filter of more than 1023 characters raises
// std::length_error.
void SelectSymbol(LONG Mode, IDM_dmudfcom::IdmRequest* Request, wchar_t* Sql, int SqlSize, const wchar_t* TableName,
                  int FullColumns);

// As SelectSymbol, for the custom futures: there is no category, and a root filters by its whole text.
void SelectCF(LONG Mode, IDM_dmudfcom::IdmRequest* Request, wchar_t* Sql, int SqlSize);

} // namespace sqStorage
