// Everything a host needs to call the storage: its eleven interfaces and the classes that offer them.
//
//     CComPtr<IqxStorage> storage;
//     HRESULT status = CreateInstance(CLSID_qxStorage, storage);
//
// Creating the first instance in a process opens the database that the registry names for the host's product; it
// answers E_FAIL when that cannot be done, and the reason stands in the diagnostics trail. Releasing the last one
// closes it. All eleven interfaces are reached by QueryInterface from any of them; the first is the default.
//
// Threads: calls may come from any thread and run there; an instance's reference count is not interlocked, so one
// thread at a time adds and releases references of one instance. Other instances in the process share the storage.
#pragma once

#include "dmserver/portfolio/dmsqStorageInterface/interface/IascStorage.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxAddingSymbol.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxCurrency.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxDictionary.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxExpirationDateCalculator.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxExpirationRuleSettings.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxNativePortfolio.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxPortfolio.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxStorage.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxStorageNotify.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/IqxStorageSmartNotify.h"

namespace IDM_qxStorage {

inline constexpr IID LIBID_dmsqStorageProject = platform::MakeGuid("bb6381b1-face-46c2-b15c-49c1b6f101c9");
// The storage in this process.
inline constexpr CLSID CLSID_qxStorage = platform::MakeGuid("c327dc40-9142-4dbe-8f3c-4a45fc56327c");
// The same interfaces, served by another process.
inline constexpr CLSID CLSID_srvStorage = platform::MakeGuid("d57481f1-4fa1-4f32-abe6-512eaa414642");

} // namespace IDM_qxStorage
