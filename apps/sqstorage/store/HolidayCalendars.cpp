#include "HolidayCalendars.h"

#include "WayBack.h"
#include "platform/com/bstr.h"
#include "platform/text.h"

#include <algorithm>
#include <tuple>

namespace sqCli {

namespace {

using IDM_dmudfcom::EColumnType;
using IDM_dmudfcom::ITableRows;

std::optional<tagDay> DayOf(const Cell& cell) {
    const auto* day = std::get_if<tagDay>(&cell);
    return day ? std::optional(*day) : std::nullopt;
}

// The columns of the table in its own order, which the store relies on.
class CDetailsTable {
public:
    CDetailsTable()
        : m_Table(NewTable()), m_Rows(m_Table.As<ITableRows>()),
          m_Calendar(m_Rows->AddColumn("HOLIDAY", EColumnType::Long)),
          m_Description(m_Rows->AddColumn("HOLIDAY_DESCRIPTION", EColumnType::Text)),
          m_Start(m_Rows->AddColumn("HOLIDAY_START_DATE", EColumnType::Date)),
          m_End(m_Rows->AddColumn("HOLIDAY_END_DATE", EColumnType::Date)) {}

    void Append(LONG calendar, const tagHolidayDate& date) {
        m_Rows->AppendRow();
        m_Rows->PutInteger(m_Calendar, calendar);
        m_Rows->PutText(m_Description, date.Description);
        if (date.Start)
            m_Rows->PutInteger(m_Start, date.Start->Number);
        if (date.End)
            m_Rows->PutInteger(m_End, date.End->Number);
    }

    // On the first record, by which the store learns the calendar.
    IDM_dmudfcom::IdmTable* Positioned() {
        m_Table->First();
        return m_Table.Get();
    }

private:
    platform::CComPtr<IDM_dmudfcom::IdmTable> m_Table;
    platform::CComPtr<ITableRows> m_Rows;
    ULONG m_Calendar;
    ULONG m_Description;
    ULONG m_Start;
    ULONG m_End;
};

void WriteDates(CStore& store, LONG calendar, std::span<const tagHolidayDate> dates) {
    CDetailsTable table;
    for (const tagHolidayDate& date : dates)
        table.Append(calendar, date);
    store.Run([&](CStore::IqxStorage& storage) { return storage.InsertHolidayDetails(table.Positioned()); });
}

} // namespace

std::vector<tagCalendar> SelectCalendars(CStore& store) {
    const tagRowSet rows = store.Select(&CStore::IqxStorage::SelectHoliday);
    const std::size_t key = ColumnOf(rows, "HOLIDAY");
    const std::size_t name = ColumnOf(rows, "HOLIDAY_NAME");
    std::vector<tagCalendar> calendars;
    for (const auto& row : rows.Rows)
        calendars.push_back({LongOf(row[key]), TextOf(row[name])});
    std::sort(calendars.begin(), calendars.end(), [](const tagCalendar& left, const tagCalendar& right) {
        return std::tie(left.Name, left.Key) < std::tie(right.Name, right.Key);
    });
    return calendars;
}

LONG InsertCalendar(CStore& store, const std::string& name) {
    LONG key = 0;
    const platform::CBstr text(platform::FromUtf8(name));
    store.Run([&](CStore::IqxStorage& storage) { return storage.InsertHoliday(text.Get(), &key); });
    if (key < 1)
        throw CStoreRefusal("The store gave out no key for the calendar: look into its log.");
    return key;
}

std::vector<tagOwnedHolidayDate> SelectHolidayDates(CStore& store) {
    const tagRowSet rows = store.Select(&CStore::IqxStorage::SelectHolidayDetails);
    const std::size_t calendar = ColumnOf(rows, "HOLIDAY");
    const std::size_t start = ColumnOf(rows, "HOLIDAY_START_DATE");
    const std::size_t end = ColumnOf(rows, "HOLIDAY_END_DATE");
    const std::size_t description = ColumnOf(rows, "HOLIDAY_DESCRIPTION");
    std::vector<tagOwnedHolidayDate> dates;
    for (const auto& row : rows.Rows)
        dates.push_back({LongOf(row[calendar]), {DayOf(row[start]), DayOf(row[end]), TextOf(row[description])}});
    return dates;
}

void ReplaceHolidayDates(CStore& store, LONG calendar, std::span<const tagHolidayDate> dates,
                         std::span<const tagHolidayDate> before) {
    ChangeOrUndo([&] { WriteDates(store, calendar, dates); },
                 [&] {
                     if (!before.empty())
                         WriteDates(store, calendar, before);
                 },
                 "its old dates");
}

} // namespace sqCli
