// How the user writes numbers.
#pragma once

#include <windows.h>

#include <iterator>

// The separators of numbers, for all of the user's programs that start meanwhile. A conversion from text
// takes those of sums of money as well.
class Separators {
public:
    Separators(const wchar_t* decimal, const wchar_t* thousand) {
        for (Entry& entry : m_entries) {
            GetLocaleInfoW(LOCALE_USER_DEFAULT, entry.what, entry.before,
                           static_cast<int>(std::size(entry.before)));
            SetLocaleInfoW(LOCALE_USER_DEFAULT, entry.what, entry.isDecimal ? decimal : thousand);
        }
    }
    Separators(const Separators&) = delete;
    Separators& operator=(const Separators&) = delete;
    ~Separators() {
        for (const Entry& entry : m_entries)
            SetLocaleInfoW(LOCALE_USER_DEFAULT, entry.what, entry.before);
    }

private:
    struct Entry {
        LCTYPE what;
        bool isDecimal;
        wchar_t before[8] = {};
    };
    Entry m_entries[4] = {{LOCALE_SDECIMAL, true},
                          {LOCALE_SMONDECIMALSEP, true},
                          {LOCALE_STHOUSAND, false},
                          {LOCALE_SMONTHOUSANDSEP, false}};
};
