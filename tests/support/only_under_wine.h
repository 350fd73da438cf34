// A decorator of test cases that are skipped on Windows; the reason is printed.
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

