// A storage with a portfolio that grows, for benchmarks: its own database in a temporary directory, which goes with
// it. The file's writes are not forced, since nothing in it has to outlive the program.
//
// Sixty exchanges, half of them with daylight saving, each with a setting and a session; twenty session templates;
// four data feeds. A root has fifty symbols, which stand together in the file; the roots stand there in another
// order than that of their names. One symbol in fifty has a setting of its own, one in a hundred a session of its
// own, and one in ten trades in a template.
#pragma once

#include "StorageHost.h"

namespace bench {

// How symbols stand in the file.
enum class ELayout {
    RootByRoot, // as an import leaves them
    Scattered,  // no two of a root together, as if each had come by itself in any order
};

class CPortfolioStore {
public:
    explicit CPortfolioStore(ELayout layout = ELayout::RootByRoot);

    // Closes the storage while it grows.
    void GrowTo(LONG symbols);
    LONG Symbols() const { return m_Symbols; }
    // Keys of symbols rise by one from here.
    static constexpr LONG FirstSymbol = 10000;
    std::wstring Path() const { return m_Host.Connection().Path; }
    // Opened when it is first asked for.
    IDM_qxStorage::IqxStorage& Storage();

private:
    tests::CStorageHost m_Host;
    tests::CComPtr<IDM_qxStorage::IqxStorage> m_Storage;
    ELayout m_Layout;
    LONG m_Symbols = 0;
};

} // namespace bench
