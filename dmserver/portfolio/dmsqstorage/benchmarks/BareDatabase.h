// The engine's own object interface without anything of ours, in its best form: what comes again is prepared once,
// what only reads runs in a read-only transaction, what writes in one of its own.
//
// One thread at a time. A refused statement raises Firebird::FbException.
#pragma once

#include "platform/com/types.h"

#include <firebird/Interface.h>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

// A bound value: whole numbers and days, or null.
using Value = std::optional<std::int32_t>;

class CBareDatabase {
public:
    explicit CBareDatabase(const std::wstring& path);
    ~CBareDatabase();
    CBareDatabase(const CBareDatabase&) = delete;
    CBareDatabase& operator=(const CBareDatabase&) = delete;

    // The next key, in a transaction that stays open.
    int GenerateId();
    // All rows of a statement that comes again. The first column of the last row, 0 without rows; the number of
    // rows goes to `count`.
    int Select(const std::string& sql, int* count = nullptr);
    // The same of a statement that does not come again.
    int SelectOnce(std::string_view sql);
    // Runs a statement that does not come again.
    void Write(std::string_view sql);
    // Runs a statement that comes again, once for each row of values, all in one transaction.
    void WriteRows(const std::string& sql, std::span<const std::vector<Value>> rows);
    // Every row of every statement, all of which come again, seen in one state of the data. The rows are left where
    // they lie.
    void SelectAll(std::span<const char* const> statements);
    // The first rows of a statement that comes again; the cursor's end is run by the result.
    std::function<void()> SelectFirst(const std::string& sql, std::size_t count);
    // A statement that comes again with one parameter, a key, run for each of them, all in one transaction.
    void SelectByKeys(const std::string& sql, std::span<const LONG> keys);
    // How the engine would run the statement, step by step.
    std::string PlanOf(std::string_view sql);

private:
    using Status = Firebird::ThrowStatusWrapper;
    struct tagPrepared {
        Firebird::IStatement* Statement = nullptr;
        Firebird::IMessageMetadata* Columns = nullptr;
        unsigned RowLength = 0;
        unsigned FirstOffset = 0;
    };

    Firebird::ITransaction* StartReading();
    Firebird::ITransaction* StartWriting();
    const tagPrepared& Prepared(Firebird::ITransaction* transaction, const std::string& sql);
    Firebird::IResultSet* Open(Firebird::ITransaction* transaction, const tagPrepared& prepared);
    bool Fetch(Firebird::IResultSet* rows);
    int ReadAll(Firebird::IResultSet* rows, unsigned firstOffset, int* count);

    Firebird::IMaster* m_Master;
    Status m_Status;
    Firebird::IAttachment* m_Attachment = nullptr;
    Firebird::ITransaction* m_Generator = nullptr;
    std::map<std::string, tagPrepared> m_Prepared;
    std::vector<unsigned char> m_Row;
};

} // namespace bench
