// The spin controls of the speed and the pause.
#include <string>

#include "tests/support/other_process.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

// An arrow key in the text box.
void PressKey(const TextBox& box, bool up) {
    const WPARAM key = up ? VK_UP : VK_DOWN;
    SendMessageW(box.Hwnd(), WM_KEYDOWN, key, 1);
    SendMessageW(box.Hwnd(), WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
}

struct Spin {
    UpDown& arrows;
    TextBox& box;
    int minimum;
    int maximum;
};

}  // namespace

TEST_CASE("the arrows step by 1, by mouse and by key, and stop at the ends") {
    SettingsWindow page;
    ShowWindow(page.window.Hwnd(), SW_SHOW);
    for (const Spin& spin :
         {Spin{page.udbSpeed, page.txtSpeed, 1, 10}, Spin{page.udbPause, page.txtPause, 1, 30}}) {
        for (const bool byKey : {false, true}) {
            CAPTURE(std::wstring(spin.box.Name()));
            CAPTURE(byKey);
            const auto step = [&](bool up) {
                byKey ? PressKey(spin.box, up) : ClickArrow(spin.arrows.Hwnd(), up);
            };
            spin.box.Text(std::to_wstring(spin.minimum));
            for (int value = spin.minimum; value <= spin.maximum + 2; ++value) {
                CHECK(spin.box.Text() == std::to_wstring(std::min(value, spin.maximum)));
                step(true);
            }
            for (int value = spin.maximum; value >= spin.minimum - 2; --value) {
                CHECK(spin.box.Text() == std::to_wstring(std::max(value, spin.minimum)));
                step(false);
            }
        }
    }
}

TEST_CASE(
    "a step starts from what was typed, after letters or an empty box from the last one, and ends in the "
    "range") {
    struct Row {
        const wchar_t* typed;
        const wchar_t* afterUp;
        const wchar_t* afterDown;
    };
    const Row rows[] = {
        {L"4", L"5", L"3"},     {L"2.5", L"3", L"1"},         {L"3.5", L"5", L"3"}, {L"99", L"10", L"10"},
        {L"11", L"10", L"10"},  {L"0", L"1", L"1"},           {L"-5", L"1", L"1"},  {L"10", L"10", L"9"},
        {L"1e9", L"10", L"10"}, {L"99999999999", L"7", L"5"}, {L"", L"7", L"5"},    {L"fast", L"7", L"5"},
        {L" ", L"7", L"5"},
    };
    SettingsWindow page;
    ShowWindow(page.window.Hwnd(), SW_SHOW);
    for (const Row& row : rows) {
        CAPTURE(std::wstring(row.typed));
        for (const bool up : {true, false}) {
            // The last step ends at 6, which is where a text that is no number starts from.
            page.txtSpeed.Text(L"5");
            ClickArrow(page.udbSpeed.Hwnd(), true);
            TypeInto(page.txtSpeed.Hwnd(), row.typed);
            CHECK(page.txtSpeed.Text() == row.typed);
            ClickArrow(page.udbSpeed.Hwnd(), up);
            CHECK(page.txtSpeed.Text() == (up ? row.afterUp : row.afterDown));
        }
    }
}

TEST_CASE("after a load an emptied box goes on from the loaded value, and the load is no change") {
    SettingsWindow page;
    ShowWindow(page.window.Hwnd(), SW_SHOW);
    int changes = 0;
    page.udbPause.Change = [&] { ++changes; };
    page.udbSpeed.Change = [&] { ++changes; };
    page.Store(L"txtPause", L"12000");
    page.Store(L"txtSpeed", L"1000");
    page.transfer.LoadSettings();
    CHECK(changes == 0);
    const long speed = ToLong(Variant(page.txtSpeed.Text()));
    for (TextBox* const box : {&page.txtPause, &page.txtSpeed})
        TypeInto(box->Hwnd(), L"");
    ClickArrow(page.udbPause.Hwnd(), true);
    CHECK(page.txtPause.Text() == L"13");
    ClickArrow(page.udbSpeed.Hwnd(), false);
    CHECK(page.txtSpeed.Text() == std::to_wstring(speed - 1));
    CHECK(changes == 2);
    // The next load counts as much as the first.
    page.transfer.LoadSettings();
    TypeInto(page.txtPause.Hwnd(), L"");
    ClickArrow(page.udbPause.Hwnd(), false);
    CHECK(page.txtPause.Text() == L"11");
    // From beyond the range the end of the range.
    page.Store(L"txtPause", L"90000");
    page.transfer.LoadSettings();
    CHECK(page.txtPause.Text() == L"90");
    TypeInto(page.txtPause.Hwnd(), L"");
    ClickArrow(page.udbPause.Hwnd(), false);
    CHECK(page.txtPause.Text() == L"29");
}

TEST_CASE("the pause takes no more than 3 typed characters") {
    SettingsWindow page;
    TypeInto(page.txtPause.Hwnd(), L"12345");
    CHECK(page.txtPause.Text() == L"123");
}

TEST_CASE("the arrows mark a change, typing does not, and neither does an arrow at its end") {
    for (const bool speed : {true, false}) {
        for (const bool byKey : {false, true}) {
            CAPTURE(speed);
            CAPTURE(byKey);
            SettingsWindow page;
            ShowWindow(page.window.Hwnd(), SW_SHOW);
            UpDown& spin = speed ? page.udbSpeed : page.udbPause;
            TextBox& box = speed ? page.txtSpeed : page.txtPause;
            const auto stepUp = [&] { byKey ? PressKey(box, true) : ClickArrow(spin.Hwnd(), true); };
            TypeInto(box.Hwnd(), speed ? L"10" : L"30");
            CHECK_FALSE(page.cmdApply.Enabled());
            stepUp();
            CHECK_FALSE(page.cmdApply.Enabled());
            TypeInto(box.Hwnd(), L"3");
            CHECK_FALSE(page.cmdApply.Enabled());
            stepUp();
            CHECK(page.cmdApply.Enabled());
        }
    }
}
