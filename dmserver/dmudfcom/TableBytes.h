// A table as bytes: IdmTable::AsVariant. Carriers.proto has the form.
#pragma once

#include "SealedBytes.h"
#include "TableStore.h"

namespace IDM_dmudfcom {

struct tagTableContent {
    LONG Id = 0;
    LONG Contents = 0;
    std::shared_ptr<CTableStore> Store;
};

std::string WriteTable(const CTableStore& store, LONG id, LONG contents);
// Nothing for bytes that are not a table as WriteTable makes it. What is taken from the heap on the way is in
// proportion to the bytes given.
std::optional<tagTableContent> ReadTable(std::string_view bytes);

bool IsColumnType(ULONG type);

} // namespace IDM_dmudfcom
