// What the two list views have in common, and the three dialogs of the lists: how they open, stand, take keys
// and end. Their captions, labels and tab order are the scaling's and the accessibility's subject.
#include <doctest.h>

#include "tests/lists/list_pages.h"

namespace {

// The button of each page that opens a dialog to add a row; what the boxes hold when it opens, beginning with
// the one that has the focus; whether Windows gives it to that; and what OK accepts.
struct ExcludeDialog : ExcludePage {
    const Control& opens = cmdAddURL;
    const IdTexts boxes{{IDC_TXTURL, L"http://"}};
    const LRESULT focusedByWindows = FALSE;
    const IdTexts entry{};
};

struct BannerDialog : BannerPage {
    const Control& opens = cmdAddSize;
    const IdTexts boxes{{IDC_TXTHEIGHT, L""}, {IDC_TXTWIDTH, L""}};
    const LRESULT focusedByWindows = TRUE;
    const IdTexts entry{{IDC_TXTHEIGHT, L"5"}, {IDC_TXTWIDTH, L"6"}};
};

struct SearchDialog : SearchPage {
    const Control& opens = cmdAddSearch;
    const IdTexts boxes{{IDC_TXTNAME, L""}, {IDC_TXTURL, L"http://"}, {IDC_TXTINDEX, L"0"}};
    const LRESULT focusedByWindows = TRUE;
    const IdTexts entry{{IDC_TXTNAME, L"Three"}};
};

// What dialogs return for WM_INITDIALOG.
struct DialogStarts {
    DialogStarts() { s_results.clear(); }
    ~DialogStarts() { UnhookWindowsHookEx(hook); }

    static LRESULT CALLBACK Watch(int code, WPARAM wParam, LPARAM lParam) {
        const auto& done = *reinterpret_cast<const CWPRETSTRUCT*>(lParam);
        if (code == HC_ACTION && done.message == WM_INITDIALOG) s_results.push_back(done.lResult);
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline std::vector<LRESULT> s_results;
    const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROCRET, Watch, nullptr, GetCurrentThreadId());
};

POINT MiddleOf(HWND window) {
    RECT area{};
    GetWindowRect(window, &area);
    return {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
}

}  // namespace

TEST_CASE_TEMPLATE(
    "each dialog opens in the middle of its window, with the focus in its first box, before a change is "
    "marked",
    Page, ExcludeDialog, BannerDialog, SearchDialog) {
    Page page;
    const HWND owner = page.window.Hwnd();
    SetWindowPos(owner, nullptr, 300, 200, 480, 420, SWP_NOZORDER | SWP_NOACTIVATE);
    const DialogStarts starts;
    page.Play(page.opens, {[&](HWND dialog) {
                               CHECK(starts.s_results == std::vector{page.focusedByWindows});
                               CHECK(page.changes == 0);
                               CHECK(FocusedId() == page.boxes.front().first);
                               CHECK(GetWindow(dialog, GW_OWNER) == owner);
                               CHECK_FALSE(IsWindowEnabled(owner));
                               CHECK(std::abs(MiddleOf(dialog).x - MiddleOf(owner).x) <= 1);
                               CHECK(std::abs(MiddleOf(dialog).y - MiddleOf(owner).y) <= 1);
                           },
                           kCancel});
    CHECK(IsWindowEnabled(owner));
}

TEST_CASE_TEMPLATE("Enter presses OK; Esc, the close box and Cancel add nothing; each of them marks a change",
                   Page, ExcludeDialog, BannerDialog, SearchDialog) {
    const std::pair<bool, DialogScript::Step> endings[] = {
        {true, [](HWND) { PostKey(VK_RETURN); }},
        {false, [](HWND) { PostKey(VK_ESCAPE); }},
        {false, [](HWND dialog) { PostMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0); }},
        {false, kCancel}};
    for (const auto& [adds, end] : endings) {
        CAPTURE(adds);
        Page page;
        const int before = page.RowCount();
        page.Play(page.opens, {Enter(page.entry), end});
        CHECK(page.RowCount() == before + (adds ? 1 : 0));
        CHECK(page.changes == 1);
        CHECK(page.recorder.messages.empty());
        // The next one starts afresh.
        page.Play(page.opens, {[&](HWND dialog) {
                                   for (const auto& [id, text] : page.boxes)
                                       CHECK(TextIn(dialog, id) == text);
                               },
                               kCancel});
    }
}

TEST_CASE("setting up the columns of a list view empties it, shares its width out and marks no change") {
    const auto check = [](auto&& page, void (*setUp)(ListView & list), std::vector<double> shares) {
        for (const int width : {200, 333, 1000}) {
            CAPTURE(width);
            SetWindowPos(page.View().Hwnd(), nullptr, 0, 0, width, 100, SWP_NOMOVE | SWP_NOZORDER);
            page.View().Add(L"a");
            setUp(page.View());
            CHECK(page.RowCount() == 0);
            for (size_t column = 0; column < shares.size(); ++column)
                CHECK(ListView_GetColumnWidth(page.View().Hwnd(), static_cast<int>(column)) ==
                      doctest::Approx(shares[column] * width).epsilon(0.01));
        }
        CHECK(page.changes == 0);
    };
    check(BannerPage(), SetupBannerColumns, {0.5, 0.24, 0.24});
    check(SearchPage(), SetupSearchColumns, {0.3, 0.68});
}

TEST_CASE_TEMPLATE(
    "ticking and clearing a row's box marks a change, with the keyboard and the mouse; filling and selecting "
    "rows marks none",
    Page, BannerPage, SearchPage) {
    Page page;
    ListView& list = page.View();
    page.Select(list, 2);
    CHECK(page.changes == 0);
    SendMessageW(list.Hwnd(), WM_KEYDOWN, VK_SPACE, 1);
    CHECK(list.Checked(2));
    CHECK(page.changes == 1);
    RECT row{};
    ListView_GetItemRect(list.Hwnd(), 1, &row, LVIR_BOUNDS);
    const LPARAM box = MAKELPARAM(row.left + 8, (row.top + row.bottom) / 2);
    PostMessageW(list.Hwnd(), WM_LBUTTONUP, 0, box);
    SendMessageW(list.Hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, box);
    CHECK_FALSE(list.Checked(2));
    CHECK(page.changes == 2);
}
