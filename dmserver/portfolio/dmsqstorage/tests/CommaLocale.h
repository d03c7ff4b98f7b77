// A user whose decimals have a comma.
#pragma once

#include <clocale>
#include <locale>
#include <memory>
#include <string>

namespace tests {

template <class Character>
class CDecimalComma final : public std::numpunct<Character> {
    Character do_decimal_point() const override { return ','; }
};

// Writes decimals with a comma for the length of a scope, as a user of most of Europe has it: in the streams, and,
// where such a locale is installed, in the C library too.
class CCommaLocale {
public:
    CCommaLocale() {
        for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "ru_RU.UTF-8"})
            if (std::setlocale(LC_ALL, name))
                break;
        // The locale owns its facets.
        const std::locale narrow(std::locale::classic(), std::make_unique<CDecimalComma<char>>().release());
        std::locale::global(std::locale(narrow, std::make_unique<CDecimalComma<wchar_t>>().release()));
    }
    ~CCommaLocale() {
        std::locale::global(m_Before);
        std::setlocale(LC_ALL, m_CBefore.c_str());
    }
    CCommaLocale(const CCommaLocale&) = delete;
    CCommaLocale& operator=(const CCommaLocale&) = delete;

private:
    std::string m_CBefore = std::setlocale(LC_ALL, nullptr);
    std::locale m_Before;
};

} // namespace tests
