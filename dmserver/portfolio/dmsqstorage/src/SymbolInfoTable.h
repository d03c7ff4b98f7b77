// The tables of the cursors that deliver one symbol, or one custom future, with all that belongs to it.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace sqStorage {

// Declares the fields of the list in the client's table, each with a status. A table that has fields already is
// reported and stays as it is; a field that is refused is reported too, and the others still come.
void FillSymbolInfoTable(IDM_dmudfcom::IdmTable* Table, const LONG* const Fields, const LONG Count);

// The two lists in use.
void FillSymbolInfoTable(IDM_dmudfcom::IdmTable* Table);
void FillCustomFutureInfoTable(IDM_dmudfcom::IdmTable* Table);

} // namespace sqStorage
