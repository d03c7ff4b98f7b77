#include "platform/locale.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <locale.h>
#include <wchar.h>

namespace platform {

namespace {

// The longest name in the C library's locales has less than half of this.
constexpr std::size_t MaxText = 128;

class CUserLocale {
public:
    CUserLocale() : m_Locale(newlocale(LC_TIME_MASK | LC_CTYPE_MASK, "", nullptr)) {
        if (m_Locale == nullptr)
            m_Locale = newlocale(LC_ALL_MASK, "C", nullptr);
    }
    ~CUserLocale() {
        if (m_Locale != nullptr)
            freelocale(m_Locale);
    }
    CUserLocale(const CUserLocale&) = delete;
    CUserLocale& operator=(const CUserLocale&) = delete;

    std::size_t Write(const wchar_t* picture, const std::tm& moment, wchar_t* buffer, std::size_t capacity) const {
        if (capacity == 0)
            return 0;
        std::array<wchar_t, MaxText> text;
        const std::size_t length =
            m_Locale == nullptr ? 0 : wcsftime_l(text.data(), text.size(), picture, &moment, m_Locale);
        const std::size_t written = std::min(length, capacity - 1);
        std::copy_n(text.begin(), written, buffer);
        buffer[written] = L'\0';
        return written;
    }

private:
    locale_t m_Locale;
};

struct tagBlock {
    ELocaleText First;
    int Length;
    const wchar_t* Picture;
};
// Of a month, the form that stands alone.
constexpr std::array Blocks{
    tagBlock{ELocaleText::DayName1, 7, L"%A"},
    tagBlock{ELocaleText::ShortDayName1, 7, L"%a"},
    tagBlock{ELocaleText::MonthName1, 12, L"%OB"},
    tagBlock{ELocaleText::ShortMonthName1, 12, L"%Ob"},
};

} // namespace

std::size_t GetLocaleText(ELocaleText text, wchar_t* buffer, std::size_t capacity) {
    std::tm moment{};
    moment.tm_mday = 1;
    for (const tagBlock& block : Blocks) {
        const int index = static_cast<int>(text) - static_cast<int>(block.First);
        if (index < 0 || index >= block.Length)
            continue;
        moment.tm_wday = (index + 1) % 7; // the blocks of days begin on Monday
        moment.tm_mon = index;
        return CUserLocale().Write(block.Picture, moment, buffer, capacity);
    }
    if (capacity != 0)
        buffer[0] = L'\0';
    return 0;
}

std::size_t GetShortDate(const SYSTEMTIME& date, wchar_t* buffer, std::size_t capacity) {
    std::tm moment{};
    moment.tm_year = date.wYear - 1900;
    moment.tm_mon = date.wMonth - 1;
    moment.tm_mday = date.wDay;
    moment.tm_wday = date.wDayOfWeek;
    return CUserLocale().Write(L"%x", moment, buffer, capacity);
}

} // namespace platform
