// The dialogs of the lists, opened again and again: what they leave behind.
#include <doctest.h>

#include <string>

#include "lists/resource.h"
#include "tests/lists/banner_page.h"
#include "tests/lists/exclude_page.h"
#include "tests/lists/search_page.h"
#include "tests/long_runs/repetition.h"

namespace {

constexpr int kOpenings = 1000;

template <class Page>
void RunDialog(const char* what, Button Page::*button) {
    Page page;
    const Impatience user;
    for (int i = 0; i < 4; ++i)
        page.Click(page.*button);
    const DWORD start = GetTickCount();
    const Resources before = HeldNow();
    for (int i = 0; i < kOpenings; ++i)
        page.Click(page.*button);
    CHECK(user.Dialogs() >= kOpenings + 4);
    CheckKept(what, kOpenings, before, 0, start);
}

}  // namespace

TEST_CASE("a thousand openings of each dialog leave nothing behind") {
    // What Windows itself keeps of the same templates, without any of the program behind them.
    for (const int id : {IDD_ADD_URL, IDD_ADD_BANNER_SIZE, IDD_ADD_SEARCH}) {
        const auto open = [&] {
            DestroyWindow(
                CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id), nullptr, nullptr, 0));
        };
        open();
        const DWORD start = GetTickCount();
        const Resources before = HeldNow();
        for (int i = 0; i < kOpenings; ++i)
            open();
        CheckKept("bare openings of template " + std::to_string(id), kOpenings, before, 0, start);
    }
    RunDialog("openings of the address dialog", &ExcludePage::cmdAddURL);
    RunDialog("openings of the banner size dialog", &BannerPage::cmdAddSize);
    RunDialog("openings of the search address dialog", &SearchPage::cmdAddSearch);
}
