// The Banners page and its dialog.
#include <doctest.h>

#include "tests/lists/list_pages.h"

namespace {

constexpr int kHeight = IDC_TXTHEIGHT;
constexpr int kWidth = IDC_TXTWIDTH;

}  // namespace

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
    Select(lvwBanners, 5);
    changes = 0;
    Click(cmdRemoveSize);
    CHECK(lvwBanners.Count() == 5);
    CHECK(changes == 1);
    AddSize(L"3", L"3");
    CHECK(Row(5) == L"User Banner 1|2|1|x");
    CHECK(Row(6) == L"User Banner 1|3|3|x");
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(
    BannerPage,
    "the rows at the first four positions, whatever they are, cannot be deleted; without a selected row "
    "Remove Size does nothing; a list of fewer rows counts on below 0") {
    AddRow(lvwBanners, L"User Banner 0|1|2|x");
    Click(cmdRemoveSize);
    CHECK(recorder.messages.empty());
    for (int position = 1; position <= 4; ++position) {
        recorder.messages.clear();
        Select(lvwBanners, position);
        Click(cmdRemoveSize);
        CheckMessage(L"This default setting cannot be deleted.", MB_ICONINFORMATION, window.Hwnd());
    }
    CHECK(lvwBanners.Count() == 5);
    CHECK(changes == 0);
    lvwBanners.Clear();
    AddSize(L"1", L"2");
    CHECK(Row(1) == L"User Banner -4|2|1|x");
    recorder.messages.clear();
    Select(lvwBanners, 1);
    Click(cmdRemoveSize);
    CHECK(lvwBanners.Count() == 1);
    CHECK(recorder.messages.size() == 1);
}

TEST_CASE_FIXTURE(BannerPage, "a row keeps texts of a thousand characters") {
    const std::wstring text(1000, L'n');
    AddRow(lvwBanners, text + L'|' + text + L"|1");
    CHECK(Row(5) == text + L'|' + text + L"|1");
}

TEST_CASE_FIXTURE(BannerPage, "sizes that are not numbers, and the height 0, are refused in a fixed order") {
    const std::tuple<std::wstring, std::wstring, const wchar_t*, int> refusals[] = {
        {L"", L"", L"Height must be a number.", kHeight},
        {L"", L"5", L"Height must be a number.", kHeight},
        {L"5", L"", L"Width must be a number.", kWidth},
        {L"0", L"x", L"Width must be a number.", kWidth},
        {L"0", L"5", L"Height must be a number between 1 and 999.", kHeight},
        {L"0.0", L"5", L"Height must be a number between 1 and 999.", kHeight},
        {L"-0", L"0", L"Height must be a number between 1 and 999.", kHeight},
    };
    for (const auto& [height, width, message, focus] : refusals) {
        CAPTURE(height);
        CAPTURE(width);
        CheckRefused(cmdAddSize, {{kHeight, height}, {kWidth, width}}, message, 0, focus);
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
    for (const auto& [height, width] : {std::pair(L"1500", L"0"),
                                        {L"-20", L"-1"},
                                        {L"0.5", L"12345"},
                                        {L"1e3", L"0.25"},
                                        {L" 7 ", L" 7 "}}) {
        AddSize(height, width);
        CHECK(lvwBanners.SubItem(lvwBanners.Count(), 2) == height);
        CHECK(lvwBanners.SubItem(lvwBanners.Count(), 1) == width);
    }
    CHECK(lvwBanners.Count() == 9);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(
    BannerPage,
    "what is no number empties the height at every change of its text, the width when a key is released") {
    Play(cmdAddSize, {[](HWND dialog) {
                          const auto height = [dialog] { return TextIn(dialog, kHeight); };
                          const auto width = [dialog] { return TextIn(dialog, kWidth); };
                          TypeKeys(dialog, kHeight, L"12");
                          CHECK(height() == L"12");
                          SendDlgItemMessageW(dialog, kHeight, WM_CHAR, L'x', 1);
                          CHECK(height().empty());
                          TypeKeys(dialog, kHeight, L"7");
                          CHECK(height() == L"7");
                          TypeText(dialog, kHeight, L"pasted");
                          CHECK(height().empty());

                          TypeKeys(dialog, kWidth, L"12");
                          CHECK(width() == L"12");
                          SendDlgItemMessageW(dialog, kWidth, WM_CHAR, L'x', 1);
                          CHECK(width() == L"12x");
                          SendDlgItemMessageW(dialog, kWidth, WM_KEYUP, 'X', 1);
                          CHECK(width().empty());
                          TypeText(dialog, kWidth, L"pasted");
                          SendDlgItemMessageW(dialog, kHeight, WM_KEYUP, VK_LEFT, 1);
                          CHECK(width() == L"pasted");
                          SendDlgItemMessageW(dialog, kWidth, WM_SYSKEYUP, VK_F10, 1);
                          CHECK(width().empty());

                          for (const int box : {kHeight, kWidth}) {
                              TypeText(dialog, box, L"-1.5e2");
                              SendDlgItemMessageW(dialog, box, WM_KEYUP, VK_LEFT, 1);
                              CHECK(TextIn(dialog, box) == L"-1.5e2");
                          }
                      },
                      kCancel});
}
