// The search for a duplicate in a long exclude list, beside one pass over the same strings.
#include <windows.h>
#include <commctrl.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "bench/support/comparison.h"
#include "lists/is_in_list.h"
#include "platform/controls/list_box.h"
#include "platform/text.h"
#include "tests/support/test_window.h"

namespace {

constexpr int kRows = 100000;
constexpr double kWanted = 1.5;

std::wstring Address(int n) {
    return L"http://site" + std::to_wstring(100000 + n) + L".example";
}

// The comparison that is asked for, over strings in memory.
bool IsAmong(const std::wstring& text, const std::vector<std::wstring>& rows) {
    const std::wstring upperText = UpperCase(text);
    for (const std::wstring& row : rows) {
        if (UpperCase(row) == upperText) return true;
    }
    return false;
}

size_t FetchAll(HWND list) {
    size_t characters = 0;
    std::wstring row(256, L'\0');
    for (WPARAM i = 0; i < kRows; ++i)
        characters +=
            static_cast<size_t>(SendMessageW(list, LB_GETTEXT, i, reinterpret_cast<LPARAM>(row.data())));
    return characters;
}

void Check(bool isAsExpected) {
    if (!isAsExpected)
        throw std::runtime_error("the search found what it should not, or the other way round");
}

void Run() {
    ListBox list(L"lstExclude", 100);
    const TestWindow window({&list});
    std::vector<std::wstring> rows;
    {
        const RedrawPause pause(list);
        for (int n = 0; n < kRows; ++n) {
            rows.push_back(Address(n));
            list.AddItem(rows.back());
        }
    }
    const std::wstring absent = L"http://site999999.example";
    const std::wstring longer = L"http://another.site.example";
    Check(IsInList(UpperCase(Address(kRows - 1)), list) && !IsInList(absent, list));

    const Side pass{"one pass over the strings in memory, in upper case",
                    [&] { Check(!IsAmong(absent, rows)); }};
    const Side fetch{"fetching each row once", [&] { Check(FetchAll(list.Hwnd()) > kRows); }};
    const Side search{"`IsInList`", [&] { Check(!IsInList(absent, list)); }};
    const Side searchLonger{"`IsInList`", [&] { Check(!IsInList(longer, list)); }};
    Report({.what = "Duplicate check, all rows of the address's length",
            .size = "100,000 rows",
            .measured = search,
            .beside = pass,
            .wanted = kWanted});
    Report({"Duplicate check, all rows of the address's length", "100,000 rows", search, fetch});
    Report({.what = "Duplicate check, no row of the address's length",
            .size = "100,000 rows",
            .measured = searchLonger,
            .beside = pass,
            .wanted = kWanted});
}

}  // namespace

int wmain() {
    return RunBenchmark(Run);
}
