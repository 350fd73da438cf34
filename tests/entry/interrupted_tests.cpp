// What comes in while the window is loaded, shown or unloaded, and what the window is like afterwards.
#include <doctest.h>

#include <commctrl.h>

#include <functional>
#include <utility>

#include "tests/entry/start_journal.h"
#include "tests/entry/window_inside.h"

namespace {

struct Interrupted : Inside {
    StartJournal journal;

    // Runs work in the next call of the engine's member.
    void LetIn(const char* member, const std::function<void()>& work) {
        journal.engine.script.within[member] = [work, isFirst = true]() mutable {
            if (std::exchange(isFirst, false)) work();
        };
    }
};

}  // namespace

TEST_CASE_FIXTURE(Interrupted,
                  "the About page that is asked for while an unload waits for the engine is shown") {
    Instance(FormHide);
    LetIn("ReleasePopup", [&] { Instance(kShowAbout); });
    g_frmConfig->Unload();
    // Asking for the handle would make the window.
    REQUIRE(journal.Count("window") == 2);
    CHECK(IsShown());
    CHECK(SelectedTab() == 5);
}

TEST_CASE_FIXTURE(Interrupted, "the window behind one that was unloaded in its first load takes gestures") {
    LetIn("LogFile", [] { g_frmConfig->Unload(); });
    Instance(FormHide);
    CHECK(g_frmConfig->Handle() == g_lngConfigHwnd);
    REQUIRE(IsWindow(Window()));
    CHECK_FALSE(IsShown());
    SendMessageW(Window(), kTrayCallback, 1, WM_LBUTTONDBLCLK);
    CHECK(IsShown());
}

TEST_CASE_FIXTURE(Interrupted,
                  "showing the window while one of its dialogs is open leaves the dialog the keyboard") {
    Instance(formShow);
    const HWND dialog = CreateWindowExW(0, L"#32770", L"", WS_POPUP | WS_VISIBLE | WS_CAPTION, 0, 0, 100, 50,
                                        Window(), nullptr, nullptr, nullptr);
    SetActiveWindow(dialog);
    EnableWindow(Window(), FALSE);
    REQUIRE(GetActiveWindow() == dialog);
    g_frmConfig->Show();
    CHECK(GetActiveWindow() == dialog);
    EnableWindow(Window(), TRUE);
    DestroyWindow(dialog);
}
