// The Banners page and its dialog.
#include <doctest.h>

#include "tests/lists/list_pages.h"

namespace {

constexpr int kHeight = IDC_TXTHEIGHT;
constexpr int kWidth = IDC_TXTWIDTH;

}  // namespace

TEST_CASE_FIXTURE(BannerPage,
                  "setting up the columns empties the list, shares its width out and marks no change") {
    for (const int width : {200, 300, 333, 1000}) {
        CAPTURE(width);
        SetWindowPos(lvwBanners.Hwnd(), nullptr, 0, 0, width, 100, SWP_NOMOVE | SWP_NOZORDER);
        AddRow({L"a", L"1", L"2"}, false);
        SetupBannerColumns(lvwBanners);
        CHECK(lvwBanners.Count() == 0);
        for (const auto& [column, share] : {std::pair(0, 0.5), std::pair(1, 0.24), std::pair(2, 0.24)})
            CHECK(ListView_GetColumnWidth(lvwBanners.Hwnd(), column) ==
                  doctest::Approx(share * width).epsilon(0.01));
    }
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(
    BannerPage,
    "an added size is a checked row, named by the rows behind the four defaults, so that after a removal two "
    "rows have one name") {
    AddSize(L"90", L"728");
    CHECK(Row(5) == L"User Banner 0|728|90|x");
    CHECK(changes == 1);
    AddSize(L"1", L"2");
    CHECK(Row(6) == L"User Banner 1|2|1|x");
    CHECK(Row(1) == L"Full Banner|468|60|x");
    lvwBanners.Select(5);
    changes = 0;
    Click(cmdRemoveSize);
    CHECK(lvwBanners.Count() == 5);
    CHECK(changes == 1);
    AddSize(L"3", L"3");
    CHECK(Row(5) == L"User Banner 1|2|1|x");
    CHECK(Row(6) == L"User Banner 1|3|3|x");
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(BannerPage,
                  "a list of fewer than four rows counts on below 0, and its rows are protected as well") {
    lvwBanners.Clear();
    AddSize(L"1", L"2");
    CHECK(Row(1) == L"User Banner -4|2|1|x");
    lvwBanners.Select(1);
    Click(cmdRemoveSize);
    CHECK(lvwBanners.Count() == 1);
    CHECK(recorder.messages.size() == 1);
}

TEST_CASE_FIXTURE(
    BannerPage,
    "the rows at the first four positions cannot be deleted; without a selected row Remove Size "
    "does nothing") {
    AddRow({L"fifth", L"1", L"2"}, true);
    Click(cmdRemoveSize);
    CHECK(recorder.messages.empty());
    for (int position = 1; position <= 4; ++position) {
        recorder.messages.clear();
        lvwBanners.Select(position);
        Click(cmdRemoveSize);
        CheckMessage(L"This default setting cannot be deleted.", MB_ICONINFORMATION, window.Hwnd());
    }
    CHECK(lvwBanners.Count() == 5);
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(
    BannerPage, "ticking and clearing a default row's box marks a change, with the keyboard and the mouse") {
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

TEST_CASE_FIXTURE(BannerPage,
                  "filling the list from code marks no change, and keeps a name of a thousand characters") {
    const std::wstring name(1000, L'n');
    AddRow({name, name, L"1"}, true);
    lvwBanners.Checked(5, false);
    CHECK(Row(5) == name + L'|' + name + L"|1");
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(BannerPage, "sizes that are not numbers, and the height 0, are refused in a fixed order") {
    struct Refusal {
        const wchar_t* height;
        const wchar_t* width;
        const wchar_t* message;
        int focus;
    };
    constexpr Refusal kRefusals[] = {
        {L"", L"", L"Height must be a number.", kHeight},
        {L"", L"5", L"Height must be a number.", kHeight},
        {L"5", L"", L"Width must be a number.", kWidth},
        {L"5", L"x", L"Width must be a number.", kWidth},
        {L"0", L"", L"Width must be a number.", kWidth},
        {L"0", L"5", L"Height must be a number between 1 and 999.", kHeight},
        {L"0.0", L"5", L"Height must be a number between 1 and 999.", kHeight},
        {L"-0", L"0", L"Height must be a number between 1 and 999.", kHeight},
        {L"0e5", L"5", L"Height must be a number between 1 and 999.", kHeight},
    };
    for (const Refusal& refusal : kRefusals) {
        CAPTURE(std::wstring(refusal.height));
        CAPTURE(std::wstring(refusal.width));
        CheckRefused(cmdAddSize, {{kHeight, refusal.height}, {kWidth, refusal.width}}, refusal.message, 0,
                     refusal.focus);
    }
    CHECK(lvwBanners.Count() == 4);
    // What is mended is accepted.
    Play(cmdAddSize, {[](HWND dialog) {
                          TypeText(dialog, kHeight, L"0");
                          TypeText(dialog, kWidth, L"0");
                          ClickButton(dialog, IDOK);
                          TypeText(dialog, kHeight, L"10");
                      },
                      kOK});
    CHECK(Row(5) == L"User Banner 0|0|10|x");
}

TEST_CASE_FIXTURE(
    BannerPage,
    "the bounds that the messages name are not enforced: a height of 1500 or -20, a width of 0 are "
    "accepted as typed") {
    recorder.messages.clear();
    for (const wchar_t* const height : {L"1500", L"-20", L"0.5", L"1e3", L" 7 "}) {
        for (const wchar_t* const width : {L"0", L"-1", L"12345", L"0.25"}) {
            AddSize(height, width);
            CHECK(lvwBanners.SubItem(lvwBanners.Count(), 2) == height);
            CHECK(lvwBanners.SubItem(lvwBanners.Count(), 1) == width);
        }
    }
    CHECK(lvwBanners.Count() == 24);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(
    BannerPage,
    "what is no number empties the height at every change of its text, the width when a key is released") {
    Play(cmdAddSize, {[](HWND dialog) {
                          TypeKeys(dialog, kHeight, L"12");
                          CHECK(TextIn(dialog, kHeight) == L"12");
                          SendDlgItemMessageW(dialog, kHeight, WM_CHAR, L'x', 1);
                          CHECK(TextIn(dialog, kHeight).empty());
                          TypeKeys(dialog, kHeight, L"7");
                          CHECK(TextIn(dialog, kHeight) == L"7");
                          TypeText(dialog, kHeight, L"pasted");
                          CHECK(TextIn(dialog, kHeight).empty());
                          SetDlgItemTextW(dialog, kHeight, L"set");
                          CHECK(TextIn(dialog, kHeight).empty());

                          TypeKeys(dialog, kWidth, L"12");
                          CHECK(TextIn(dialog, kWidth) == L"12");
                          SendDlgItemMessageW(dialog, kWidth, WM_KEYDOWN, 'X', 1);
                          SendDlgItemMessageW(dialog, kWidth, WM_CHAR, L'x', 1);
                          CHECK(TextIn(dialog, kWidth) == L"12x");
                          SendDlgItemMessageW(dialog, kWidth, WM_KEYUP, 'X', 1);
                          CHECK(TextIn(dialog, kWidth).empty());
                          TypeText(dialog, kWidth, L"pasted");
                          SendDlgItemMessageW(dialog, kHeight, WM_KEYUP, VK_LEFT, 1);
                          CHECK(TextIn(dialog, kWidth) == L"pasted");
                          SendDlgItemMessageW(dialog, kWidth, WM_SYSKEYUP, VK_F10, 1);
                          CHECK(TextIn(dialog, kWidth).empty());

                          TypeText(dialog, kHeight, L"-1.5e2");
                          TypeText(dialog, kWidth, L"-1.5e2");
                          SendDlgItemMessageW(dialog, kWidth, WM_KEYUP, VK_LEFT, 1);
                          CHECK(TextIn(dialog, kHeight) == L"-1.5e2");
                          CHECK(TextIn(dialog, kWidth) == L"-1.5e2");
                      },
                      kCancel});
}
