// The store, opened as any host opens it: by its class identifier, and used through its interfaces.
//
// The interfaces answer S_OK also when the database refused a statement and report the reason to the diagnostics
// alone; a program that tells its user the truth has to look there. A few methods, those of currencies above all,
// let exceptions through. That is told here once.
//
// One thread uses a store and all that comes from it.
#pragma once

#include "apps/sqstorage/rows/RowSet.h"
#include "dmserver/dmudfcom/interface/TableRows.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorage.h"
#include "platform/com/com_ptr.h"

#include <array>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace sqCli {

class COwnedRows; // Symbols.h

// One sentence, in UTF-8: the store did not do what it was asked to.
class CStoreRefusal : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

class CStore {
public:
    using IdmRequest = IDM_dmudfcom::IdmRequest;
    using IdmTable = IDM_dmudfcom::IdmTable;
    using IqxStorage = IDM_qxStorage::IqxStorage;
    using SelectMethod = HRESULT (IqxStorage::*)(IdmRequest*, IdmTable*);

    // Raises CCommandError (NotOpened) with the reason.
    CStore();

    // Runs `call`, which takes the IqxStorage and gives a status, and passes that on. Raises CStoreRefusal for a
    // failing status and for anything that went wrong within.
    template <class Call>
    HRESULT Run(Call&& call) {
        ForgetFailures();
        const HRESULT status = Guarded([&]() -> HRESULT { return call(*m_Storage); });
        RaiseFailures(status);
        if (m_AfterCall)
            m_AfterCall();
        return status;
    }

    // What to do after each call that went well, from now on; null for nothing.
    void AfterCalls(std::function<void()> action) { m_AfterCall = std::move(action); }

    // What symbols own.
    [[nodiscard]] COwnedRows& OwnedRows() noexcept { return *m_OwnedRows; }

    // Another of the storage's interfaces.
    template <class Interface>
    [[nodiscard]] platform::CComPtr<Interface> As() const {
        return m_Storage.As<Interface>();
    }

    // All rows of a table that a select fills, with the columns it gives them.
    [[nodiscard]] tagRowSet Select(SelectMethod method);
    // Those that `prepare` asks for in the request.
    [[nodiscard]] tagRowSet Select(SelectMethod method, const std::function<void(IdmRequest&)>& prepare);
    // The same with a select of another interface.
    [[nodiscard]] tagRowSet SelectBy(const std::function<HRESULT(IdmRequest*, IdmTable*)>& select);

private:
    static void ForgetFailures();
    // An exception becomes a failure.
    static HRESULT Guarded(const std::function<HRESULT()>& call);
    static void RaiseFailures(HRESULT status);

    platform::CComPtr<IqxStorage> m_Storage;
    std::function<void()> m_AfterCall;
    std::shared_ptr<COwnedRows> m_OwnedRows;
};

// An empty table, to be filled for a call.
[[nodiscard]] platform::CComPtr<IDM_dmudfcom::IdmTable> NewTable();

// Where a column stands. Raises CStoreRefusal when the rows have none of that name.
[[nodiscard]] std::size_t ColumnOf(const tagRowSet& rows, std::string_view name);
// Where several stand.
template <std::size_t Count>
[[nodiscard]] std::array<std::size_t, Count> ColumnsOf(const tagRowSet& rows,
                                                       const std::array<std::string_view, Count>& names) {
    std::array<std::size_t, Count> places{};
    for (std::size_t column = 0; column < Count; ++column)
        places[column] = ColumnOf(rows, names[column]);
    return places;
}
// 0 for a null.
[[nodiscard]] LONG LongOf(const Cell& cell);

} // namespace sqCli
