#include "StorageFixture.h"

#include "dmserver/dmudfcom/interface/FieldIds.h"

namespace {

using namespace tests;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

constexpr LONG Unknown = 2000000000;
constexpr LONG Template = 2;

class Sessions : public StorageTest {
protected:
    HRESULT TryInsert(LONG type, const wchar_t* name, LONG zone, LONG* key) {
        return m_Storage->InsertSession(type, CBstr(name).Get(), zone, key);
    }
    LONG Insert(LONG type, const wchar_t* name, LONG zone = 0) {
        LONG key = 0;
        EXPECT_EQ(S_OK, TryInsert(type, name, zone, &key));
        EXPECT_GE(key, 1);
        return key;
    }
    HRESULT Update(LONG key, LONG type, const std::wstring& name, LONG zone = 0) {
        return m_Storage->UpdateSession(key, type, CBstr(name).Get(), zone);
    }
    LONG Delete(LONG key) {
        LONG deleted = -1;
        EXPECT_EQ(S_OK, m_Storage->DeleteSession(key, &deleted));
        return deleted;
    }
    static CComPtr<IdmRequest> Request(LONG key, LONG type) {
        const auto request = NewRequest();
        request->put_SessionId(key);
        request->put_SessionType(type);
        return request;
    }
    CComPtr<IdmTable> Select(LONG key, LONG type) {
        const auto table = NewTable();
        EXPECT_EQ(S_OK, m_Storage->SelectSession(Request(key, type).Get(), table.Get()));
        return table;
    }
    CComPtr<IdmTable> SelectDetails(LONG key) {
        const auto table = NewTable();
        EXPECT_EQ(S_OK, m_Storage->SelectSessionDetails(Request(key, 0).Get(), table.Get()));
        return table;
    }
    static CComPtr<IdmTable> EmptyDetails() {
        const auto table = NewTable();
        for (LONG id : DetailFields)
            EXPECT_EQ(S_OK, table->AddFieldById(id, 0, 0, 0));
        return table;
    }
    // One record, that of the session's `first` detail: first, first + 1, ...
    static void Append(const CComPtr<IdmTable>& table, LONG key, LONG first) {
        table->Append();
        FieldOf(table, IDM_dmudfcom::fieldSession)->put_AsLong(key);
        for (std::size_t i = 1; i < std::size(DetailFields); ++i)
            FieldOf(table, DetailFields[i])->put_AsLong(first + static_cast<LONG>(i) - 1);
        table->Post();
    }
    static CComPtr<IdmTable> Details(LONG key, const std::vector<LONG>& firsts) {
        const auto table = EmptyDetails();
        for (const LONG first : firsts)
            Append(table, key, first);
        table->First();
        return table;
    }
    static Row DetailRow(LONG key, LONG first) {
        Row row{Text(key)};
        for (LONG i = 0; i < 7; ++i)
            row.push_back(Text(first + i));
        return row;
    }
    static std::vector<Row> DetailRows() {
        return Sql(L"SELECT * FROM SESSION_DETAILS ORDER BY SESSION, START_DAY");
    }
    static std::vector<Row> Rows() { return Sql(L"SELECT * FROM SESSIONS ORDER BY SESSION"); }
    static std::wstring Updated(LONG key, LONG type, const std::wstring& name) {
        return L"sql = 'UPDATE SESSIONS SET SESSION=" + Text(key) + L", SESSION_TYPE=" + Text(type) +
               L", SESSION_NAME='" + name + L"', TIME_ZONE=0 WHERE SESSION=" + Text(key) + L"'";
    }
    static std::wstring Cut(const std::wstring& full, const std::wstring& shortened) {
        return L"SessionName '" + full + L"' was truncated to '" + shortened + L"'.";
    }

private:
    static constexpr LONG DetailFields[] = {IDM_dmudfcom::fieldSession,   IDM_dmudfcom::fieldStartDay,
                                            IDM_dmudfcom::fieldStartTime, IDM_dmudfcom::fieldEndDay,
                                            IDM_dmudfcom::fieldEndTime,   IDM_dmudfcom::fieldValue5,
                                            IDM_dmudfcom::fieldValue6,    IDM_dmudfcom::fieldValue7};
};

TEST_F(Sessions, InsertGivesANewKeyAndStoresTheRow) {
    const LONG key = Insert(Template, L"Day", 1);
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'INSERT INTO SESSIONS VALUES(" + Text(key) + L",2,'Day',1)'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x100, 0)));
    EXPECT_THAT(Rows(), ElementsAre(Row{Text(key), L"2", L"Day", L"1"}));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Sessions, InsertEscapesTheName) {
    const LONG key = Insert(Template, L"Trader's");
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'INSERT INTO SESSIONS VALUES(" + Text(key) + L",2,'Trader''s',0)'"));
    EXPECT_THAT(Rows(), ElementsAre(Row{Text(key), L"2", L"Trader's", L"0"}));
}

TEST_F(Sessions, InsertTakesAnEmptyNameMoreThanOnce) {
    EXPECT_NE(Insert(Template, L""), Insert(Template, L""));
    EXPECT_THAT(Rows(), SizeIs(2));
}

TEST_F(Sessions, InsertDoesNotCutTheName) {
    const std::wstring whole(63, L'x');
    Insert(1, whole.c_str());
    EXPECT_THAT(Sql(L"SELECT SESSION_NAME FROM SESSIONS"), ElementsAre(Row{whole}));
    TakeAll();
    // Wider than the column: reported, and announced all the same.
    Insert(1, std::wstring(64, L'x').c_str());
    EXPECT_THAT(Statements(), ElementsAre(testing::HasSubstr(L"'" + std::wstring(64, L'x') + L"'")));
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x100, 0)));
    EXPECT_THAT(Rows(), SizeIs(1));
}

TEST_F(Sessions, ATemplatesNameIsRefusedInAnyCaseForAnyTypeWithoutAWord) {
    Insert(Template, L"Day Trade's");
    TakeAll();
    for (const LONG type : {Template, LONG{0}, LONG{1}, LONG{3}})
        for (const wchar_t* name : {L"Day Trade's", L"DAY TRADE'S", L"day trade's"}) {
            LONG key = -1;
            EXPECT_EQ(S_FALSE, TryInsert(type, name, 0, &key));
            EXPECT_EQ(0, key);
        }
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Rows(), SizeIs(1));
    EXPECT_TRUE(Host().HasPrepared(
        L"SELECT SESSION FROM SESSIONS WHERE SESSION_TYPE=2 AND UPPER(SESSION_NAME)=UPPER('DAY TRADE''S')"));
}

TEST_F(Sessions, TheNameOfASessionThatIsNoTemplateMayComeAgain) {
    Insert(1, L"Day");
    Insert(1, L"Day");
    Insert(Template, L"Day");
    EXPECT_THAT(Rows(), SizeIs(3));
}

TEST_F(Sessions, InsertRefusesANegativeTypeOrTimeZoneAndANullOutPointer) {
    LONG key = -1;
    EXPECT_EQ(E_INVALIDARG, TryInsert(-1, L"Day", 0, &key));
    EXPECT_EQ(E_INVALIDARG, TryInsert(Template, L"Day", -1, &key));
    EXPECT_EQ(E_INVALIDARG, TryInsert(Template, L"Day", 0, nullptr));
    EXPECT_EQ(-1, key);
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(Sessions, InsertReportsANullNameAndWritesNothing) {
    LONG key = -1;
    EXPECT_EQ(S_FALSE, TryInsert(Template, nullptr, 0, &key));
    EXPECT_EQ(0, key);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"SessionName"));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Sessions, ANameThatOverflowsTheStatementIsReportedAndNothingRuns) {
    LONG key = -1;
    EXPECT_EQ(S_FALSE, TryInsert(Template, std::wstring(1100, L'x').c_str(), 0, &key));
    EXPECT_EQ(0, key);
    EXPECT_THAT(Recorder::Errors(), testing::Not(IsEmpty()));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Sessions, SelectOfKeyZeroListsTheSessionsOfAType) {
    const LONG day = Insert(Template, L"Day");
    const LONG night = Insert(Template, L"Night");
    const LONG own = Insert(0, L"Own");
    EXPECT_THAT(RowsOf(Select(0, Template)),
                UnorderedElementsAre(Row{Text(day), L"2", L"Day", L"0"}, Row{Text(night), L"2", L"Night", L"0"}));
    EXPECT_THAT(RowsOf(Select(0, 0)), ElementsAre(Row{Text(own), L"0", L"Own", L"0"}));
    EXPECT_EQ(0, RecordCount(Select(0, 3)));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM SESSIONS WHERE SESSION_TYPE=2"));
}

TEST_F(Sessions, SelectOfAKeyDoesNotLookAtTheType) {
    Sql(L"INSERT INTO SESSIONS VALUES(7,1,'Seven',2)");
    Insert(Template, L"Day");
    EXPECT_THAT(RowsOf(Select(7, Template)), ElementsAre(Row{L"7", L"1", L"Seven", L"2"}));
    EXPECT_EQ(0, RecordCount(Select(Unknown, Template)));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM SESSIONS WHERE SESSION=7"));
}

TEST_F(Sessions, SelectGivesKeyTypeAndTimeZoneUnderTheirIds) {
    Insert(Template, L"Day", 1);
    const auto table = Select(0, Template);
    for (const LONG id : {1006, 1007, 1011})
        EXPECT_TRUE(FieldOf(table, id));
}

TEST_F(Sessions, SelectsRefuseANullRequestOrTable) {
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectSession(nullptr, NewTable().Get()));
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectSession(NewRequest().Get(), nullptr));
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectSessionDetails(nullptr, NewTable().Get()));
    EXPECT_EQ(E_INVALIDARG, m_Storage->SelectSessionDetails(NewRequest().Get(), nullptr));
}

TEST_F(Sessions, SelectsAreNotTraced) {
    Select(0, Template);
    SelectDetails(0);
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Sessions, UpdateChangesTypeNameAndTimeZone) {
    const LONG key = Insert(1, L"Day");
    TakeAll();
    EXPECT_EQ(S_OK, Update(key, Template, L"Trader's", 1));
    EXPECT_THAT(Statements(),
                ElementsAre(L"sql = 'UPDATE SESSIONS SET SESSION=" + Text(key) +
                            L", SESSION_TYPE=2, SESSION_NAME='Trader''s', TIME_ZONE=1 WHERE SESSION=" + Text(key) +
                            L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x100, 0)));
    EXPECT_THAT(Rows(), ElementsAre(Row{Text(key), L"2", L"Trader's", L"1"}));
}

TEST_F(Sessions, UpdateTakesTheNameOfAnotherTemplate) {
    Insert(Template, L"Day");
    const LONG key = Insert(Template, L"Night");
    EXPECT_EQ(S_OK, Update(key, Template, L"Day"));
    EXPECT_THAT(Sql(L"SELECT SESSION_NAME FROM SESSIONS"), ElementsAre(Row{L"Day"}, Row{L"Day"}));
}

TEST_F(Sessions, UpdateStoresANameOf62CharactersWhole) {
    const LONG key = Insert(1, L"Day");
    TakeAll();
    const std::wstring name(62, L'x');
    EXPECT_EQ(S_OK, Update(key, 1, name));
    EXPECT_THAT(Recorder::Messages(), ElementsAre(Updated(key, 1, name)));
    EXPECT_THAT(Sql(L"SELECT SESSION_NAME FROM SESSIONS"), ElementsAre(Row{name}));
}

TEST_F(Sessions, UpdateCutsANameOf63CharactersTo61AndTwoDoubleQuotes) {
    const LONG key = Insert(1, L"Day");
    TakeAll();
    const std::wstring name = std::wstring(61, L'x') + L"yz";
    const std::wstring cut = std::wstring(61, L'x') + L"\"\"";
    EXPECT_EQ(S_OK, Update(key, 1, name));
    EXPECT_THAT(Recorder::Messages(), ElementsAre(Cut(name, cut), Updated(key, 1, cut)));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x100, 0)));
    EXPECT_THAT(Sql(L"SELECT SESSION_NAME FROM SESSIONS"), ElementsAre(Row{cut}));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Sessions, TheCutMeasuresTheEscapedName) {
    const LONG key = Insert(1, L"Day");
    TakeAll();
    // 62 characters, and 63 once the quote is doubled.
    const std::wstring name = L"'" + std::wstring(61, L'x');
    const std::wstring escaped = L"''" + std::wstring(61, L'x');
    const std::wstring cut = L"''" + std::wstring(59, L'x') + L"\"\"";
    EXPECT_EQ(S_OK, Update(key, 1, name));
    EXPECT_THAT(Recorder::Messages(), ElementsAre(Cut(escaped, cut), Updated(key, 1, cut)));
    EXPECT_THAT(Sql(L"SELECT SESSION_NAME FROM SESSIONS"),
                ElementsAre(Row{L"'" + std::wstring(59, L'x') + L"\"\""}));
}

TEST_F(Sessions, ACutThroughADoubledQuoteBreaksTheStatementWhichIsReportedAndStillAnnounced) {
    const LONG key = Insert(1, L"Day");
    TakeAll();
    const std::wstring sixty(60, L'x');
    EXPECT_EQ(S_OK, Update(key, 1, sixty + L"'y"));
    EXPECT_THAT(Recorder::Messages(),
                ElementsAre(Cut(sixty + L"''y", sixty + L"'\"\""), Updated(key, 1, sixty + L"'\"\"")));
    EXPECT_THAT(Recorder::Asserts(), Contains(StartsWith(L"Open")));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x100, 0)));
    EXPECT_THAT(Sql(L"SELECT SESSION_NAME FROM SESSIONS"), ElementsAre(Row{L"Day"}));
}

TEST_F(Sessions, APercentSignInANameIsALetterLikeOthers) {
    const LONG key = Insert(Template, L"50%s%n");
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'INSERT INTO SESSIONS VALUES(" + Text(key) + L",2,'50%s%n',0)'"));
    EXPECT_THAT(Rows(), ElementsAre(Row{Text(key), L"2", L"50%s%n", L"0"}));
    TakeAll();
    const std::wstring full = L"%s%n" + std::wstring(59, L'%');
    const std::wstring shortened = full.substr(0, 61) + L"\"\"";
    EXPECT_EQ(S_OK, Update(key, 1, full));
    EXPECT_THAT(Recorder::Messages(), ElementsAre(Cut(full, shortened), Updated(key, 1, shortened)));
    EXPECT_THAT(Rows(), ElementsAre(Row{Text(key), L"1", shortened, L"0"}));
}

TEST_F(Sessions, UpdateCutsEvenAnEndlessName) {
    const LONG key = Insert(1, L"Day");
    EXPECT_EQ(S_OK, Update(key, 1, std::wstring(5000, L'x')));
    EXPECT_THAT(Sql(L"SELECT SESSION_NAME FROM SESSIONS"), ElementsAre(Row{std::wstring(61, L'x') + L"\"\""}));
}

TEST_F(Sessions, UpdateRefusesANegativeTypeOrTimeZoneAndAKeyBelowOne) {
    const LONG key = Insert(1, L"Day");
    TakeAll();
    EXPECT_EQ(E_INVALIDARG, Update(key, -1, L"x", 0));
    EXPECT_EQ(E_INVALIDARG, Update(key, 1, L"x", -1));
    EXPECT_EQ(E_INVALIDARG, Update(0, 1, L"x", 0));
    EXPECT_EQ(E_INVALIDARG, Update(-1, 1, L"x", 0));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Sessions, UpdateOfAnUnknownKeyDoesNothing) {
    Insert(1, L"Day");
    TakeAll();
    EXPECT_EQ(S_FALSE, Update(Unknown, 1, L"x"));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Sessions, UpdateReportsANullNameAndChangesNothing) {
    const LONG key = Insert(1, L"Day");
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->UpdateSession(key, Template, nullptr, 0));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"SessionName"));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Rows(), ElementsAre(Row{Text(key), L"1", L"Day", L"0"}));
}

TEST_F(Sessions, DeleteTakesTheDetailsAndAnnouncesThemFirst) {
    const LONG key = Insert(1, L"Day");
    m_Storage->InsertSessionDetails(Details(key, {10, 20}).Get());
    // An exchange is no user of a template.
    Sql(L"INSERT INTO EXCHANGES (EXCHANGE, EXCHANGE_NAME, SESSION) VALUES (77,'X'," + Text(key) + L")");
    TakeAll();
    EXPECT_EQ(1, Delete(key));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM SESSION_DETAILS WHERE SESSION=" + Text(key) + L"'",
                                          L"sql = 'DELETE FROM SESSIONS WHERE SESSION=" + Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x200, 0), Change(0x100, 0)));
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_THAT(DetailRows(), IsEmpty());
    EXPECT_TRUE(
        Host().HasPrepared(L"SELECT SYMBOL FROM PORTFOLIO WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=" + Text(key)));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT CF FROM CUSTOM_FUTURES WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=" +
                                   Text(key)));
}

TEST_F(Sessions, DeleteOfATemplateInUseKeepsItAndItsDetails) {
    const LONG key = Insert(Template, L"Day");
    m_Storage->InsertSessionDetails(Details(key, {10}).Get());
    for (const wchar_t* user : {L"PORTFOLIO (SYMBOL,SESSION_TYPE,TEMPLATE_SESSION)",
                                L"CUSTOM_FUTURES (CF,SESSION_TYPE,TEMPLATE_SESSION)"}) {
        Sql(std::wstring(L"INSERT INTO ") + user + L" VALUES (1,2," + Text(key) + L")");
        TakeAll();
        EXPECT_EQ(0, Delete(key));
        EXPECT_THAT(Statements(), IsEmpty());
        EXPECT_THAT(m_Changes.Take(), IsEmpty());
        EXPECT_THAT(Recorder::Asserts(), IsEmpty());
        EXPECT_THAT(Rows(), SizeIs(1));
        EXPECT_THAT(DetailRows(), ElementsAre(DetailRow(key, 10)));
        Sql(std::wstring(L"DELETE FROM ") + std::wstring(user, std::wcschr(user, L' ')));
    }
    EXPECT_EQ(1, Delete(key));
}

TEST_F(Sessions, ASymbolOfAnotherSessionTypeDoesNotHoldATemplate) {
    const LONG key = Insert(Template, L"Day");
    Sql(L"INSERT INTO PORTFOLIO (SYMBOL,SESSION_TYPE,TEMPLATE_SESSION) VALUES (1,1," + Text(key) + L")");
    Sql(L"INSERT INTO PORTFOLIO (SYMBOL,SESSION_TYPE,CUSTOM_SESSION) VALUES (2,0," + Text(key) + L")");
    EXPECT_EQ(1, Delete(key));
}

TEST_F(Sessions, DeleteOfAnUnknownKeyAnswersZero) {
    Insert(0, L"Day");
    TakeAll();
    for (const LONG key : {Unknown, LONG{0}}) {
        LONG deleted = -1;
        EXPECT_EQ(S_FALSE, m_Storage->DeleteSession(key, &deleted));
        EXPECT_EQ(0, deleted);
    }
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(Rows(), SizeIs(1));
}

TEST_F(Sessions, DeleteReportsANullOutPointerAndGoesOn) {
    const LONG key = Insert(1, L"Day");
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeleteSession(key, nullptr));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Deleted"));
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(S_FALSE, m_Storage->DeleteSession(Unknown, nullptr));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Deleted", L"Deleted"));
}

TEST_F(Sessions, InsertDetailsStoresEachRecordInColumnOrder) {
    const LONG key = Insert(1, L"Day");
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->InsertSessionDetails(Details(key, {10, 20}).Get()));
    EXPECT_THAT(DetailRows(), ElementsAre(DetailRow(key, 10), DetailRow(key, 20)));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM SESSION_DETAILS WHERE SESSION=" + Text(key) + L"'",
                                          L"sql = 'INSERT INTO SESSION_DETAILS VALUES(?,?,?,?,?,?,?,?)'"));
    // Once for the delete of what was there, once for the insert.
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x200, 0), Change(0x200, 0)));
}

TEST_F(Sessions, InsertDetailsReplacesThoseOfItsSessionOnly) {
    m_Storage->InsertSessionDetails(Details(1, {10}).Get());
    m_Storage->InsertSessionDetails(Details(2, {10}).Get());
    EXPECT_EQ(S_OK, m_Storage->InsertSessionDetails(Details(1, {30}).Get()));
    EXPECT_THAT(DetailRows(), ElementsAre(DetailRow(1, 30), DetailRow(2, 10)));
}

TEST_F(Sessions, InsertDetailsReadsTheSessionFromTheCurrentRecord) {
    m_Storage->InsertSessionDetails(Details(1, {10}).Get());
    m_Storage->InsertSessionDetails(Details(2, {10}).Get());
    const auto mixed = Details(1, {30});
    Append(mixed, 2, 40);
    mixed->Last();
    EXPECT_EQ(S_OK, m_Storage->InsertSessionDetails(mixed.Get()));
    EXPECT_THAT(DetailRows(), ElementsAre(DetailRow(1, 10), DetailRow(1, 30), DetailRow(2, 40)));
}

TEST_F(Sessions, InsertDetailsOfAnEmptyTableDeletesThoseOfKeyZeroAndAnnouncesBoth) {
    m_Storage->InsertSessionDetails(Details(1, {10}).Get());
    Sql(L"INSERT INTO SESSION_DETAILS VALUES(0,1,2,3,4,5,6,7)");
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->InsertSessionDetails(EmptyDetails().Get()));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM SESSION_DETAILS WHERE SESSION=0'",
                                          L"sql = 'INSERT INTO SESSION_DETAILS VALUES(?,?,?,?,?,?,?,?)'"));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x200, 0), Change(0x200, 0)));
    EXPECT_THAT(DetailRows(), ElementsAre(DetailRow(1, 10)));
}

TEST_F(Sessions, InsertDetailsWithoutTheSessionFieldDeletesNothingAndStillInserts) {
    m_Storage->InsertSessionDetails(Details(1, {10}).Get());
    // Eight columns, of names that the field map does not know.
    const auto table = NewTable();
    for (LONG i = 0; i < 8; ++i)
        table->AddNewField(CBstr(L"COLUMN" + Text(i)).Get(), 6, 0);
    table->Append();
    for (LONG i = 0; i < 8; ++i) {
        CComPtr<IdmField> field;
        table->get_Field(i, field.Put());
        field->put_AsLong(i == 0 ? 1 : 19 + i);
    }
    table->Post();
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->InsertSessionDetails(table.Get()));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"SessionField"));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'INSERT INTO SESSION_DETAILS VALUES(?,?,?,?,?,?,?,?)'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x200, 0)));
    EXPECT_THAT(DetailRows(), ElementsAre(DetailRow(1, 10), DetailRow(1, 20)));
}

TEST_F(Sessions, InsertDetailsRefusesANullTableAfterTheReport) {
    EXPECT_EQ(E_INVALIDARG, m_Storage->InsertSessionDetails(nullptr));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Table"));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Sessions, SelectDetailsByKeyAndAll) {
    m_Storage->InsertSessionDetails(Details(1, {10, 20}).Get());
    m_Storage->InsertSessionDetails(Details(2, {30}).Get());
    EXPECT_THAT(RowsOf(SelectDetails(2)), ElementsAre(DetailRow(2, 30)));
    EXPECT_EQ(2, RecordCount(SelectDetails(1)));
    EXPECT_EQ(3, RecordCount(SelectDetails(0)));
    EXPECT_EQ(0, RecordCount(SelectDetails(Unknown)));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM SESSION_DETAILS"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM SESSION_DETAILS WHERE SESSION=2"));
}

TEST_F(Sessions, SelectDetailsGivesTheColumnsUnderTheirIds) {
    m_Storage->InsertSessionDetails(Details(1, {10}).Get());
    const auto table = SelectDetails(1);
    table->First();
    LONG value = 0;
    for (LONG i = 0; i < 7; ++i) {
        ASSERT_TRUE(FieldOf(table, 1027 + i));
        FieldOf(table, 1027 + i)->get_AsLong(&value);
        EXPECT_EQ(10 + i, value);
    }
}

TEST_F(Sessions, DeleteDetailsKeepsTheSession) {
    const LONG key = Insert(1, L"Day");
    m_Storage->InsertSessionDetails(Details(key, {10, 20}).Get());
    m_Storage->InsertSessionDetails(Details(Unknown, {30}).Get());
    TakeAll();
    EXPECT_EQ(S_OK, m_Storage->DeleteSessionDetails(key));
    EXPECT_THAT(Statements(), ElementsAre(L"sql = 'DELETE FROM SESSION_DETAILS WHERE SESSION=" + Text(key) + L"'"));
    EXPECT_THAT(m_Changes.Take(), ElementsAre(Change(0x200, 0)));
    EXPECT_THAT(DetailRows(), ElementsAre(DetailRow(Unknown, 30)));
    EXPECT_THAT(Rows(), SizeIs(1));
}

TEST_F(Sessions, DeleteDetailsOfASessionWithoutAnyDoesNothing) {
    const LONG key = Insert(1, L"Day");
    TakeAll();
    EXPECT_EQ(S_FALSE, m_Storage->DeleteSessionDetails(key));
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
}

TEST_F(Sessions, DeleteDetailsOfKeyZeroIsReportedAndFindsNoRow) {
    m_Storage->InsertSessionDetails(Details(1, {10}).Get());
    TakeAll();
    EXPECT_EQ(S_FALSE, m_Storage->DeleteSessionDetails(0));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Session"));
    EXPECT_THAT(m_Changes.Take(), IsEmpty());
    EXPECT_THAT(DetailRows(), SizeIs(1));
}

} // namespace
