// Apply, OK and Cancel.
#include <string>
#include <vector>

#include "store/settings_schema.h"
#include "tests/support/other_process.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

using Events = std::vector<std::string>;

// A window that shows what the store holds, with one change made by the user.
struct EditedPage : SettingsWindow {
    EditedPage() {
        Store(L"chkPlaySound", L"0");
        Store(L"txtPause", L"7000");
        Store(L"Pause Key", L"Alt");
        user.Write(Schema::kExcludeKey, L"0", L"http://stored.example");
        transfer.LoadSettings();
        Click(chkBeep);
        txtPause.Text(L"9");
        cboPauseKey.Text(L"F10");
        lstExclude.AddItem(L"http://added.example");
        // What is stored, marked and shown when the engine is told or the window hidden.
        onEvent = [this] {
            storedThen = Stored(L"txtPause");
            markedThen = cmdApply.Enabled();
            shownThen = txtPause.Text();
        };
    }

    std::wstring storedThen;
    bool markedThen = false;
    std::wstring shownThen;
};

}  // namespace

TEST_CASE(
    "Apply saves, changed or not, tells the engine after that, and clears the mark last; OK saves, hides the "
    "window and clears the mark, and the engine is not told") {
    for (const std::string pressed : {"Apply", "Apply with nothing changed", "OK"}) {
        CAPTURE(pressed);
        EditedPage page;
        page.cmdApply.Enabled(pressed == "Apply");
        (pressed == "OK" ? page.cmdOK : page.cmdApply).Click();
        CHECK(page.events == Events{pressed == "OK" ? "hide" : "reload"});
        CHECK(page.storedThen == L"9000");
        CHECK(page.markedThen);
        CHECK_FALSE(page.cmdApply.Enabled());
        CHECK(page.Stored(L"chkBeep") == L"1");
        CHECK(page.Stored(L"Pause Key") == L"F10");
        CHECK(page.user.Text(Schema::kExcludeKey, L"1") == L"http://added.example");
        // It can be set again.
        EditedPage::Click(page.chkBeep);
        CHECK(page.cmdApply.Enabled());
    }
}

TEST_CASE("a change behind an Apply that the engine takes later stays marked, one within the call does not") {
    for (const bool isRemoval : {false, true}) {
        for (const bool isLater : {false, true}) {
            CAPTURE(isRemoval);
            CAPTURE(isLater);
            EditedPage page;
            const auto change = [&] {
                isRemoval ? page.changeMark.EnableApply() : EditedPage::Click(page.chkBeep);
            };
            Event told;
            const auto tell = [&](Event done) {
                told = done;
                if (isLater) return;
                change();
                done();
            };
            Commands commands(page, page.changeMark, page.transfer, tell, [] {});
            commands.cmdApply_Click();
            CHECK(page.cmdApply.Enabled() == isLater);
            if (!isLater) continue;
            change();
            told();
            CHECK(page.cmdApply.Enabled());
            commands.cmdApply_Click();
            told();
            CHECK_FALSE(page.cmdApply.Enabled());
        }
    }
}

TEST_CASE("Cancel shows the stored settings again, then hides the window, and leaves the mark, set or not") {
    for (const bool marked : {true, false}) {
        CAPTURE(marked);
        EditedPage page;
        page.cmdApply.Enabled(marked);
        EditedPage::Click(page.cmdCancel);
        CHECK(page.events == Events{"hide"});
        CHECK(page.shownThen == L"7");
        CHECK(page.chkBeep.Value() == 0);
        CHECK(page.cboPauseKey.Text() == L"Alt");
        CHECK(ListBoxRows(page.lstExclude.Hwnd()) == Rows{L"http://stored.example"});
        CHECK(page.cmdApply.Enabled() == marked);
        CHECK(page.Stored(L"txtPause") == L"7000");
    }
}
