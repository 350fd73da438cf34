#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "store/settings_schema.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

using Events = std::vector<std::string>;

// A window that shows what the store holds, with one change made by the user.
struct EditedWindow : SettingsWindow {
    EditedWindow() {
        Store(L"chkPlaySound", L"0");
        Store(L"chkBeep", L"0");
        Store(L"txtPause", L"7000");
        Store(L"Pause Key", L"Alt");
        user.Write(Schema::kExcludeKey, L"0", L"http://stored.example");
        transfer.LoadSettings();
        Click(chkBeep);
        txtPause.Text(L"9");
        cboPauseKey.Text(L"F10");
        lstExclude.AddItem(L"http://added.example");
    }
};

}  // namespace

TEST_CASE("Apply saves, tells the engine after that, and clears the mark last") {
    EditedWindow page;
    std::wstring storedThen;
    bool markedThen = false;
    page.onReload = [&] {
        storedThen = page.Stored(L"txtPause");
        markedThen = page.cmdApply.Enabled();
    };
    SettingsWindow::Click(page.cmdApply);
    CHECK(page.events == Events{"reload"});
    CHECK(storedThen == L"9000");
    CHECK(markedThen);
    CHECK_FALSE(page.cmdApply.Enabled());
    CHECK(page.Stored(L"chkBeep") == L"1");
    CHECK(page.Stored(L"Pause Key") == L"F10");
    CHECK(page.user.Text(Schema::kExcludeKey, L"1") == L"http://added.example");
}

TEST_CASE("Apply with nothing changed saves all values again and tells the engine") {
    SettingsWindow page;
    page.transfer.LoadSettings();
    CHECK_FALSE(page.cmdApply.Enabled());
    page.commands.cmdApply_Click();
    CHECK(page.events == Events{"reload"});
    CHECK(page.Stored(L"chkBeep") == L"0");
    CHECK(page.Stored(L"txtPause") == L"5000");
    CHECK_FALSE(page.cmdApply.Enabled());
}

TEST_CASE("OK saves, hides the window and clears the mark, and the engine is not told") {
    EditedWindow page;
    SettingsWindow::Click(page.cmdOK);
    CHECK(page.events == Events{"hide"});
    CHECK(page.Stored(L"txtPause") == L"9000");
    CHECK(page.Stored(L"chkBeep") == L"1");
    CHECK_FALSE(page.cmdApply.Enabled());
}

TEST_CASE("Cancel shows the stored settings again, hides the window and leaves the mark") {
    for (const bool marked : {true, false}) {
        CAPTURE(marked);
        EditedWindow page;
        page.cmdApply.Enabled(marked);
        SettingsWindow::Click(page.cmdCancel);
        CHECK(page.events == Events{"hide"});
        CHECK(page.chkBeep.Value() == 0);
        CHECK(page.txtPause.Text() == L"7");
        CHECK(page.cboPauseKey.Text() == L"Alt");
        CHECK(page.ExcludeRows() == std::vector<std::wstring>{L"http://stored.example"});
        CHECK(page.cmdApply.Enabled() == marked);
        CHECK(page.Stored(L"txtPause") == L"7000");
    }
}

TEST_CASE("after Apply the mark can be set again") {
    EditedWindow page;
    page.commands.cmdApply_Click();
    SettingsWindow::Click(page.chkBeep);
    CHECK(page.cmdApply.Enabled());
}

TEST_CASE("the focus goes on when Apply disables the button that has it") {
    EditedWindow page;
    ShowWindow(page.window.Hwnd(), SW_SHOW);
    page.cmdApply.SetFocus();
    REQUIRE(GetFocus() == page.cmdApply.Hwnd());
    SettingsWindow::Click(page.cmdApply);
    CHECK_FALSE(page.cmdApply.Enabled());
    CHECK(GetFocus() == page.cmdCancel.Hwnd());
}

TEST_CASE("OK has saved when it hides the window, and clears the mark after that") {
    EditedWindow page;
    std::wstring storedThen;
    bool markedThen = false;
    page.onHide = [&] {
        storedThen = page.Stored(L"txtPause");
        markedThen = page.cmdApply.Enabled();
    };
    SettingsWindow::Click(page.cmdOK);
    CHECK(storedThen == L"9000");
    CHECK(markedThen);
    CHECK_FALSE(page.cmdApply.Enabled());
}

TEST_CASE("Cancel has loaded the stored settings when it hides the window") {
    EditedWindow page;
    std::wstring shownThen;
    page.onHide = [&] { shownThen = page.txtPause.Text(); };
    SettingsWindow::Click(page.cmdCancel);
    CHECK(shownThen == L"7");
}
