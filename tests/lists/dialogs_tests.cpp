// What the three dialogs of the lists have in common: how they open, stand, take keys and end. Their
// captions, labels and tab order are the scaling's and the accessibility's subject.
#include <doctest.h>

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

LONG Middle(LONG first, LONG last) {
    return (first + last) / 2;
}

}  // namespace

TEST_CASE(
    "each dialog opens in the middle of its window, with the focus in its first box, before a change is "
    "marked") {
    ForEachDialog([](auto& page, const Control& button, const IdTexts& boxes, const IdTexts&) {
        const HWND owner = page.window.Hwnd();
        SetWindowPos(owner, nullptr, 300, 200, 480, 420, SWP_NOZORDER | SWP_NOACTIVATE);
        page.Play(
            button,
            {[&](HWND dialog) {
                 CHECK(page.changes == 0);
                 CHECK(FocusedId() == boxes.front().first);
                 CHECK(GetWindow(dialog, GW_OWNER) == owner);
                 CHECK_FALSE(IsWindowEnabled(owner));
                 RECT inner{};
                 RECT outer{};
                 GetWindowRect(dialog, &inner);
                 GetWindowRect(owner, &outer);
                 CHECK(std::abs(Middle(inner.left, inner.right) - Middle(outer.left, outer.right)) <= 1);
                 CHECK(std::abs(Middle(inner.top, inner.bottom) - Middle(outer.top, outer.bottom)) <= 1);
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
