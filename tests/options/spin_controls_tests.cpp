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

struct Page : SettingsWindow {
    Page() { ShowWindow(window.Hwnd(), SW_SHOW); }

    const Spin spins[2]{{udbSpeed, txtSpeed, 1, 10}, {udbPause, txtPause, 1, 30}};
};

void Step(const Spin& spin, bool byKey, bool up) {
    byKey ? PressKey(spin.box, up) : ClickArrow(spin.arrows.Hwnd(), up);
}

}  // namespace

TEST_CASE_FIXTURE(Page,
                  "the arrows step by 1, by mouse and by key, and stop at the ends; a step marks a change, "
                  "typing does not, and neither does an arrow at its end") {
    for (const Spin& spin : spins) {
        for (const bool byKey : {false, true}) {
            CAPTURE(std::wstring(spin.box.Name()));
            CAPTURE(byKey);
            TypeInto(spin.box.Hwnd(), std::to_wstring(spin.minimum));
            for (int value = spin.minimum; value <= spin.maximum + 2; ++value) {
                CHECK(spin.box.Text() == std::to_wstring(std::min(value, spin.maximum)));
                cmdApply.Enabled(false);
                Step(spin, byKey, true);
                CHECK(cmdApply.Enabled() == (value < spin.maximum));
            }
            TypeInto(spin.box.Hwnd(), std::to_wstring(spin.maximum));
            CHECK_FALSE(cmdApply.Enabled());
            for (int value = spin.maximum; value >= spin.minimum - 2; --value) {
                CHECK(spin.box.Text() == std::to_wstring(std::max(value, spin.minimum)));
                Step(spin, byKey, false);
            }
        }
    }
}

TEST_CASE_FIXTURE(
    Page,
    "a step starts from what was typed, after letters or an empty box from the last one, and ends in the "
    "range") {
    // A text that is no number starts from where the last step ended, at 6.
    const std::tuple<std::wstring, const wchar_t*, const wchar_t*> rows[] = {
        {L"4", L"5", L"3"},     {L"2.5", L"3", L"1"},  {L"3.5", L"5", L"3"},         {L"99", L"10", L"10"},
        {L"11", L"10", L"10"},  {L"0", L"1", L"1"},    {L"-5", L"1", L"1"},          {L"10", L"10", L"9"},
        {L"1e9", L"10", L"10"}, {L"fast", L"7", L"5"}, {L"99999999999", L"7", L"5"}, {L"", L"7", L"5"},
        {L" ", L"7", L"5"},
    };
    for (const auto& [typed, afterUp, afterDown] : rows) {
        CAPTURE(typed);
        for (const bool up : {true, false}) {
            txtSpeed.Text(L"5");
            ClickArrow(udbSpeed.Hwnd(), true);
            TypeInto(txtSpeed.Hwnd(), typed);
            CHECK(txtSpeed.Text() == typed);
            ClickArrow(udbSpeed.Hwnd(), up);
            CHECK(txtSpeed.Text() == (up ? afterUp : afterDown));
        }
    }
}

TEST_CASE_FIXTURE(Page,
                  "after a load an emptied box goes on from the loaded value, and the load is no change") {
    // From beyond the range it goes on from the end of the range.
    const std::tuple<Spin, std::wstring, bool, const wchar_t*> rows[] = {{spins[1], L"12000", true, L"13"},
                                                                         {spins[1], L"12000", false, L"11"},
                                                                         {spins[1], L"90000", false, L"29"},
                                                                         {spins[0], L"1000", false, L"5"}};
    for (const auto& [spin, stored, up, after] : rows) {
        CAPTURE(stored);
        CAPTURE(up);
        cmdApply.Enabled(false);
        Store(std::wstring(spin.box.Name()), stored);
        transfer.LoadSettings();
        CHECK_FALSE(cmdApply.Enabled());
        TypeInto(spin.box.Hwnd(), L"");
        Step(spin, false, up);
        CHECK(spin.box.Text() == after);
        CHECK(cmdApply.Enabled());
    }
}

TEST_CASE_FIXTURE(Page, "the pause takes no more than 3 typed characters") {
    TypeInto(txtPause.Hwnd(), L"12345");
    CHECK(txtPause.Text() == L"123");
}
