#include <doctest.h>

#include "lists/is_in_list.h"
#include "tests/support/test_window.h"

namespace {

struct ListPage {
    ListBox list{L"list", 100};
    TestWindow window{{&list}};
};

}  // namespace

TEST_CASE_FIXTURE(ListPage, "a text is in the list when a row equals it without regard to letter case") {
    list.AddItem(L"http://one");
    list.AddItem(L"http://Caf\u00E9");
    CHECK(IsInList(L"HTTP://ONE", list));
    CHECK(IsInList(L"http://caf\u00C9", list));
    CHECK(IsInList(L"http://one", list));
}

TEST_CASE_FIXTURE(ListPage, "a row equals a text only as a whole and without trimming") {
    list.AddItem(L"http://one");
    CHECK_FALSE(IsInList(L"http://on", list));
    CHECK_FALSE(IsInList(L"http://one ", list));
    CHECK_FALSE(IsInList(L" http://one", list));
    CHECK_FALSE(IsInList(L"one", list));
    CHECK_FALSE(IsInList(L"http://onf", list));
}

TEST_CASE_FIXTURE(ListPage, "nothing is in an empty list, and the empty text only where a row is empty") {
    CHECK_FALSE(IsInList(L"", list));
    list.AddItem(L"a");
    CHECK_FALSE(IsInList(L"", list));
    list.AddItem(L"");
    CHECK(IsInList(L"", list));
}

TEST_CASE_FIXTURE(ListPage, "a hundred thousand rows are searched to the last") {
    {
        const RedrawPause pause(list);
        for (int i = 0; i < 100000; ++i)
            list.AddItem(L"http://site" + std::to_wstring(100000 + i));
    }
    CHECK(IsInList(L"HTTP://SITE199999", list));
    CHECK_FALSE(IsInList(L"http://site200000", list));
}
