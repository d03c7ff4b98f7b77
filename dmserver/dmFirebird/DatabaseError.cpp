#include "DatabaseError.h"

#include "platform/text.h"

#include <algorithm>
#include <firebird/Interface.h>

namespace IDM_dmFirebird {

namespace {

std::wstring Compose(const std::wstring& sentence, const tagEngineReport& report) {
    if (report.Codes.empty())
        return sentence;
    return sentence + L" [Firebird: " + report.Text + L"; code " + std::to_wstring(report.Code()) + L", SQLSTATE " +
           std::wstring(report.SqlState.begin(), report.SqlState.end()) + L"]";
}

struct tagSentence {
    long Code;
    const wchar_t* Text;
};

// The first code that a report has decides, so the narrower ones stand before the wider ones.
constexpr tagSentence Sentences[] = {
    {isc_read_only_trans,
     L"The statement writes, but its transaction only reads: use a transaction of its own for it."},
    {isc_update_conflict,
     L"Another transaction has changed the same row, or is still changing it after the time for "
     L"which this one waits: try again when it is finished."},
    {isc_lock_timeout,
     L"Another transaction has held what this one needs for longer than this one waits: try again "
     L"when it is finished."},
    {isc_deadlock, L"Two transactions wait for each other's rows: try again."},
    {isc_lock_conflict, L"Another transaction holds what this one needs: try again when it is finished."},
    {isc_unique_key_violation, L"A row with this key exists already: update it, or use another key."},
    {isc_no_dup, L"A row with this key exists already: update it, or use another key."},
    {isc_foreign_key_target_doesnt_exist, L"The row points to a row that does not exist: store that one first."},
    {isc_foreign_key_references_present, L"Other rows still point to this row: delete or change them first."},
    {isc_foreign_key, L"The row points to a row that does not exist, or other rows still point to it."},
    {isc_not_valid_for_var, L"A value is missing or not allowed: give one that the statement takes."},
    {isc_not_valid, L"A column takes no such value, or none was given for one that needs it: correct the value."},
    {isc_check_constraint, L"A value breaks a rule of its table: correct the value."},
    {isc_string_truncation, L"A text is longer than its column takes: shorten it."},
    {isc_convert_error, L"A value has not the form that its column takes: correct the value."},
    {isc_numeric_out_of_range, L"A number is too large for its column: correct the value."},
    {isc_arith_except, L"A value does not fit: a number out of range, a division by zero or an over-long text."},
    {isc_no_priv, L"The database user has not the right to do this: connect as another user or grant the right."},
    {isc_obj_in_use, L"A table or procedure is in use and cannot be changed: try again when nobody works with it."},
    {isc_dsql_relation_err,
     L"The database has no such table or view: its definition is not the one that is needed."},
    {isc_dsql_field_err, L"The database has no such column: its definition is not the one that is needed."},
    {isc_dsql_procedure_err, L"The database has no such procedure: its definition is not the one that is needed."},
    {isc_dsql_token_unk_err, L"The statement is not understood by the database: correct its text."},
    {isc_command_end_err, L"The statement ends too early: complete its text."},
    {isc_except, L"A rule of the database refused the statement."},
    {isc_att_shutdown, L"The connection to the database was shut down: open the database again."},
    {isc_shutdown, L"The database was shut down: open it again when it is back."},
    {isc_net_read_err, L"The connection to the database server is lost: open the database again."},
    {isc_net_write_err, L"The connection to the database server is lost: open the database again."},
    {isc_network_error, L"The connection to the database server is lost: open the database again."},
    {isc_io_error, L"Reading or writing the database file failed: check the disk and its free space."},
    {isc_db_corrupt, L"The database file is damaged: restore it from a backup."},
    {isc_bad_checksum, L"The database file is damaged: restore it from a backup."},
};

} // namespace

bool tagEngineReport::Has(long code) const { return std::find(Codes.begin(), Codes.end(), code) != Codes.end(); }

bool tagEngineReport::HasAny(std::initializer_list<long> codes) const {
    return std::any_of(codes.begin(), codes.end(), [this](long code) { return Has(code); });
}

CDatabaseError::CDatabaseError(HRESULT status, std::wstring sentence)
    : m_Status(status), m_Sentence(std::move(sentence)), m_Text(m_Sentence), m_What(platform::ToUtf8(m_Text)) {}

CDatabaseError::CDatabaseError(std::wstring sentence, tagEngineReport report)
    : m_Status(E_FAIL), m_Sentence(std::move(sentence)), m_Report(std::move(report)),
      m_Text(Compose(m_Sentence, m_Report)), m_What(platform::ToUtf8(m_Text)) {}

CDatabaseError CDatabaseError::WithSentence(std::wstring sentence) const {
    CDatabaseError error(std::move(sentence), m_Report);
    error.m_Status = m_Status;
    return error;
}

std::wstring DescribeStatementFailure(const tagEngineReport& report) {
    for (const tagSentence& sentence : Sentences)
        if (report.Has(sentence.Code))
            return sentence.Text;
    return L"The database refused the statement.";
}

} // namespace IDM_dmFirebird
