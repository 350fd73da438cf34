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

template <class Row>
struct StringMaker<std::vector<Row>> {
    static String convert(const std::vector<Row>& rows) {
        String shown;
        for (const Row& row : rows)
            shown += "\n  " + toString(row);
        return shown;
    }
};

}  // namespace doctest
