#include "TestDatabase.h"

#include "platform/environment.h"
#include "schema/interface/Schema.h"

#include <firebird/Message.h>
#include <ibase.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace sqSchemaTest {
namespace {

using namespace Firebird;

constexpr unsigned TextLength = 4096; // bytes; no value of the store is longer

// As the store makes its databases.
constexpr std::string_view CharacterSet = "UTF8";
constexpr int PageSize = 16384;
constexpr int Dialect = 3;

// The client library reads its lock directory once, at its first call.
IMaster* Master() {
    static platform::CTemporaryDirectory lockDirectory("sqstorage-lock");
    static IMaster* const master = [] {
        platform::SetEnvironment(L"FIREBIRD_LOCK", lockDirectory.Name());
        return fb_get_master_interface();
    }();
    return master;
}

// Calls the function with a status, and turns a failure into an exception with the engine's words.
template <class F>
auto Call(F&& function) {
    struct CDispose {
        void operator()(IStatus* status) const { status->dispose(); }
    };
    const std::unique_ptr<IStatus, CDispose> raw(Master()->getStatus());
    ThrowStatusWrapper status(raw.get());
    try {
        return function(&status);
    } catch (const FbException& error) {
        std::array<char, 2048> text{};
        Master()->getUtilInterface()->formatStatus(text.data(), text.size(), error.getStatus());
        throw CDatabaseError(text.data());
    }
}

template <class F>
auto Own(F&& function) {
    using T = std::remove_pointer_t<decltype(Call(function))>;
    return CCounted<T>(Call(function));
}

class CParameterBlock {
public:
    explicit CParameterBlock(unsigned kind)
        : m_Builder(Call([&](ThrowStatusWrapper* s) {
              return Master()->getUtilInterface()->getXpbBuilder(s, kind, nullptr, 0);
          })) {}
    ~CParameterBlock() { m_Builder->dispose(); }
    CParameterBlock(const CParameterBlock&) = delete;
    CParameterBlock& operator=(const CParameterBlock&) = delete;

    CParameterBlock& Tag(unsigned char tag) {
        Call([&](ThrowStatusWrapper* s) { m_Builder->insertTag(s, tag); });
        return *this;
    }
    CParameterBlock& Text(unsigned char tag, std::string_view text) {
        Call([&](ThrowStatusWrapper* s) { m_Builder->insertString(s, tag, std::string(text).c_str()); });
        return *this;
    }
    CParameterBlock& Number(unsigned char tag, int number) {
        Call([&](ThrowStatusWrapper* s) { m_Builder->insertInt(s, tag, number); });
        return *this;
    }
    unsigned Size() {
        return Call([&](ThrowStatusWrapper* s) { return m_Builder->getBufferLength(s); });
    }
    const unsigned char* Bytes() {
        return Call([&](ThrowStatusWrapper* s) { return m_Builder->getBuffer(s); });
    }

private:
    IXpbBuilder* m_Builder;
};

CCounted<IMessageMetadata> AllAsText(IMessageMetadata* real, unsigned count) {
    const auto builder = Own([&](ThrowStatusWrapper* s) { return real->getBuilder(s); });
    for (unsigned i = 0; i < count; ++i)
        Call([&](ThrowStatusWrapper* s) {
            builder->setType(s, i, SQL_VARYING + 1);
            builder->setLength(s, i, TextLength);
            builder->setCharSet(s, i, 4); // UTF8
        });
    return Own([&](ThrowStatusWrapper* s) { return builder->getMetadata(s); });
}

// A message whose fields are all texts.
class CTextMessage {
public:
    explicit CTextMessage(IMessageMetadata* real)
        : m_Count(Call([&](ThrowStatusWrapper* s) { return real->getCount(s); })),
          m_Metadata(AllAsText(real, m_Count)),
          m_Buffer(Call([&](ThrowStatusWrapper* s) { return m_Metadata->getMessageLength(s); })) {}

    unsigned Count() const { return m_Count; }
    IMessageMetadata* Metadata() const { return m_Metadata.get(); }
    void* Buffer() { return m_Buffer.data(); }

    void Set(unsigned index, const tagValue& value) {
        const ISC_SHORT isNull = value ? 0 : -1;
        std::memcpy(NullFlag(index), &isNull, sizeof(isNull));
        if (!value)
            return;
        if (value->size() > TextLength)
            throw CDatabaseError("the test's value is too long");
        const auto length = static_cast<ISC_USHORT>(value->size());
        std::memcpy(Data(index), &length, sizeof(length));
        std::memcpy(Data(index) + sizeof(length), value->data(), length);
    }
    tagValue Get(unsigned index) {
        ISC_SHORT isNull;
        std::memcpy(&isNull, NullFlag(index), sizeof(isNull));
        if (isNull)
            return std::nullopt;
        ISC_USHORT length;
        std::memcpy(&length, Data(index), sizeof(length));
        return std::string(reinterpret_cast<const char*>(Data(index) + sizeof(length)), length);
    }

private:
    unsigned char* NullFlag(unsigned index) {
        return &m_Buffer[Call([&](ThrowStatusWrapper* s) { return m_Metadata->getNullOffset(s, index); })];
    }
    unsigned char* Data(unsigned index) {
        return &m_Buffer[Call([&](ThrowStatusWrapper* s) { return m_Metadata->getOffset(s, index); })];
    }

    unsigned m_Count;
    CCounted<IMessageMetadata> m_Metadata;
    std::vector<unsigned char> m_Buffer;
};

CCounted<ITransaction> Start(IAttachment* attachment, EMode mode) {
    CParameterBlock block(IXpbBuilder::TPB);
    block.Tag(isc_tpb_read_committed).Tag(isc_tpb_rec_version).Tag(isc_tpb_nowait);
    block.Tag(mode == EMode::ReadOnly ? isc_tpb_read : isc_tpb_write);
    return Own([&](ThrowStatusWrapper* s) { return attachment->startTransaction(s, block.Size(), block.Bytes()); });
}

CCounted<IProvider> Provider() { return CCounted<IProvider>(Master()->getDispatcher()); }

std::string TypeText(unsigned type, unsigned length) {
    switch (type & ~1u) {
    case SQL_VARYING:
        return "VARCHAR(" + std::to_string(length / 4) + ")"; // four bytes to a character
    case SQL_SHORT:
        return "SMALLINT";
    case SQL_LONG:
        return "INTEGER";
    case SQL_INT64:
        return "BIGINT";
    case SQL_FLOAT:
        return "FLOAT";
    case SQL_DOUBLE:
        return "DOUBLE";
    case SQL_TYPE_DATE:
        return "DATE";
    case SQL_TYPE_TIME:
        return "TIME";
    case SQL_TIMESTAMP:
        return "TIMESTAMP";
    default:
        return "type " + std::to_string(type);
    }
}

} // namespace

const tagValue& tagRows::At(std::size_t row, std::string_view column) const {
    const auto found = std::find(Columns.begin(), Columns.end(), column);
    if (found == Columns.end())
        throw CDatabaseError("no column " + std::string(column));
    return Rows.at(row).at(static_cast<std::size_t>(found - Columns.begin()));
}

std::vector<std::string> tagRows::Column(std::string_view column) const {
    std::vector<std::string> values;
    for (std::size_t row = 0; row < Rows.size(); ++row)
        values.push_back(At(row, column).value_or("NULL"));
    return values;
}

CTestTransaction::CTestTransaction(CTestDatabase& database, EMode mode)
    : m_Database(database), m_Transaction(Start(database.m_Attachment.get(), mode)) {}

tagRows CTestTransaction::Run(std::string_view sql, const std::vector<tagValue>& parameters) {
    return m_Database.Run(m_Transaction.get(), sql, parameters);
}

void CTestTransaction::End(EEnd how) {
    Call([&](ThrowStatusWrapper* s) {
        how == EEnd::Commit ? m_Transaction->commit(s) : m_Transaction->rollback(s);
    });
    (void)m_Transaction.release(); // ending it has released it
}

CTestDatabase::CTestDatabase(EContent content) : m_Path((m_Directory.Path() / "test.fdb").string()) {
    CParameterBlock block(IXpbBuilder::DPB);
    block.Text(isc_dpb_user_name, "SYSDBA").Text(isc_dpb_lc_ctype, CharacterSet);
    block.Text(isc_dpb_set_db_charset, CharacterSet).Number(isc_dpb_page_size, PageSize);
    block.Number(isc_dpb_sql_dialect, Dialect).Number(isc_dpb_force_write, 0);
    m_Attachment = Own([&](ThrowStatusWrapper* s) {
        return Provider()->createDatabase(s, m_Path.c_str(), block.Size(), block.Bytes());
    });
    if (content == EContent::Complete)
        for (const auto statement : sqSchema::CreateStatements())
            Run(statement);
}

CTestDatabase::~CTestDatabase() { m_Attachment.reset(); }

void CTestDatabase::Reconnect() {
    m_Attachment.reset();
    CParameterBlock block(IXpbBuilder::DPB);
    block.Text(isc_dpb_user_name, "SYSDBA").Text(isc_dpb_lc_ctype, CharacterSet);
    m_Attachment = Own([&](ThrowStatusWrapper* s) {
        return Provider()->attachDatabase(s, m_Path.c_str(), block.Size(), block.Bytes());
    });
}

tagRows CTestDatabase::Run(std::string_view sql, const std::vector<tagValue>& parameters) {
    CTestTransaction transaction(*this, EMode::ReadWrite);
    auto rows = transaction.Run(sql, parameters);
    transaction.End(EEnd::Commit);
    return rows;
}

tagRows CTestDatabase::Read(std::string_view sql, const std::vector<tagValue>& parameters) {
    CTestTransaction transaction(*this, EMode::ReadOnly);
    auto rows = transaction.Run(sql, parameters);
    transaction.End(EEnd::Commit);
    return rows;
}

std::string CTestDatabase::Value(std::string_view sql) { return Read(sql).Rows.at(0).at(0).value_or("NULL"); }

CCounted<IStatement> CTestDatabase::PrepareIn(ITransaction* transaction, std::string_view sql) {
    return Own([&](ThrowStatusWrapper* s) {
        return m_Attachment->prepare(s, transaction, static_cast<unsigned>(sql.size()), sql.data(), Dialect,
                                     IStatement::PREPARE_PREFETCH_ALL);
    });
}

tagRows CTestDatabase::Run(ITransaction* transaction, std::string_view sql,
                           const std::vector<tagValue>& parameters) {
    const auto statement = PrepareIn(transaction, sql);
    CTextMessage input(Own([&](ThrowStatusWrapper* s) { return statement->getInputMetadata(s); }).get());
    const auto described = Own([&](ThrowStatusWrapper* s) { return statement->getOutputMetadata(s); });
    CTextMessage output(described.get());
    if (parameters.size() != input.Count())
        throw CDatabaseError("the statement takes " + std::to_string(input.Count()) + " parameters");
    for (unsigned i = 0; i < input.Count(); ++i)
        input.Set(i, parameters[i]);

    tagRows result;
    for (unsigned i = 0; i < output.Count(); ++i)
        result.Columns.emplace_back(Call([&](ThrowStatusWrapper* s) { return described->getAlias(s, i); }));
    const auto keepRow = [&] {
        auto& row = result.Rows.emplace_back();
        for (unsigned i = 0; i < output.Count(); ++i)
            row.push_back(output.Get(i));
    };

    const auto flags = Call([&](ThrowStatusWrapper* s) { return statement->getFlags(s); });
    if (!(flags & IStatement::FLAG_HAS_CURSOR)) {
        Call([&](ThrowStatusWrapper* s) {
            statement->execute(s, transaction, input.Metadata(), input.Buffer(), output.Metadata(),
                               output.Buffer());
        });
        if (output.Count() > 0)
            keepRow();
        return result;
    }
    const auto cursor = Own([&](ThrowStatusWrapper* s) {
        return statement->openCursor(s, transaction, input.Metadata(), input.Buffer(), output.Metadata(), 0);
    });
    while (Call([&](ThrowStatusWrapper* s) { return cursor->fetchNext(s, output.Buffer()); }) == IStatus::RESULT_OK)
        keepRow();
    return result;
}

void CTestDatabase::Prepare(std::string_view sql) {
    CTestTransaction transaction(*this, EMode::ReadWrite);
    PrepareIn(transaction.m_Transaction.get(), sql);
}

std::string CTestDatabase::Plan(std::string_view sql) {
    CTestTransaction transaction(*this, EMode::ReadOnly);
    const auto statement = PrepareIn(transaction.m_Transaction.get(), sql);
    const char* plan = Call([&](ThrowStatusWrapper* s) { return statement->getPlan(s, false); });
    return plan ? plan : "";
}

std::vector<std::string> CTestDatabase::ResultTypes(std::string_view sql) {
    CTestTransaction transaction(*this, EMode::ReadOnly);
    const auto statement = PrepareIn(transaction.m_Transaction.get(), sql);
    const auto described = Own([&](ThrowStatusWrapper* s) { return statement->getOutputMetadata(s); });
    std::vector<std::string> types;
    const auto count = Call([&](ThrowStatusWrapper* s) { return described->getCount(s); });
    for (unsigned i = 0; i < count; ++i)
        types.push_back(Call([&](ThrowStatusWrapper* s) {
            return std::string(described->getAlias(s, i)) + " " +
                   TypeText(described->getType(s, i), described->getLength(s, i));
        }));
    return types;
}

} // namespace sqSchemaTest
