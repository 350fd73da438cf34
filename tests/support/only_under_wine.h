// Decorators of test cases that are skipped on Windows; the reason is printed.
#pragma once

#include <doctest.h>

#include "tests/support/wine.h"

struct OnlyUnderWine {
    const char* reason;

    void fill(doctest::detail::TestCase& test) const {
        test.m_skip = !RunsUnderWine();
        test.m_description = reason;
    }
};

// Under Wine everybody is an administrator. On Windows the tests run without such rights.
inline constexpr OnlyUnderWine kAsAdministrator{"only an administrator may write to the machine's registry"};
