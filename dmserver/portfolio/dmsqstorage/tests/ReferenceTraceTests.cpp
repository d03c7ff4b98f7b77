// Every operation on feeds, exchanges, sessions, currencies and sinks, and every method that leads to one, is a
// scope in the trace: it is entered once and left once.
#include "InsideFixture.h"
#include "platform/text.h"

#include <functional>

namespace {

using namespace tests;
using testing::ElementsAre;

constexpr const wchar_t* Zone = L"300,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000";

using Calls = std::vector<std::pair<std::wstring, std::function<void()>>>;

class ReferenceTraces : public InsideTest {
protected:
    // Feed 7, exchange 5, session 30, rows of each name twice.
    ReferenceTraces() {
        for (const wchar_t* key : {L"7", L"8"})
            Sql(std::wstring(L"INSERT INTO DATA_FEEDS VALUES(") + key + L",'Feed','x.dll','{C}',1,1,0,0,'X')");
        for (const wchar_t* key : {L"5", L"6"})
            Sql(std::wstring(L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME) VALUES(") + key + L",'NYSE')");
        Sql(L"INSERT INTO SESSIONS VALUES(30,1,'Day',0)");
        Sql(L"INSERT INTO SESSION_DETAILS VALUES(30,1,2,3,4,5,6,7)");
    }
    static void ExpectScopes(const std::wstring& owner, const Calls& calls) {
        for (const auto& [name, call] : calls) {
            Recorder::Clear();
            call();
            std::vector<LONG> moments;
            for (const auto& record : Recorder::RecordsOf(L"TRACE"))
                if (record.Ident != 0 && record.Function == owner + name)
                    moments.push_back(record.Ident);
            EXPECT_THAT(moments, ElementsAre(1, -1)) << platform::ToUtf8(name);
        }
    }
};

TEST_F(ReferenceTraces, EveryOperationIsAScope) {
    sqStorage::CStorage& s = Storage();
    const auto request = NewRequest();
    const auto table = NewTable();
    ExpectScopes(
        L"sqStorage::CStorage::",
        {{L"SelectDataFeed", [&] { s.SelectDataFeed(request.Get(), NewTable().Get()); }},
         {L"InsertDataFeed", [&] { s.InsertDataFeed(L"x", L"x", L"x", L"{X}", 0); }},
         {L"GetDataFeedId1", [&] { s.GetDataFeedId1(L"{X}"); }},
         {L"IsPrimaryInstance", [&] { s.IsPrimaryInstance(L"{X}"); }},
         {L"UpdateDataFeed", [&] { s.UpdateDataFeed(7, L"Feed", L"x", L"x", L"x", 0, 1); }},
         {L"SelectDataFeed", [&] { s.SelectDataFeed(L"Feed"); }},
         {L"dumpWarning", [&] { s.SelectDataFeed(L"Feed"); }},
         {L"DeleteDataFeed", [&] { s.DeleteDataFeed(7); }},
         {L"DeleteAnything", [&] { s.DeleteDataFeed(8); }},
         {L"SelectExchange", [&] { s.SelectExchange(request.Get(), NewTable().Get()); }},
         {L"InsertExchange", [&] { s.InsertExchange(L"x", L"x", 0, 1, 1, 0, L"x", Zone); }},
         {L"SelectExchange", [&] { s.SelectExchange(L"NYSE"); }},
         {L"UpdateExchange", [&] { s.UpdateExchange(5, L"x", L"x", 0, 1, 1, 0, L"x", Zone); }},
         {L"get_exchange_name", [&] { s.UpdateExchange(5, L"x", L"x", 0, 1, 1, 0, L"x", Zone); }},
         {L"update_exchange_in_root_settings", [&] { s.UpdateExchange(5, L"x", L"x", 0, 1, 1, 0, L"x", Zone); }},
         {L"DeleteExchange", [&] { s.DeleteExchange(5); }},
         {L"SelectSession", [&] { s.SelectSession(request.Get(), NewTable().Get()); }},
         {L"InsertSession", [&] { s.InsertSession(2, L"x", 0); }},
         {L"IsSessionTemplateExists", [&] { s.InsertSession(2, L"x", 0); }},
         {L"UpdateSession", [&] { s.UpdateSession(30, 2, L"y", 0); }},
         {L"SelectSessionDetails", [&] { s.SelectSessionDetails(request.Get(), table.Get()); }},
         {L"InsertSessionDetails", [&] { s.InsertSessionDetails(table.Get()); }},
         {L"DeleteSessionDetails", [&] { s.DeleteSessionDetails(30); }},
         {L"IsSessionTemplateUsed", [&] { s.IsSessionTemplateUsed(30, L"SYMBOL", L"PORTFOLIO"); }},
         {L"DeleteSession", [&] { s.DeleteSession(30); }},
         {L"SetCurrency", [&] { s.SetCurrency(7, 840); }},
         {L"GetCurrency", [&] { s.GetCurrency(7); }},
         {L"DeleteCurrency", [&] { s.DeleteCurrency(7); }},
         {L"AdviseNotify", [&] { s.AdviseNotify(1, nullptr); }},
         {L"UnadviseNotify", [&] { s.UnadviseNotify(1, nullptr); }},
         {L"UnadviseNotifyAllMasks", [&] { s.UnadviseNotifyAllMasks(nullptr); }}});
}

TEST_F(ReferenceTraces, EveryMethodIsAScope) {
    CqxStorageBase& o = *m_Object;
    const CBstr text(L"x");
    const CBstr zone(Zone);
    const auto request = NewRequest();
    const auto table = NewTable();
    LONG key = 0;
    const auto x = text.Get();
    ExpectScopes(L"CqxStorageBase::",
                 {{L"SelectDataFeed", [&] { o.SelectDataFeed(request.Get(), NewTable().Get()); }},
                  {L"InsertDataFeed", [&] { o.InsertDataFeed(x, x, x, x, 0, &key); }},
                  {L"UpdateDataFeed", [&] { o.UpdateDataFeed(7, x, x, x, x, 0, 1); }},
                  {L"GetDataFeed", [&] { o.GetDataFeed(x, &key); }},
                  {L"DeleteDataFeed", [&] { o.DeleteDataFeed(7, &key); }},
                  {L"get_Datafeed", [&] { o.get_Datafeed(&key); }},
                  {L"SelectExchange", [&] { o.SelectExchange(request.Get(), NewTable().Get()); }},
                  {L"InsertExchange", [&] { o.InsertExchange(x, x, 0, 1, 1, 0, x, zone.Get(), &key); }},
                  {L"UpdateExchange", [&] { o.UpdateExchange(5, x, x, 0, 1, 1, 0, x, zone.Get()); }},
                  {L"GetExchange", [&] { o.GetExchange(x, &key); }},
                  {L"DeleteExchange", [&] { o.DeleteExchange(5, &key); }},
                  {L"SelectSession", [&] { o.SelectSession(request.Get(), NewTable().Get()); }},
                  {L"InsertSession", [&] { o.InsertSession(2, x, 0, &key); }},
                  {L"UpdateSession", [&] { o.UpdateSession(30, 2, x, 0); }},
                  {L"SelectSessionDetails", [&] { o.SelectSessionDetails(request.Get(), table.Get()); }},
                  {L"InsertSessionDetails", [&] { o.InsertSessionDetails(table.Get()); }},
                  {L"DeleteSessionDetails", [&] { o.DeleteSessionDetails(30); }},
                  {L"DeleteSession", [&] { o.DeleteSession(30, &key); }},
                  {L"SetCurrency", [&] { o.SetCurrency(7, 840); }},
                  {L"GetCurrency", [&] { o.GetCurrency(7, &key); }},
                  {L"DeleteCurrency", [&] { o.DeleteCurrency(7); }},
                  {L"AdviseNotify", [&] { o.AdviseNotify(1, nullptr); }},
                  {L"UnadviseNotify", [&] { o.UnadviseNotify(1, nullptr); }},
                  {L"SendNotify", [&] { o.SendNotify(0); }}});
}

} // namespace
