#include <doctest.h>

#include "lists/message.h"
#include "platform/com/variant.h"
#include "tests/lists/banner_page.h"
#include "tests/support/shown_text.h"

namespace {

constexpr int kHeight = IDC_ADD_BANNER_SIZE_HEIGHT;
constexpr int kWidth = IDC_ADD_BANNER_SIZE_WIDTH;

const DialogScript::Step kOK = [](HWND dialog) { ClickButton(dialog, IDOK); };
const DialogScript::Step kCancel = [](HWND dialog) { ClickButton(dialog, IDCANCEL); };

// A size that is refused: with which message, and where the focus goes.
struct Refusal {
    const wchar_t* height;
    const wchar_t* width;
    const wchar_t* message;
    int focus;
};

}  // namespace

TEST_CASE_FIXTURE(BannerPage, "the dialog of a new size opens with empty boxes and the focus in the height") {
    Add({[this](HWND dialog) {
             CHECK(changes == 0);
             wchar_t caption[64]{};
             GetWindowTextW(dialog, caption, 64);
             CHECK(std::wstring(caption) == L"New Banner Height and Width");
             CHECK(TextIn(dialog, IDC_ADD_BANNER_SIZE_LABEL) ==
                   L"Adding a size will hide images and tables of this size.");
             CHECK(TextIn(dialog, IDC_ADD_BANNER_SIZE_HEIGHT_LABEL) == L"Height:");
             CHECK(TextIn(dialog, IDC_ADD_BANNER_SIZE_WIDTH_LABEL) == L"Width:");
             CHECK(TextIn(dialog, kHeight).empty());
             CHECK(TextIn(dialog, kWidth).empty());
             CHECK(TextIn(dialog, IDOK) == L"OK");
             CHECK(TextIn(dialog, IDCANCEL) == L"Cancel");
             CHECK(FocusedId() == kHeight);
         },
         kCancel});
}

TEST_CASE_FIXTURE(BannerPage, "sizes that are not numbers, and the height 0, are refused in a fixed order") {
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
        recorder.messages.clear();
        Add({[&](HWND dialog) {
                 TypeText(dialog, kHeight, refusal.height);
                 TypeText(dialog, kWidth, refusal.width);
                 SetFocus(GetDlgItem(dialog, IDCANCEL));
                 ClickButton(dialog, IDOK);
                 REQUIRE(recorder.messages.size() == 1);
                 CHECK(recorder.messages[0].text == refusal.message);
                 CHECK(recorder.messages[0].title == kApplicationTitle);
                 CHECK(recorder.messages[0].type == MB_OK);
                 CHECK(recorder.messages[0].owner == dialog);
                 CHECK(FocusedId() == refusal.focus);
                 CHECK(IsWindow(dialog));
             },
             kCancel});
    }
    CHECK(lvwBanners.Count() == 4);
}

TEST_CASE_FIXTURE(BannerPage, "the bounds that the messages name are not enforced") {
    for (const wchar_t* const height : {L"1500", L"-20", L"0.5", L"1e3", L" 7 "}) {
        for (const wchar_t* const width : {L"0", L"-1", L"12345", L"0.25"}) {
            AddSize(height, width);
            const int last = lvwBanners.Count();
            CHECK(lvwBanners.SubItem(last, 2) == height);
            CHECK(lvwBanners.SubItem(last, 1) == width);
        }
    }
    CHECK(lvwBanners.Count() == 24);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(BannerPage, "a letter typed into the height empties the box at once") {
    Add({[](HWND dialog) {
             TypeKeys(dialog, kHeight, L"12");
             CHECK(TextIn(dialog, kHeight) == L"12");
             SendDlgItemMessageW(dialog, kHeight, WM_CHAR, L'x', 1);
             CHECK(TextIn(dialog, kHeight).empty());
             TypeKeys(dialog, kHeight, L"7");
             CHECK(TextIn(dialog, kHeight) == L"7");
         },
         kCancel});
}

TEST_CASE_FIXTURE(BannerPage, "a letter typed into the width empties the box when the key is released") {
    Add({[](HWND dialog) {
             TypeKeys(dialog, kWidth, L"12");
             CHECK(TextIn(dialog, kWidth) == L"12");
             SendDlgItemMessageW(dialog, kWidth, WM_KEYDOWN, 'X', 1);
             SendDlgItemMessageW(dialog, kWidth, WM_CHAR, L'x', 1);
             CHECK(TextIn(dialog, kWidth) == L"12x");
             SendDlgItemMessageW(dialog, kWidth, WM_KEYUP, 'X', 1);
             CHECK(TextIn(dialog, kWidth).empty());
         },
         kCancel});
}

TEST_CASE_FIXTURE(BannerPage, "the height looks at every change of its text, the width at keys alone") {
    Add({[](HWND dialog) {
             TypeText(dialog, kHeight, L"pasted");
             CHECK(TextIn(dialog, kHeight).empty());
             SetDlgItemTextW(dialog, kHeight, L"set");
             CHECK(TextIn(dialog, kHeight).empty());
             TypeText(dialog, kWidth, L"pasted");
             CHECK(TextIn(dialog, kWidth) == L"pasted");
             SendDlgItemMessageW(dialog, kHeight, WM_KEYUP, VK_LEFT, 1);
             CHECK(TextIn(dialog, kWidth) == L"pasted");
             SendDlgItemMessageW(dialog, kWidth, WM_KEYUP, VK_LEFT, 1);
             CHECK(TextIn(dialog, kWidth).empty());
             TypeText(dialog, kWidth, L"again");
             SendDlgItemMessageW(dialog, kWidth, WM_SYSKEYUP, VK_F10, 1);
             CHECK(TextIn(dialog, kWidth).empty());
         },
         kCancel});
}

TEST_CASE_FIXTURE(BannerPage, "a key that leaves a number leaves the boxes alone") {
    Add({[](HWND dialog) {
             TypeText(dialog, kHeight, L"-1.5e2");
             TypeText(dialog, kWidth, L"-1.5e2");
             SendDlgItemMessageW(dialog, kWidth, WM_KEYUP, VK_LEFT, 1);
             CHECK(TextIn(dialog, kHeight) == L"-1.5e2");
             CHECK(TextIn(dialog, kWidth) == L"-1.5e2");
         },
         kCancel});
}

TEST_CASE_FIXTURE(BannerPage, "Cancel adds no size and yet marks a change") {
    Add({[](HWND dialog) { TypeText(dialog, kHeight, L"5"); }, kCancel});
    CHECK(lvwBanners.Count() == 4);
    CHECK(changes == 1);
}

TEST_CASE_FIXTURE(BannerPage,
                  "Enter presses OK in the dialog of a new size, Esc and the close box cancel it") {
    SUBCASE("Enter") {
        Add({[](HWND dialog) {
            TypeText(dialog, kHeight, L"5");
            TypeText(dialog, kWidth, L"6");
            PostKey(VK_RETURN);
        }});
        CHECK(lvwBanners.Count() == 5);
    }
    SUBCASE("Esc") {
        Add({[](HWND) { PostKey(VK_ESCAPE); }});
        CHECK(lvwBanners.Count() == 4);
    }
    SUBCASE("close box") {
        Add({[](HWND dialog) { PostMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0); }});
        CHECK(lvwBanners.Count() == 4);
    }
    CHECK(changes == 1);
}

TEST_CASE_FIXTURE(BannerPage, "the tab key goes from the height to the width, OK and Cancel") {
    Add({[](HWND) { PostKey(VK_TAB); },
         [](HWND) {
             CHECK(FocusedId() == kWidth);
             PostKey(VK_TAB);
         },
         [](HWND) {
             CHECK(FocusedId() == IDOK);
             PostKey(VK_TAB);
         },
         [](HWND) { CHECK(FocusedId() == IDCANCEL); }, kCancel});
}

TEST_CASE_FIXTURE(BannerPage, "after a refusal the size can be mended and is then accepted") {
    Add({[](HWND dialog) {
             TypeText(dialog, kHeight, L"0");
             TypeText(dialog, kWidth, L"0");
             ClickButton(dialog, IDOK);
             TypeText(dialog, kHeight, L"10");
         },
         kOK});
    CHECK(Row(5) == L"User Banner 0|0|10|True");
}
