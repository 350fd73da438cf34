// Making the window, showing it and switching its pages, beside the same dialogs without code behind them.
#include <windows.h>
#include <commctrl.h>
#include <objbase.h>
#include <shellapi.h>

#include <stdexcept>

#include "app/resource.h"
#include "bench/support/bare_store.h"
#include "bench/support/comparison.h"
#include "bench/support/config_in_process.h"
#include "bench/support/tabbed_dialog.h"
#include "tests/support/import_patch.h"

namespace {

constexpr double kWanted = 1.2;

HRESULT WINAPI NoEngine(REFCLSID, IUnknown*, DWORD, REFIID, void**) {
    return REGDB_E_CLASSNOTREG;
}

BOOL WINAPI NoIcon(DWORD, PNOTIFYICONDATAA) {
    return TRUE;
}

// A control of each page.
constexpr int kProofs[] = {IDC_CBOPAUSEKEY, IDC_LSTEXCLUDE,    IDC_LSTCLOSEDWND,
                           IDC_LVWBANNERS,  IDC_LVWSEARCHURLS, IDC_IMGLOGO};

bool ShowsPage(HWND window, int page) {
    bool isShown = false;
    const int id = kProofs[page];
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        if (const HWND control = GetDlgItem(child, id)) isShown = isShown || IsWindowVisible(control);
    }
    return isShown;
}

// As clicks on the tabs do it, each page drawn before the next.
void SwitchThroughPages(HWND window) {
    const HWND tabs = GetDlgItem(window, IDC_TAB);
    for (const int page : {1, 2, 3, 4, 5, 0}) {
        SendMessageW(tabs, TCM_SETCURFOCUS, static_cast<WPARAM>(page), 0);
        if (!ShowsPage(window, page)) throw std::runtime_error("a page is not shown");
        Settle(window);
    }
}

void Show(HWND window) {
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    Settle(window);
}

void CompareMaking() {
    ConfigInProcess config;
    HWND dialog = nullptr;
    const auto destroy = [&] { DestroyWindow(dialog); };
    // The defaults are there from now on.
    config.Make();
    config.Unmake();
    Report({.what = "Making the window, hidden and loaded",
            .size = "default settings",
            .measured = {"`frmConfig`", [&] { config.Make(); }, [] {}, [&] { config.Unmake(); }},
            .beside = {"the same dialogs without code, and the registry calls",
                       [&] {
                           dialog = MakeTabbedDialog();
                           BareStore::FirstRun("C:");
                           BareStore::Load();
                       },
                       [] {}, destroy},
            .rounds = 25});
    Report({.what = "Showing the window the first time",
            .size = "default settings",
            .measured = {"`ShowModeless`",
                         [&] {
                             config.Form().ShowModeless();
                             Settle(config.Window());
                         },
                         [&] { config.Make(); }, [&] { config.Unmake(); }},
            .beside = {"the same dialogs without code", [&] { Show(dialog); },
                       [&] { dialog = MakeTabbedDialog(); }, destroy},
            .rounds = 25,
            .wanted = kWanted});
}

void CompareSwitching() {
    ConfigInProcess config;
    config.Make();
    const HWND dialog = MakeTabbedDialog();
    const auto side = [](const char* name, HWND window) {
        return Side{name, [=] { SwitchThroughPages(window); }, [=] { Show(window); },
                    [=] { ShowWindow(window, SW_HIDE); }};
    };
    Report({.what = "Switching through the six pages",
            .size = "default settings",
            .measured = side("`SelectPage`", config.Window()),
            .beside = side("the same dialogs without code", dialog),
            .rounds = 25,
            .wanted = kWanted});
    DestroyWindow(dialog);
    config.Unmake();
}

}  // namespace

int wmain() {
    const ImportPatch engine("ole32.dll", "CoCreateInstance", &NoEngine);
    const ImportPatch icon("shell32.dll", "Shell_NotifyIconA", &NoIcon);
    return RunBenchmark([] {
        CompareMaking();
        CompareSwitching();
    });
}
