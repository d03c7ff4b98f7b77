// The carriers: every row that the storage hands out or takes in travels in one of them.
//
//   IdmRequest      says what is wanted: a bag of plain values
//   IdmTable        named, identified columns and a record cursor
//   IdmField        one column of the table's current record
//   IdmAnswer       unpacks bytes that came from another process; IdmTransaction is the step between
//
// Slots stand in the order of the headers, behind those of IDispatch; a property's get and put are neighbours.
//
// Ownership: a carrier belongs to its creator. An IdmField lives inside its table and keeps it alive.
// Threads: a carrier has no lock. One thread at a time uses one; reference counts are interlocked.
// Errors: every operation answers with a status and raises nothing. A null out pointer gives E_POINTER.
// What each operation does stands beside it in its header.
#pragma once

#include "dmserver/dmudfcom/interface/Answer.h"
#include "dmserver/dmudfcom/interface/Field.h"
#include "dmserver/dmudfcom/interface/Request.h"
#include "dmserver/dmudfcom/interface/Table.h"

namespace IDM_dmudfcom {

inline constexpr CLSID CLSID_dmRequest = platform::MakeGuid("0b7c1d54-6a0e-4d52-9a55-1f6f3c0a5d01");
inline constexpr CLSID CLSID_dmTable = platform::MakeGuid("0b7c1d54-6a0e-4d52-9a55-1f6f3c0a5d02");
inline constexpr CLSID CLSID_dmAnswer = platform::MakeGuid("2bccb88b-5aab-4bf9-87d6-f8289ca99ada");

} // namespace IDM_dmudfcom
