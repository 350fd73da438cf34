#include <doctest.h>

#include "lists/message.h"
#include "tests/lists/banner_page.h"
#include "tests/support/shown_text.h"

TEST_CASE_FIXTURE(BannerPage, "setting up the columns empties the list and shares its width out") {
    for (const int width : {200, 300, 333, 1000}) {
        CAPTURE(width);
        SetWindowPos(lvwBanners.Hwnd(), nullptr, 0, 0, width, 100, SWP_NOMOVE | SWP_NOZORDER);
        AddRow(L"a", L"1", L"2", false);
        SetupBannerColumns(lvwBanners);
        CHECK(lvwBanners.Count() == 0);
        CHECK(ListView_GetColumnWidth(lvwBanners.Hwnd(), 0) == doctest::Approx(0.5 * width).epsilon(0.01));
        CHECK(ListView_GetColumnWidth(lvwBanners.Hwnd(), 1) == doctest::Approx(0.24 * width).epsilon(0.01));
        CHECK(ListView_GetColumnWidth(lvwBanners.Hwnd(), 2) == doctest::Approx(0.24 * width).epsilon(0.01));
    }
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(BannerPage, "added sizes are checked rows at the end, named and numbered from 0") {
    AddSize(L"90", L"728");
    REQUIRE(lvwBanners.Count() == 5);
    CHECK(Row(5) == L"User Banner 0|728|90|True");
    CHECK(changes == 1);
    AddSize(L"1", L"2");
    REQUIRE(lvwBanners.Count() == 6);
    CHECK(Row(6) == L"User Banner 1|2|1|True");
    CHECK(changes == 2);
    CHECK(Row(1) == L"Full Banner|468|60|True");
}

TEST_CASE_FIXTURE(BannerPage, "after a deletion a name can come a second time") {
    AddSize(L"1", L"1");
    AddSize(L"2", L"2");
    lvwBanners.Select(5);
    Click(cmdRemoveSize);
    CHECK(lvwBanners.Count() == 5);
    AddSize(L"3", L"3");
    CHECK(Row(5) == L"User Banner 1|2|2|True");
    CHECK(Row(6) == L"User Banner 1|3|3|True");
}

TEST_CASE_FIXTURE(BannerPage, "a list of fewer than four rows counts on below 0") {
    lvwBanners.Clear();
    AddSize(L"1", L"2");
    CHECK(Row(1) == L"User Banner -4|2|1|True");
}

TEST_CASE_FIXTURE(BannerPage, "the rows at the first four positions cannot be deleted") {
    AddSize(L"1", L"1");
    changes = 0;
    for (int position = 1; position <= 4; ++position) {
        recorder.messages.clear();
        lvwBanners.Select(position);
        Click(cmdRemoveSize);
        CHECK(lvwBanners.Count() == 5);
        REQUIRE(recorder.messages.size() == 1);
        CHECK(recorder.messages[0].text == L"This default setting cannot be deleted.");
        CHECK(recorder.messages[0].title == kApplicationTitle);
        CHECK(recorder.messages[0].type == (MB_OK | MB_ICONINFORMATION));
        CHECK(recorder.messages[0].owner == window.Hwnd());
    }
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(BannerPage, "the protection is by position, whatever stands there") {
    lvwBanners.Clear();
    AddRow(L"mine", L"1", L"2", true);
    lvwBanners.Select(1);
    Click(cmdRemoveSize);
    CHECK(lvwBanners.Count() == 1);
    CHECK(recorder.messages.size() == 1);
}

TEST_CASE_FIXTURE(BannerPage, "a row behind the fourth is removed and marks a change") {
    AddRow(L"fifth", L"1", L"2", true);
    AddRow(L"sixth", L"1", L"2", true);
    lvwBanners.Select(5);
    changes = 0;
    Click(cmdRemoveSize);
    CHECK(lvwBanners.Count() == 5);
    CHECK(lvwBanners.Text(5) == L"sixth");
    CHECK(changes == 1);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(BannerPage, "Remove Size without a selected row does nothing") {
    AddRow(L"fifth", L"1", L"2", true);
    Click(cmdRemoveSize);
    CHECK(lvwBanners.Count() == 5);
    CHECK(changes == 0);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(BannerPage,
                  "ticking and clearing a row's box marks a change, with the keyboard and the mouse") {
    REQUIRE(changes == 0);
    lvwBanners.Select(2);
    CHECK(changes == 0);
    SendMessageW(lvwBanners.Hwnd(), WM_KEYDOWN, VK_SPACE, 1);
    CHECK(lvwBanners.Checked(2));
    CHECK(changes == 1);
    RECT icon{};
    ListView_GetItemRect(lvwBanners.Hwnd(), 1, &icon, LVIR_BOUNDS);
    const LPARAM box = MAKELPARAM(icon.left + 8, (icon.top + icon.bottom) / 2);
    PostMessageW(lvwBanners.Hwnd(), WM_LBUTTONUP, 0, box);
    SendMessageW(lvwBanners.Hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, box);
    CHECK_FALSE(lvwBanners.Checked(2));
    CHECK(changes == 2);
}

TEST_CASE_FIXTURE(BannerPage, "filling the list from code marks no change") {
    AddRow(L"fifth", L"1", L"2", true);
    lvwBanners.Checked(5, false);
    SetupBannerColumns(lvwBanners);
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(BannerPage, "a name of a thousand characters is kept whole") {
    const std::wstring name(1000, L'n');
    AddRow(name.c_str(), name.c_str(), L"1", false);
    CHECK(Row(5) == name + L'|' + name + L"|1|False");
}
