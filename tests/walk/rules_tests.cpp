// The rules and messages of the list pages, met by a user of the real manager, and a list too long to look
// at.
#include <doctest.h>

#include "lists/resource.h"
#include "tests/support/shown_text.h"
#include "tests/walk/store_snapshot.h"
#include "tests/walk/user.h"

namespace {

constexpr wchar_t kAddUrl[] = L"Add Web Site URL";
constexpr wchar_t kAddSize[] = L"New Banner Height and Width";
constexpr wchar_t kAddSearch[] = L"Add Search Address";

struct ExcludeRow {
    int removed;
    int selected;
};

}  // namespace

TEST_CASE("the exclude list: an empty address and a listed one are refused, blanks and the scheme are not") {
    User user;
    user.TurnTo(Page::Exclude);
    CHECK_FALSE(user.CanPress(L"cmdRemoveURL"));

    HWND dialog = user.Open(L"cmdAddURL", kAddUrl);
    CHECK(ShownText(GetDlgItem(dialog, IDC_TXTURL)) == L"http://");
    user.Type(dialog, IDC_TXTURL, L"");
    CHECK(user.PressAndRead(dialog, IDOK) == L"Please enter the web site address to exclude.");
    CHECK(WaitUntil([&] { return FocusOf(dialog) == GetDlgItem(dialog, IDC_TXTURL); }));
    user.Close(dialog, IDCANCEL);
    CHECK(user.Excluded().empty());
    CHECK(user.CanPress(L"cmdApply"));

    user.Close(user.Open(L"cmdAddURL", kAddUrl), IDOK);
    dialog = user.Open(L"cmdAddURL", kAddUrl);
    CHECK(user.PressAndRead(dialog, IDOK) ==
          L"The URL you entered already exists in the list, please enter another");
    user.Type(dialog, IDC_TXTURL, L"http:// ");
    user.Close(dialog, IDOK);
    CHECK(user.Excluded() == Rows{L"http://", L"http:// "});
}

TEST_CASE(
    "the exclude list: the row above a removed one is selected, and the last removal disables the button") {
    User user;
    user.TurnTo(Page::Exclude);
    for (const wchar_t* const address : {L"a", L"b", L"c", L"d", L"e", L"f"})
        user.AddExcluded(address);
    CHECK_FALSE(user.CanPress(L"cmdRemoveURL"));

    for (const ExcludeRow& step : {ExcludeRow{3, 2}, {0, 0}, {3, 2}, {2, 1}, {1, 0}, {0, -1}}) {
        CAPTURE(step.removed);
        user.Select(L"lstExclude", step.removed);
        user.Press(L"cmdRemoveURL");
        CHECK(user.SelectedRow(L"lstExclude") == step.selected);
    }
    CHECK(user.Excluded().empty());
    CHECK_FALSE(user.CanPress(L"cmdRemoveURL"));
    CHECK(user.CanPress(L"cmdApply"));
    user.Press(L"cmdApply");
    CHECK(StoredIn(L"Exclude").empty());
}

TEST_CASE("the banner sizes: each refusal has its message, and the first four rows stay") {
    User user;
    user.TurnTo(Page::Banners);
    user.Press(L"cmdRemoveSize");  // nothing is selected
    CHECK_FALSE(user.CanPress(L"cmdApply"));
    for (int row = 0; row < 4; ++row) {
        user.Select(L"lvwBanners", row);
        CHECK(user.PressAndRead(L"cmdRemoveSize") == L"This default setting cannot be deleted.");
    }
    CHECK(user.Banners().size() == 4);
    CHECK_FALSE(user.CanPress(L"cmdApply"));

    const HWND dialog = user.Open(L"cmdAddSize", kAddSize);
    const HWND height = GetDlgItem(dialog, IDC_TXTHEIGHT);
    const HWND width = GetDlgItem(dialog, IDC_TXTWIDTH);
    CHECK(user.PressAndRead(dialog, IDOK) == L"Height must be a number.");
    CHECK(WaitUntil([&] { return FocusOf(dialog) == height; }));
    user.Type(dialog, IDC_TXTHEIGHT, L"x");
    CHECK(ShownText(height).empty());
    user.Type(dialog, IDC_TXTHEIGHT, L"0");
    CHECK(user.PressAndRead(dialog, IDOK) == L"Width must be a number.");
    CHECK(WaitUntil([&] { return FocusOf(dialog) == width; }));
    user.Type(dialog, IDC_TXTWIDTH, L"y");
    CHECK(ShownText(width).empty());
    user.Type(dialog, IDC_TXTWIDTH, L"0");
    CHECK(user.PressAndRead(dialog, IDOK) == L"Height must be a number between 1 and 999.");
    CHECK(WaitUntil([&] { return FocusOf(dialog) == height; }));
    user.Type(dialog, IDC_TXTHEIGHT, L"-20");
    user.Close(dialog, IDOK);
    user.AddBanner(L"90", L"728");
    user.Select(L"lvwBanners", 4);
    user.Press(L"cmdRemoveSize");
    user.AddBanner(L"91", L"729");
    const Rows banners = user.Banners();
    REQUIRE(banners.size() == 6);
    CHECK(banners[4] == L"User Banner 1|728|90|x");
    CHECK(banners[5] == L"User Banner 1|729|91|x");
}

TEST_CASE(
    "the search addresses: each refusal has its message, a cancelled edit changes nothing, all rows go") {
    User user;
    user.TurnTo(Page::Search);
    user.Press(L"cmdEditSearch");  // nothing is selected
    user.Press(L"cmdRemoveSearch");
    CHECK_FALSE(user.CanPress(L"cmdApply"));
    const Rows before = user.Searches();

    const HWND add = user.Open(L"cmdAddSearch", kAddSearch);
    user.Type(add, IDC_TXTURL, L"");
    CHECK(user.PressAndRead(add, IDOK) == L"You need an URL.");
    CHECK(WaitUntil([&] { return FocusOf(add) == GetDlgItem(add, IDC_TXTURL); }));
    user.Type(add, IDC_TXTURL, L"http://");
    CHECK(user.PressAndRead(add, IDOK) == L"You need a Name.");
    CHECK(WaitUntil([&] { return FocusOf(add) == GetDlgItem(add, IDC_TXTNAME); }));
    user.Close(add, IDCANCEL);
    CHECK(user.Searches() == before);
    user.Press(L"cmdApply");

    user.Select(L"lvwSearchURLs", 2);
    const HWND edit = user.Open(L"cmdEditSearch", kAddSearch);
    user.Type(edit, IDC_TXTNAME, L"not kept");
    user.Close(edit, IDCANCEL);
    CHECK(user.Searches() == before);
    CHECK(user.CanPress(L"cmdApply"));

    for (size_t left = before.size(); left > 0; --left) {
        user.Select(L"lvwSearchURLs", 0);
        user.Press(L"cmdRemoveSearch");
        CHECK(user.Searches().size() == left - 1);
    }
    user.Press(L"cmdApply");
    CHECK(StoredIn(L"Search").empty());
    user.KillAndRestart();
    CHECK(user.Searches().empty());
}

TEST_CASE("2,000 exclude rows come back in their order after an addition, a removal and a killed manager") {
    DeleteSettings();
    Rows rows;
    for (int n = 0; n < 2000; ++n) {
        rows.push_back(L"http://site" + std::to_wstring(n * 7919 % 2000) + L".example");
        WriteSetting(L"Exclude", std::to_wstring(n), rows.back());
    }
    User user(true);
    CHECK(user.Excluded() == rows);

    user.TurnTo(Page::Exclude);
    user.AddExcluded(L"http://added.example");
    rows.push_back(L"http://added.example");
    user.Select(L"lstExclude", 3);
    user.Press(L"cmdRemoveURL");
    rows.erase(rows.begin() + 3);
    CHECK(user.Excluded() == rows);
    user.Press(L"cmdApply");
    CHECK_FALSE(user.CanPress(L"cmdApply"));
    CHECK(StoredIn(L"Exclude").size() == 2000);

    user.KillAndRestart();
    CHECK(user.Excluded() == rows);
}
