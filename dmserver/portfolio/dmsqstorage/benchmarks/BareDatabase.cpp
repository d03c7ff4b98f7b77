#include "BareDatabase.h"

#include "platform/text.h"

#include <cstring>
#include <stdexcept>

namespace bench {

namespace {

using Firebird::IMessageMetadata;
using Firebird::IResultSet;
using Firebird::IStatement;
using Firebird::ITransaction;

constexpr unsigned Dialect = 3;
constexpr unsigned char Reading[] = {isc_tpb_version3, isc_tpb_read, isc_tpb_read_committed, isc_tpb_rec_version};
constexpr unsigned char Writing[] = {isc_tpb_version3, isc_tpb_write, isc_tpb_read_committed, isc_tpb_rec_version};
constexpr unsigned char Snapshot[] = {isc_tpb_version3, isc_tpb_read, isc_tpb_concurrency};
constexpr unsigned char Connection[] = {
    isc_dpb_version1, isc_dpb_lc_ctype, 4, 'U', 'T', 'F', '8', isc_dpb_user_name, 6, 'S', 'Y', 'S', 'D', 'B', 'A'};

unsigned LengthOf(std::string_view text) { return static_cast<unsigned>(text.size()); }

} // namespace

CBareDatabase::CBareDatabase(const std::wstring& path)
    : m_Master(Firebird::fb_get_master_interface()), m_Status(m_Master->getStatus()) {
    m_Attachment = m_Master->getDispatcher()->attachDatabase(&m_Status, platform::ToUtf8(path).c_str(),
                                                             sizeof Connection, Connection);
    m_Generator = StartReading();
}

CBareDatabase::~CBareDatabase() {
    for (const auto& [sql, prepared] : m_Prepared) {
        prepared.Columns->release();
        prepared.Statement->free(&m_Status);
    }
    m_Generator->commit(&m_Status);
    m_Attachment->detach(&m_Status);
    m_Status.dispose();
}

ITransaction* CBareDatabase::StartReading() {
    return m_Attachment->startTransaction(&m_Status, sizeof Reading, Reading);
}

ITransaction* CBareDatabase::StartWriting() {
    return m_Attachment->startTransaction(&m_Status, sizeof Writing, Writing);
}

const CBareDatabase::tagPrepared& CBareDatabase::Prepared(ITransaction* transaction, const std::string& sql) {
    if (const auto known = m_Prepared.find(sql); known != m_Prepared.end())
        return known->second;
    tagPrepared prepared;
    prepared.Statement = m_Attachment->prepare(&m_Status, transaction, LengthOf(sql), sql.c_str(), Dialect,
                                               IStatement::PREPARE_PREFETCH_METADATA);
    prepared.Columns = prepared.Statement->getOutputMetadata(&m_Status);
    prepared.RowLength = prepared.Columns->getMessageLength(&m_Status);
    if (prepared.Columns->getCount(&m_Status) != 0)
        prepared.FirstOffset = prepared.Columns->getOffset(&m_Status, 0);
    return m_Prepared.emplace(sql, prepared).first->second;
}

IResultSet* CBareDatabase::Open(ITransaction* transaction, const tagPrepared& prepared) {
    m_Row.resize(prepared.RowLength);
    return prepared.Statement->openCursor(&m_Status, transaction, nullptr, nullptr, prepared.Columns, 0);
}

bool CBareDatabase::Fetch(IResultSet* rows) {
    return rows->fetchNext(&m_Status, m_Row.data()) == Firebird::IStatus::RESULT_OK;
}

int CBareDatabase::ReadAll(IResultSet* rows, unsigned firstOffset, int* count) {
    int value = 0;
    int read = 0;
    for (; Fetch(rows); ++read)
        std::memcpy(&value, m_Row.data() + firstOffset, sizeof value);
    rows->close(&m_Status);
    if (count)
        *count = read;
    return value;
}

int CBareDatabase::GenerateId() {
    const tagPrepared& prepared = Prepared(m_Generator, "SELECT * FROM GENERATE_ID(1)");
    return ReadAll(Open(m_Generator, prepared), prepared.FirstOffset, nullptr);
}

int CBareDatabase::Select(const std::string& sql, int* count) {
    ITransaction* transaction = StartReading();
    const tagPrepared& prepared = Prepared(transaction, sql);
    const int value = ReadAll(Open(transaction, prepared), prepared.FirstOffset, count);
    transaction->commit(&m_Status);
    return value;
}

int CBareDatabase::SelectOnce(std::string_view sql) {
    ITransaction* transaction = StartReading();
    IResultSet* rows = m_Attachment->openCursor(&m_Status, transaction, LengthOf(sql), sql.data(), Dialect, nullptr,
                                                nullptr, nullptr, nullptr, 0);
    IMessageMetadata* columns = rows->getMetadata(&m_Status);
    m_Row.resize(columns->getMessageLength(&m_Status));
    const int value = ReadAll(rows, columns->getOffset(&m_Status, 0), nullptr);
    columns->release();
    transaction->commit(&m_Status);
    return value;
}

void CBareDatabase::SelectAll(std::span<const char* const> statements) {
    ITransaction* transaction = m_Attachment->startTransaction(&m_Status, sizeof Snapshot, Snapshot);
    for (const char* sql : statements) {
        IResultSet* rows = Open(transaction, Prepared(transaction, sql));
        while (Fetch(rows))
            continue;
        rows->close(&m_Status);
    }
    transaction->commit(&m_Status);
}

std::function<void()> CBareDatabase::SelectFirst(const std::string& sql, std::size_t count) {
    ITransaction* transaction = StartReading();
    IResultSet* rows = Open(transaction, Prepared(transaction, sql));
    while (count != 0 && Fetch(rows))
        --count;
    return [this, transaction, rows] {
        rows->close(&m_Status);
        transaction->commit(&m_Status);
    };
}

void CBareDatabase::SelectByKeys(const std::string& sql, std::span<const LONG> keys) {
    ITransaction* transaction = StartReading();
    const tagPrepared& prepared = Prepared(transaction, sql);
    IMessageMetadata* input = prepared.Statement->getInputMetadata(&m_Status);
    std::vector<unsigned char> message(input->getMessageLength(&m_Status));
    m_Row.resize(prepared.RowLength);
    for (const LONG key : keys) {
        std::memcpy(message.data() + input->getOffset(&m_Status, 0), &key, sizeof key);
        IResultSet* rows =
            prepared.Statement->openCursor(&m_Status, transaction, input, message.data(), prepared.Columns, 0);
        while (Fetch(rows))
            continue;
        rows->close(&m_Status);
    }
    input->release();
    transaction->commit(&m_Status);
}

void CBareDatabase::Write(std::string_view sql) {
    ITransaction* transaction = StartWriting();
    m_Attachment->execute(&m_Status, transaction, LengthOf(sql), sql.data(), Dialect, nullptr, nullptr, nullptr,
                          nullptr);
    transaction->commit(&m_Status);
}

void CBareDatabase::WriteRows(const std::string& sql, std::span<const std::vector<Value>> rows) {
    ITransaction* transaction = StartWriting();
    IStatement& statement = *Prepared(transaction, sql).Statement;
    IMessageMetadata* metadata = statement.getInputMetadata(&m_Status);
    m_Row.resize(metadata->getMessageLength(&m_Status));
    for (const std::vector<Value>& row : rows) {
        for (unsigned column = 0; column < row.size(); ++column) {
            const std::int16_t isNull = row[column] ? 0 : -1;
            const std::int32_t value = row[column].value_or(0);
            std::memcpy(m_Row.data() + metadata->getNullOffset(&m_Status, column), &isNull, sizeof isNull);
            if (!isNull)
                std::memcpy(m_Row.data() + metadata->getOffset(&m_Status, column), &value, sizeof value);
        }
        statement.execute(&m_Status, transaction, metadata, m_Row.data(), nullptr, nullptr);
    }
    metadata->release();
    transaction->commit(&m_Status);
}

std::string CBareDatabase::PlanOf(std::string_view sql) {
    ITransaction* transaction = StartReading();
    IStatement* statement = m_Attachment->prepare(&m_Status, transaction, LengthOf(sql), sql.data(), Dialect,
                                                  IStatement::PREPARE_PREFETCH_DETAILED_PLAN);
    const std::string plan = statement->getPlan(&m_Status, true);
    statement->free(&m_Status);
    transaction->commit(&m_Status);
    return plan;
}

} // namespace bench
