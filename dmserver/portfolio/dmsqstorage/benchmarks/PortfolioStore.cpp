#include "PortfolioStore.h"

#include "platform/com/com_error.h"
#include "platform/text.h"
#include "schema/interface/Schema.h"

#include <firebird/Interface.h>
#include <fmt/format.h>
#include <string_view>

namespace bench {

namespace {

using Status = Firebird::ThrowStatusWrapper;

constexpr unsigned Dialect = 3;

// What the selects need not wait for while the portfolio grows.
constexpr const char* Indexes[] = {"PORTFOLIO_IDENTITY",         "PORTFOLIO_UPPER_NAME",
                                   "PORTFOLIO_FEED_DESCRIPTION", "PORTFOLIO_UPPER_DESCRIPTION",
                                   "PORTFOLIO_EXCHANGE",         "PORTFOLIO_TEMPLATE_SESSION"};

constexpr std::string_view References = R"(
EXECUTE BLOCK AS
  DECLARE I INTEGER = 1;
BEGIN
  WHILE (I <= 4) DO
  BEGIN
    INSERT INTO DATA_FEEDS VALUES (:I, 'Data feed ' || :I, 'feed.dll', '{' || :I || '}', 1, 1, 0, 0, 'F' || :I);
    I = I + 1;
  END
  I = 1;
  WHILE (I <= 60) DO
  BEGIN
    INSERT INTO SETTINGS VALUES (1000 + :I, 100, :I * 2.5, 1000, 0.25);
    INSERT INTO SESSIONS VALUES (1000 + :I, 1, 'Exchange ' || :I, MOD(:I, 3));
    INSERT INTO EXCHANGES VALUES (:I, 'EXCH' || :I, 0, 1000 + :I, 1000 + :I, 0, 'map', MOD(:I, 2), (:I - 30) * 30,
      0, 0, 1, 11, '02:00:00.0000', -60, 0, 2, 3, '02:00:00.0000', 'Exchange number ' || :I);
    I = I + 1;
  END
  I = 1;
  WHILE (I <= 20) DO
  BEGIN
    INSERT INTO SESSIONS VALUES (2000 + :I, 2, 'Template ' || :I, MOD(:I, 3));
    I = I + 1;
  END
  INSERT INTO SESSION_DETAILS SELECT S.SESSION, D.N, 30600, D.N, 54900, 0, 1, 0 FROM SESSIONS S,
    (SELECT 1 AS N FROM RDB$DATABASE UNION ALL SELECT 2 FROM RDB$DATABASE UNION ALL SELECT 3 FROM RDB$DATABASE UNION
     ALL SELECT 4 FROM RDB$DATABASE UNION ALL SELECT 5 FROM RDB$DATABASE) D;
END)";

// Symbols from number {0} to below {1}, of 20,000 roots in all. {2} is the number of the root within the file, {3}
// that of the symbol within its root. Keys of symbols start at 10,000, of their own settings at 10,000,000 and of
// their own sessions at 20,000,000.
constexpr std::string_view NewSymbols = R"(
EXECUTE BLOCK AS
  DECLARE I INTEGER = {0};
  DECLARE R INTEGER;
  DECLARE M INTEGER;
  DECLARE Y INTEGER;
  DECLARE EXCHANGE_KEY INTEGER;
  DECLARE OWN_SETTING INTEGER;
  DECLARE OWN_SESSION INTEGER;
  DECLARE ROOT VARCHAR(31);
  DECLARE NAME VARCHAR(31);
BEGIN
  WHILE (I < {1}) DO
  BEGIN
    R = MOD(CAST({2} AS BIGINT) * 7919, 20000);
    M = MOD({3}, 12);
    Y = 2020 + {3} / 12;
    ROOT = ASCII_CHAR(65 + MOD(R / 676, 26)) || ASCII_CHAR(65 + MOD(R / 26, 26)) || ASCII_CHAR(65 + MOD(R, 26)) ||
      ASCII_CHAR(65 + R / 17576);
    NAME = ROOT || SUBSTRING('FGHJKMNQUVXZ' FROM M + 1 FOR 1) || (Y - 2000);
    EXCHANGE_KEY = MOD(R, 60) + 1;
    OWN_SETTING = IIF(MOD(I, 50) = 7, 10000000 + I, 0);
    OWN_SESSION = IIF(MOD(I, 100) = 11, 20000000 + I, 0);
    IF (OWN_SETTING > 0) THEN
      INSERT INTO SETTINGS VALUES (:OWN_SETTING, 100, :I, 1000, 0.5);
    IF (OWN_SESSION > 0) THEN
    BEGIN
      INSERT INTO SESSIONS VALUES (:OWN_SESSION, 0, 'Own ' || :I, 2);
      INSERT INTO SESSION_DETAILS VALUES (:OWN_SESSION, 1, 30600, 1, :I / 100, 0, 1, 0);
      INSERT INTO SESSION_DETAILS VALUES (:OWN_SESSION, 2, 30600, 2, :I / 100, 0, 1, 0);
    END
    INSERT INTO PORTFOLIO VALUES (10000 + :I, :NAME, :ROOT, 'Future on ' || :ROOT || ', delivery ' || (:M + 1) || '/' ||
      :Y, 'C' || (:I + 10000000), 1, MOD(:R, 4) + 1, :EXCHANGE_KEY,
      IIF(:OWN_SETTING > 0, 0, IIF(MOD(:I, 20) = 0, 2, 1)), :OWN_SETTING,
      IIF(:OWN_SESSION > 0, 0, IIF(MOD(:I, 10) = 3, 2, IIF(MOD(:I, 20) = 0, 3, 1))), :OWN_SESSION,
      IIF(MOD(:I, 10) = 3, 2001 + MOD(:I, 20), 0), :M + 1, :Y, :I * 0.25, 0, 500,
      DATEADD(MOD(:I, 3650) DAY TO DATE '01.01.2020'), 0, 0, NULL, NULL);
    I = I + 1;
  END
END)";

// A connection that only writes.
class CWriter {
public:
    explicit CWriter(const std::wstring& path)
        : m_Master(Firebird::fb_get_master_interface()), m_Status(m_Master->getStatus()) {
        static constexpr unsigned char parameters[] = {isc_dpb_version1,
                                                       isc_dpb_lc_ctype,
                                                       4,
                                                       'U',
                                                       'T',
                                                       'F',
                                                       '8',
                                                       isc_dpb_user_name,
                                                       6,
                                                       'S',
                                                       'Y',
                                                       'S',
                                                       'D',
                                                       'B',
                                                       'A',
                                                       isc_dpb_force_write,
                                                       1,
                                                       0};
        m_Attachment = m_Master->getDispatcher()->attachDatabase(&m_Status, platform::ToUtf8(path).c_str(),
                                                                 sizeof parameters, parameters);
    }
    ~CWriter() { m_Attachment->detach(&m_Status); }
    CWriter(const CWriter&) = delete;
    CWriter& operator=(const CWriter&) = delete;

    void Run(std::string_view sql) {
        Firebird::ITransaction* transaction = m_Attachment->startTransaction(&m_Status, 0, nullptr);
        m_Attachment->execute(&m_Status, transaction, static_cast<unsigned>(sql.size()), sql.data(), Dialect,
                              nullptr, nullptr, nullptr, nullptr);
        transaction->commit(&m_Status);
    }

private:
    Firebird::IMaster* m_Master;
    Status m_Status;
    Firebird::IAttachment* m_Attachment = nullptr;
};

} // namespace

CPortfolioStore::CPortfolioStore(ELayout layout) : m_Layout(layout) {
    m_Host.Install();
    CWriter(Path()).Run(References);
}

void CPortfolioStore::GrowTo(LONG symbols) {
    if (symbols <= m_Symbols)
        return;
    m_Storage.Reset();
    CWriter writer(Path());
    for (const char* index : Indexes)
        writer.Run(fmt::format("ALTER INDEX {} INACTIVE", index));
    const bool isScattered = m_Layout == ELayout::Scattered;
    writer.Run(fmt::format(NewSymbols, m_Symbols, symbols, isScattered ? "MOD(I, 20000)" : "(I / 50)",
                           isScattered ? "(I / 20000)" : "MOD(I, 50)"));
    for (const char* index : Indexes)
        writer.Run(fmt::format("ALTER INDEX {} ACTIVE", index));
    writer.Run(sqSchema::RefreshStatisticsStatement);
    m_Symbols = symbols;
}

IDM_qxStorage::IqxStorage& CPortfolioStore::Storage() {
    if (!m_Storage)
        platform::ThrowIfFailed(tests::CStorageHost::Create(m_Storage));
    return *m_Storage;
}

} // namespace bench
