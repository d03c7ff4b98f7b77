#pragma once

#include "platform/file.h"

#include <firebird/Interface.h>

#include <initializer_list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// A real embedded database for a test, in a directory of its own. Every value goes in and comes out as text; the
// engine converts.
namespace sqSchemaTest {

class CDatabaseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

using tagValue = std::optional<std::string>; // empty for NULL

struct tagRows {
    std::vector<std::string> Columns;
    std::vector<std::vector<tagValue>> Rows;

    // The value in the named column; fails the test by an exception when there is no such row or column.
    const tagValue& At(std::size_t row, std::string_view column) const;
    // All values of one column, NULL as "NULL".
    std::vector<std::string> Column(std::string_view column) const;
    bool operator==(const tagRows&) const = default;
};

template <class T>
struct CRelease {
    void operator()(T* object) const { object->release(); }
};
template <class T>
using CCounted = std::unique_ptr<T, CRelease<T>>;

enum class EMode { ReadWrite, ReadOnly };
enum class EEnd { Commit, Rollback };

class CTestDatabase;

// Open from construction; rolled back at the end unless it was ended before.
class CTestTransaction {
public:
    CTestTransaction(CTestDatabase& database, EMode mode);
    tagRows Run(std::string_view sql, const std::vector<tagValue>& parameters = {});
    void End(EEnd how);

private:
    friend class CTestDatabase;
    CTestDatabase& m_Database;
    CCounted<Firebird::ITransaction> m_Transaction;
};

class CTestDatabase {
public:
    // With the whole definition, or empty.
    enum class EContent { Empty, Complete };
    explicit CTestDatabase(EContent content = EContent::Complete);
    ~CTestDatabase();
    CTestDatabase(const CTestDatabase&) = delete;
    CTestDatabase& operator=(const CTestDatabase&) = delete;

    // In a transaction of its own, which is committed.
    tagRows Run(std::string_view sql, const std::vector<tagValue>& parameters = {});
    // The same, where nothing may be written.
    tagRows Read(std::string_view sql, const std::vector<tagValue>& parameters = {});
    // The first value of the first row.
    std::string Value(std::string_view sql);

    void Prepare(std::string_view sql);
    std::string Plan(std::string_view sql);
    // "NAME TYPE(LENGTH)" for each result column; texts in characters.
    std::vector<std::string> ResultTypes(std::string_view sql);

    // Closes the connection and opens another one.
    void Reconnect();

private:
    friend class CTestTransaction;
    tagRows Run(Firebird::ITransaction* transaction, std::string_view sql, const std::vector<tagValue>& parameters);
    CCounted<Firebird::IStatement> PrepareIn(Firebird::ITransaction* transaction, std::string_view sql);

    platform::CTemporaryDirectory m_Directory{"sqstorage-schema"};
    std::string m_Path;
    CCounted<Firebird::IAttachment> m_Attachment;
};

} // namespace sqSchemaTest
