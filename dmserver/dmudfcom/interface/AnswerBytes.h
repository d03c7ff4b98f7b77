// The bytes that IdmAnswer::Assign unpacks, made from tables: the server's end of the wire.
//
//     CVariant answer;
//     MakeAnswer(std::array{table.Get()}, answer.Put());
//
// An answer made of one list of tables has one transaction, which has them in that order. Tables of any making are
// taken, through their AsVariant; they are neither changed nor kept.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

#include <span>

namespace IDM_dmudfcom {

// `answer` is left empty on failure: E_POINTER for a null pointer, E_FAIL for a table whose AsVariant is no array
// of bytes, the status of AsVariant where that fails.
HRESULT MakeAnswer(std::span<IdmTable* const> tables, VARIANT* answer);
// One list of tables for each transaction.
HRESULT MakeAnswer(std::span<const std::span<IdmTable* const>> transactions, VARIANT* answer);

} // namespace IDM_dmudfcom
