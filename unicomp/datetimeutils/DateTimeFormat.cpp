#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include "platform/locale.h"

namespace dmDateTime {

namespace {

using platform::ELocaleText;

constexpr std::int64_t TicksPerMicrosecond = 10;
constexpr std::int64_t TicksPerMillisecond = 10000;

// Fills a buffer of at least one character and drops what no longer fits.
class CBufferText {
public:
    CBufferText(wchar_t* buffer, std::size_t capacity)
        : m_Begin(buffer), m_At(buffer), m_End(buffer + capacity - 1) {}

    [[nodiscard]] bool IsFull() const { return m_At == m_End; }
    // The room left, that of the zero included.
    [[nodiscard]] std::size_t Room() const { return static_cast<std::size_t>(m_End - m_At) + 1; }
    [[nodiscard]] wchar_t* At() const { return m_At; }
    void Advance(std::size_t count) { m_At += count; }

    void Put(wchar_t character) {
        if (!IsFull())
            *m_At++ = character;
    }
    // A number that is not negative, with zeros in front up to the width.
    void Put(LONG number, int width) {
        wchar_t digits[10]; // those of 2147483647
        int count = 0;
        do {
            digits[count++] = static_cast<wchar_t>(L'0' + number % 10);
            number /= 10;
        } while (number != 0);
        for (int zeros = width - count; zeros > 0; --zeros)
            Put(L'0');
        while (count > 0)
            Put(digits[--count]);
    }

    std::size_t Finish() {
        *m_At = L'\0';
        return static_cast<std::size_t>(m_At - m_Begin);
    }

private:
    wchar_t* m_Begin;
    wchar_t* m_At;
    wchar_t* m_End; // where the zero goes at the latest
};

void PutClock(CBufferText& text, const TTime& time) {
    text.Put(time.Hour, 2);
    text.Put(L':');
    text.Put(time.Minute, 2);
    text.Put(L':');
    text.Put(time.Second, 2);
}

// What the codes of one call read.
class CMomentWriter {
public:
    CMomentWriter(const SDateTime& moment, CBufferText& text)
        : m_Text(text), m_Weekday(details::GetDayOfWeekImpl(moment.ToJulian())),
          m_Time(details::SplitTime(moment.TimeOfDay())),
          m_Fraction(moment.TimeOfDayTicks() % SDateTime::TicksPerSecond) {
        details::JulianToDateImpl(moment.ToJulian(), m_Date);
    }

    void PutCode(wchar_t code) {
        switch (code) {
        case L'%':
            m_Text.Put(L'%');
            break;
        case L'd':
            m_Text.Put(m_Date.Day, 2);
            break;
        case L'm':
            m_Text.Put(m_Date.Month, 2);
            break;
        case L'Y':
            m_Text.Put(m_Date.Year, 4);
            break;
        case L'y':
            m_Text.Put(m_Date.Year % 100, 2);
            break;
        case L'H':
            m_Text.Put(m_Time.Hour, 2);
            break;
        case L'M':
            m_Text.Put(m_Time.Minute, 2);
            break;
        case L'S':
            m_Text.Put(m_Time.Second, 2);
            break;
        case L's':
            m_Text.Put(m_Time.Second, 1);
            break;
        case L'F':
            m_Text.Put(Milliseconds(), 3);
            break;
        case L'f':
            m_Text.Put(Milliseconds(), 1);
            break;
        case L'G':
            m_Text.Put(Microseconds(), 6);
            break;
        case L'g':
            m_Text.Put(Microseconds(), 1);
            break;
        case L'T':
            PutClock(m_Text, m_Time);
            break;
        default:
            PutLocaleCode(code);
        }
    }

private:
    void PutLocaleCode(wchar_t code) {
        // The step of the weekday is counted from the block's start, though Monday stands there already.
        const LONG weekday = m_Weekday == 0 ? 7 : m_Weekday;
        switch (code) {
        case L'a':
            PutName(ELocaleText::ShortDayName1 + weekday);
            break;
        case L'A':
            PutName(ELocaleText::DayName1 + weekday);
            break;
        case L'b':
            PutName(ELocaleText::ShortMonthName1 + (m_Date.Month - 1));
            break;
        case L'B':
            PutName(ELocaleText::MonthName1 + (m_Date.Month - 1));
            break;
        case L'D':
            PutShortDate();
            break;
        default:
            break; // an unknown code writes nothing
        }
    }

    // Below 1000 and 1000000: a fraction is less than a second.
    LONG Milliseconds() const { return static_cast<LONG>(m_Fraction / TicksPerMillisecond); }
    LONG Microseconds() const { return static_cast<LONG>(m_Fraction / TicksPerMicrosecond); }

    void PutName(ELocaleText name) { m_Text.Advance(platform::GetLocaleText(name, m_Text.At(), m_Text.Room())); }
    void PutShortDate() {
        SYSTEMTIME date{};
        date.wYear = static_cast<WORD>(m_Date.Year);
        date.wMonth = static_cast<WORD>(m_Date.Month);
        date.wDay = static_cast<WORD>(m_Date.Day);
        date.wDayOfWeek = static_cast<WORD>(m_Weekday);
        m_Text.Advance(platform::GetShortDate(date, m_Text.At(), m_Text.Room()));
    }

    CBufferText& m_Text;
    LONG m_Weekday;
    TDate m_Date{};
    TTime m_Time;
    std::int64_t m_Fraction; // ticks of the second
};

} // namespace

std::size_t SDateTime::Format(wchar_t* aBuffer, std::size_t aCapacity, const wchar_t* aFormat) const {
    details::CheckDays("dmDateTime::details::JulianToDateImpl", ToJulian());
    if (aBuffer == nullptr || aCapacity == 0)
        return 0;
    CBufferText text(aBuffer, aCapacity);
    CMomentWriter writer(*this, text);
    for (const wchar_t* at = aFormat ? aFormat : L""; *at != L'\0' && !text.IsFull(); ++at) {
        if (*at != L'%')
            text.Put(*at);
        else if (*++at != L'\0')
            writer.PutCode(*at);
        else
            break; // a percent sign at the very end begins no code
    }
    return text.Finish();
}

void FormatDaySeconds(DaySeconds aTime, wchar_t (&aBuffer)[16]) {
    TTime time{};
    TimeToTTime(aTime, time);
    CBufferText text(aBuffer, std::size(aBuffer));
    PutClock(text, time);
    for (const wchar_t character : {L'.', L'0', L'0', L'0', L'0'})
        text.Put(character);
    text.Finish();
}

} // namespace dmDateTime
