// What the two list views have in common, and the three dialogs of the lists: how they open, stand, take keys
// and end. Their captions, labels and tab order are the scaling's and the accessibility's subject.
#include <doctest.h>

#include <memory>

#include "tests/lists/list_pages.h"

namespace {

// Runs body(page, button, boxes, entry) for the button of each page that opens a dialog to add a row. boxes:
// what the boxes hold when it opens, beginning with the one that has the focus; entry: what OK accepts.
template <class Body>
void ForEachDialog(Body body) {
    {
        INFO("an address to exclude");
        ExcludePage page;
        body(page, page.cmdAddURL, IdTexts{{IDC_TXTURL, L"http://"}}, IdTexts{});
    }
    {
        INFO("a banner size");
        BannerPage page;
        body(page, page.cmdAddSize, IdTexts{{IDC_TXTHEIGHT, L""}, {IDC_TXTWIDTH, L""}},
             IdTexts{{IDC_TXTHEIGHT, L"5"}, {IDC_TXTWIDTH, L"6"}});
    }
    {
        INFO("a search engine");
        SearchPage page;
        body(page, page.cmdAddSearch,
             IdTexts{{IDC_TXTNAME, L""}, {IDC_TXTURL, L"http://"}, {IDC_TXTINDEX, L"0"}},
             IdTexts{{IDC_TXTNAME, L"Three"}});
    }
}

POINT MiddleOf(HWND window) {
    RECT area{};
    GetWindowRect(window, &area);
    return {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
}

}  // namespace

TEST_CASE(
    "each dialog opens in the middle of its window, with the focus in its first box, before a change is "
    "marked") {
    ForEachDialog([](auto& page, const Control& button, const IdTexts& boxes, const IdTexts&) {
        const HWND owner = page.window.Hwnd();
        SetWindowPos(owner, nullptr, 300, 200, 480, 420, SWP_NOZORDER | SWP_NOACTIVATE);
        page.Play(button, {[&](HWND dialog) {
                               CHECK(page.changes == 0);
                               CHECK(FocusedId() == boxes.front().first);
                               CHECK(GetWindow(dialog, GW_OWNER) == owner);
                               CHECK_FALSE(IsWindowEnabled(owner));
                               CHECK(std::abs(MiddleOf(dialog).x - MiddleOf(owner).x) <= 1);
                               CHECK(std::abs(MiddleOf(dialog).y - MiddleOf(owner).y) <= 1);
                           },
                           kCancel});
        CHECK(IsWindowEnabled(owner));
    });
}

TEST_CASE("Enter presses OK; Esc, the close box and Cancel add nothing; each of them marks a change") {
    const std::pair<bool, DialogScript::Step> endings[] = {
        {true, [](HWND) { PostKey(VK_RETURN); }},
        {false, [](HWND) { PostKey(VK_ESCAPE); }},
        {false, [](HWND dialog) { PostMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0); }},
        {false, kCancel}};
    for (const auto& [adds, end] : endings) {
        CAPTURE(adds);
        ForEachDialog([&](auto& page, const Control& button, const IdTexts& boxes, const IdTexts& entry) {
            const int before = page.RowCount();
            page.Play(button, {Enter(entry), end});
            CHECK(page.RowCount() == before + (adds ? 1 : 0));
            CHECK(page.changes == 1);
            CHECK(page.recorder.messages.empty());
            // The next one starts afresh.
            page.Play(button, {[&](HWND dialog) {
                                   for (const auto& [id, text] : boxes)
                                       CHECK(TextIn(dialog, id) == text);
                               },
                               kCancel});
        });
    }
}

TEST_CASE("setting up the columns of a list view empties it, shares its width out and marks no change") {
    const auto check = [](auto page, void (*setUp)(ListView & list), std::vector<double> shares) {
        for (const int width : {200, 333, 1000}) {
            CAPTURE(width);
            SetWindowPos(page->View().Hwnd(), nullptr, 0, 0, width, 100, SWP_NOMOVE | SWP_NOZORDER);
            page->View().Add(1, L"a");
            setUp(page->View());
            CHECK(page->RowCount() == 0);
            for (size_t column = 0; column < shares.size(); ++column)
                CHECK(ListView_GetColumnWidth(page->View().Hwnd(), static_cast<int>(column)) ==
                      doctest::Approx(shares[column] * width).epsilon(0.01));
        }
        CHECK(page->changes == 0);
    };
    check(std::make_unique<BannerPage>(), SetupBannerColumns, {0.5, 0.24, 0.24});
    check(std::make_unique<SearchPage>(), SetupSearchColumns, {0.3, 0.68});
}

TEST_CASE(
    "ticking and clearing a row's box marks a change, with the keyboard and the mouse; filling and selecting "
    "rows marks none") {
    const auto check = [](auto page) {
        const ListView& list = page->View();
        page->View().Select(2);
        CHECK(page->changes == 0);
        SendMessageW(list.Hwnd(), WM_KEYDOWN, VK_SPACE, 1);
        CHECK(list.Checked(2));
        CHECK(page->changes == 1);
        RECT row{};
        ListView_GetItemRect(list.Hwnd(), 1, &row, LVIR_BOUNDS);
        const LPARAM box = MAKELPARAM(row.left + 8, (row.top + row.bottom) / 2);
        PostMessageW(list.Hwnd(), WM_LBUTTONUP, 0, box);
        SendMessageW(list.Hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, box);
        CHECK_FALSE(list.Checked(2));
        CHECK(page->changes == 2);
    };
    check(std::make_unique<BannerPage>());
    check(std::make_unique<SearchPage>());
}
