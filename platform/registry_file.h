#pragma once
// The files behind the registry: reading with a cache, changing under a lock, and batches. Behind registry.h.

#include "platform/registry.h"
#include "platform/registry_tree.h"

#include <functional>
#include <memory>

namespace platform {

// The root as this thread sees it now: what its batch holds, else what the file holds.
[[nodiscard]] std::shared_ptr<const CRegistryTree> ReadRegistry(ERegistryRoot root);

// Applies `change` to the newest state and writes that, unless `change` answers that it changed nothing, which is
// then the result. `change` may run twice, on two copies.
bool ChangeRegistry(ERegistryRoot root, const std::function<bool(CRegistryTree&)>& change);

// True when this began the batch, false when it joined one.
[[nodiscard]] bool BeginRegistryBatch(ERegistryRoot root);
void CommitRegistryBatch(ERegistryRoot root);
void EndRegistryBatch(ERegistryRoot root) noexcept;

} // namespace platform
