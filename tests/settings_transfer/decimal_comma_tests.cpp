// A user whose decimal separator is a comma. Conversions may keep the separators of the user's locale for the
// life of the process, so that this runs in a process of its own.
#include <doctest.h>

#include "tests/support/alone.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"
#include "tests/support/user_locale.h"

TEST_CASE("with a decimal comma a stored pause of 2500 shows 2,5, and a text is a number with one") {
    const Separators comma(L",", L".");
    CheckAlone("alone: a user whose decimal separator is a comma");
}

TEST_CASE_FIXTURE(SettingsWindow, "alone: a user whose decimal separator is a comma" * doctest::skip(true)) {
    const std::tuple<std::wstring, const wchar_t*, const wchar_t*> rows[] = {{L"3500", L"3,5", L"4000"},
                                                                             {L"60", L"0,06", L"0"},
                                                                             {L"12000", L"12", L"12000"},
                                                                             {L"2500", L"2,5", L"2000"}};
    for (const auto& [stored, shown, saved] : rows) {
        CAPTURE(stored);
        Store(L"txtPause", stored);
        transfer.LoadSettings();
        CHECK(txtPause.Text() == shown);
        transfer.SaveSettings();
        CHECK(Stored(L"txtPause") == saved);
    }
    // A step goes on from the rounded value.
    NMUPDOWN up{{udbPause.Hwnd(), static_cast<UINT_PTR>(udbPause.Id()), UDN_DELTAPOS}, 0, 1};
    SendMessageW(window.Hwnd(), WM_NOTIFY, up.hdr.idFrom, reinterpret_cast<LPARAM>(&up));
    CHECK(txtPause.Text() == L"3");

    CHECK(IsNumeric(L"1,5"));
    CHECK_FALSE(IsNumeric(L"1,5,5"));
    CHECK(ToDouble(Variant(L"0,0")) == 0);
    NotePassed();
}
