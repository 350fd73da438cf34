// What comes in while the window is loaded, shown or unloaded, and what the window is like afterwards.
#include <doctest.h>

#include <commctrl.h>

#include <functional>
#include <utility>

#include "lists/resource.h"
#include "options/resource.h"
#include "tests/entry/inside.h"
#include "tests/entry/start_journal.h"

namespace {

constexpr int kAboutTab = 5;

HWND Window() {
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_frmConfig->Handle()));
}

HWND Control(const wchar_t* name) {
    LONG window = 0;
    const BSTR text = SysAllocString(name);
    g_frmConfig->ControlHwnd(text, &window);
    SysFreeString(text);
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(window));
}

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

TEST_CASE_FIXTURE(Interrupted, "a Cancel within a Cancel leaves no mark") {
    Instance(FormHide);
    const HWND cancel = Control(L"cmdCancel");
    LetIn("LogFile", [&] { SendMessageW(cancel, BM_CLICK, 0, 0); });
    SendMessageW(cancel, BM_CLICK, 0, 0);
    CHECK(journal.engine.script.Count("LogFile") == 3);
    CHECK_FALSE(IsWindowEnabled(Control(L"cmdApply")));
}

TEST_CASE_FIXTURE(Interrupted,
                  "a window that is asked for while an unload waits for the engine is made after it") {
    Instance(FormHide);
    const HWND old = Window();
    LONG showType = 0;
    int tab = 0;
    SUBCASE("by ConfigInstance(1)") {
        showType = formShow;
    }
    SUBCASE("by ConfigInstance(3)") {
        showType = kShowAbout;
        tab = kAboutTab;
    }
    HRESULT result = E_FAIL;
    LetIn("ReleasePopup", [&] {
        ComPtr<IDispatch> config;
        result = Instance(showType, config);
    });
    g_frmConfig->Unload();
    CHECK(result == S_OK);
    CHECK_FALSE(IsWindow(old));
    // Asking for the handle would make the window.
    REQUIRE(journal.Count("window") == 2);
    CHECK(IsWindowVisible(Window()));
    CHECK(SendMessageW(Control(L"tab"), TCM_GETCURSEL, 0, 0) == tab);
}

TEST_CASE_FIXTURE(Interrupted, "the window behind one that was unloaded in its first load takes gestures") {
    LetIn("LogFile", [] { g_frmConfig->Unload(); });
    Instance(FormHide);
    const HWND window = Window();
    REQUIRE(IsWindow(window));
    CHECK(g_lngConfigHwnd == HandleToLong(window));
    CHECK_FALSE(IsWindowVisible(window));
    SendMessageW(window, kTrayCallback, 1, WM_LBUTTONDBLCLK);
    CHECK(IsWindowVisible(window));
}

TEST_CASE_FIXTURE(Interrupted,
                  "showing the window while one of its dialogs is open leaves the dialog the keyboard") {
    Instance(formShow);
    const HWND window = Window();
    const HWND dialog = CreateWindowExW(0, L"#32770", L"", WS_POPUP | WS_VISIBLE | WS_CAPTION, 0, 0, 100, 50,
                                        window, nullptr, nullptr, nullptr);
    SetActiveWindow(dialog);
    EnableWindow(window, FALSE);
    REQUIRE(GetActiveWindow() == dialog);
    g_frmConfig->Show();
    CHECK(GetActiveWindow() == dialog);
    EnableWindow(window, TRUE);
    DestroyWindow(dialog);
}
