// The dialogs of the lists, opened again and again: what they leave behind, beside what Windows itself keeps
// of the same templates.
#include <doctest.h>

#include <functional>
#include <string>

#include "lists/resource.h"
#include "tests/lists/banner_page.h"
#include "tests/lists/exclude_page.h"
#include "tests/lists/search_page.h"
#include "tests/long_runs/repetition.h"

namespace {

constexpr int kOpenings = 300;
constexpr int kWarmUps = 4;

INT_PTR CALLBACK BareProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) EndDialog(dialog, 0);
    return message == WM_INITDIALOG ? TRUE : FALSE;
}

// What is kept after many openings.
Resources KeptBy(const std::function<void()>& open) {
    const Impatience user;
    for (int i = 0; i < kWarmUps; ++i)
        open();
    const Resources before = HeldNow();
    for (int i = 0; i < kOpenings; ++i)
        open();
    CHECK(user.Dialogs() >= kOpenings + kWarmUps);
    return HeldNow() - before;
}

template <class Page>
void CheckDialog(const char* what, int resource, Button Page::*button) {
    Page page;
    const Resources bare = KeptBy([&] {
        DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource), page.window.Hwnd(),
                        BareProcedure, 0);
    });
    const DWORD start = GetTickCount();
    CheckKept(what, kOpenings, KeptBy([&] { page.Click(page.*button); }), 0, start, bare);
}

}  // namespace

TEST_CASE("hundreds of openings of each dialog leave no more behind than those of its bare template") {
    CheckDialog<ExcludePage>("openings of the address dialog", IDD_ADD_URL, &ExcludePage::cmdAddURL);
    CheckDialog<BannerPage>("openings of the banner size dialog", IDD_ADD_BANNER_SIZE,
                            &BannerPage::cmdAddSize);
    CheckDialog<SearchPage>("openings of the search address dialog", IDD_ADD_SEARCH,
                            &SearchPage::cmdAddSearch);
}
