// Lets failed assertions show wide text.
#pragma once

#include <doctest.h>

#include <string>
#include <vector>

#include "platform/text.h"

namespace doctest {

template <>
struct StringMaker<std::wstring> {
    static String convert(const std::wstring& text) { return ('"' + ToAnsi(text) + '"').c_str(); }
};

template <>
struct StringMaker<std::vector<std::wstring>> {
    static String convert(const std::vector<std::wstring>& rows) {
        std::string shown;
        for (const std::wstring& row : rows)
            shown += "\n  " + ToAnsi(row);
        return shown.c_str();
    }
};

template <>
struct StringMaker<std::vector<std::string>> {
    static String convert(const std::vector<std::string>& rows) {
        std::string shown;
        for (const std::string& row : rows)
            shown += "\n  " + row;
        return shown.c_str();
    }
};

}  // namespace doctest
