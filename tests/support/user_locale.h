// How the user writes numbers.
#pragma once

#include <windows.h>

#include <iterator>

// One entry of the user's locale, for all of his programs that start meanwhile.
class LocaleEntry {
public:
    LocaleEntry(LCTYPE what, const wchar_t* text) : m_what(what) {
        GetLocaleInfoW(LOCALE_USER_DEFAULT, m_what, m_before, static_cast<int>(std::size(m_before)));
        SetLocaleInfoW(LOCALE_USER_DEFAULT, m_what, text);
    }
    LocaleEntry(const LocaleEntry&) = delete;
    LocaleEntry& operator=(const LocaleEntry&) = delete;
    ~LocaleEntry() { SetLocaleInfoW(LOCALE_USER_DEFAULT, m_what, m_before); }

private:
    const LCTYPE m_what;
    wchar_t m_before[8] = {};
};

// The separators of numbers. A conversion from text takes those of sums of money as well.
class Separators {
public:
    Separators(const wchar_t* decimal, const wchar_t* thousand)
        : m_decimal(LOCALE_SDECIMAL, decimal),
          m_thousand(LOCALE_STHOUSAND, thousand),
          m_decimalOfMoney(LOCALE_SMONDECIMALSEP, decimal),
          m_thousandOfMoney(LOCALE_SMONTHOUSANDSEP, thousand) {}

private:
    const LocaleEntry m_decimal;
    const LocaleEntry m_thousand;
    const LocaleEntry m_decimalOfMoney;
    const LocaleEntry m_thousandOfMoney;
};
