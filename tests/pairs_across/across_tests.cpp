// A sample of the pairs of tests/pairs across processes: the delivered manager calls the stand-in engine,
// which holds the call; meanwhile something comes in from this process; then the call is let go.
#include <doctest.h>

#include <shellapi.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <set>
#include <span>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "tests/engine/tray.h"
#include "tests/pairs_across/stage.h"
#include "tray/bas_shell_notify.h"

namespace {

constexpr DWORD kLongest = 5000;  // milliseconds, until all holds

// What becomes of the change mark.
enum class Mark { Untouched, Set, Cleared };

// --- The calls that are held

struct Row {
    const char* name;
    const wchar_t* call;              // the engine's member
    const wchar_t* button = nullptr;  // that leads to it
    wchar_t menuItem = 0;             // that leads to it
    Mark mark = Mark::Untouched;
    bool isLoad = false;    // settings are being loaded meanwhile
    bool isStart = false;   // the window is made
    bool isUnload = false;  // the window goes
    size_t every = 1;       // takes every how manieth column, beginning with first
    size_t first = 0;
};

constexpr Row kRows[] = {
    {.name = "LogFile in Cancel", .call = L"LogFile", .button = L"cmdCancel", .isLoad = true},
    {.name = "LogFile in Refresh List", .call = L"LogFile", .button = L"cmdRefreshLog"},
    {.name = "ReloadSettings", .call = L"ReloadSettings", .button = L"cmdApply", .mark = Mark::Cleared},
    {.name = "Start", .call = L"Start", .menuItem = L's', .every = 3, .first = 0},
    {.name = "Stop", .call = L"Stop", .menuItem = L't', .every = 3, .first = 1},
    {.name = "Pause", .call = L"Pause", .menuItem = L'p', .every = 3, .first = 2},
    {.name = "ReleasePopup", .call = L"ReleasePopup", .isUnload = true},
    {.name = "CreatePopup", .call = L"CreatePopup", .isStart = true},
    {.name = "State", .call = L"State", .isStart = true},
    {.name = "LogFile in the first load", .call = L"LogFile", .isLoad = true, .isStart = true},
};

// From another client, since this one has to go on.
void StartHidden() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
        ComPtr<_ConfigControl> control;
        ComPtr<IDispatch> config;
        long showType = FormHide;
        CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&control));
        // A Config that another client still holds makes its window when it is asked for it.
        if (control != nullptr && control->ConfigInstance(&showType, &config) == S_OK)
            ResumeNext([&] { Get(config.Get(), L"ConfigHwnd"); });
    }
    CoUninitialize();
}

void Exit(Stage& stage) {
    Put(stage.manager.Form().Get(), L"b_OKtoUnload", true);
    PostMessageW(stage.TheWindow(), WM_CLOSE, 0, 0);
}

HWND Button(Stage& stage, const std::wstring& name) {
    const HWND button = stage.manager.Control(name.c_str());
    if (name == L"cmdApply") EnableWindow(button, TRUE);
    return button;
}

void Make(Stage& stage, const Row& row) {
    if (row.button != nullptr) {
        PostMessageW(Button(stage, row.button), BM_CLICK, 0, 0);
    } else if (row.menuItem != 0) {
        // The menu offers what fits the engine's state as last told.
        stage.engine.Raise(row.menuItem == L's' ? L"Stopped" : L"Started");
        Command(stage.TheWindow(), row.menuItem);
    } else if (row.isStart) {
        stage.starter = std::thread(StartHidden);
    } else {
        Exit(stage);
    }
}

// --- What comes in meanwhile. While the manager waits for the engine it takes clients' calls and what is
// sent; what is posted waits in its queue.

enum class Needs { Nothing, Window, Icon, Unload };

struct Column {
    const char* name;
    void (*come)(Stage&) = nullptr;
    const wchar_t* button = nullptr;
    Needs needs = Needs::Window;
    Mark mark = Mark::Untouched;
    bool showsWindow = false;  // makes it, if need be
    bool takesWindow = false;
    bool endsProcess = false;
    void (*after)(Stage&) = nullptr;  // once the call has been let go
};

template <auto kCall>
void OnForm(Stage& stage) {
    kCall(stage.manager.Form().Get());
}

template <UINT kMessage, WPARAM kParameter>
void Send(Stage& stage) {
    DWORD_PTR result = 0;
    SendMessageTimeoutW(stage.TheWindow(), kMessage, kParameter, 0, SMTO_NORMAL, kPatience, &result);
}

// Does not wait for what the message leads to: it may be a dialog or the menu. The engine may not be asked
// for its log within a message that another process sends: that click waits for its turn.
void Press(Stage& stage, const std::wstring& name) {
    const bool readsLog = name == L"cmdCancel" || name == L"cmdRefreshLog";
    (readsLog ? PostMessageW : SendNotifyMessageW)(Button(stage, name), BM_CLICK, 0, 0);
    Send<WM_NULL, 0>(stage);
}

void OpenMenuOf(Stage& stage) {
    SendNotifyMessageW(stage.TheWindow(), kTrayCallback, 1, WM_RBUTTONUP);
    REQUIRE(WaitForMenu() != nullptr);
}

template <wchar_t kMnemonic>
void ChooseFrom(Stage& stage) {
    OpenMenuOf(stage);
    Choose(kMnemonic);
}

constexpr Column kColumns[] = {
    {.name = "ConfigInstance(1)",
     .come = [](Stage& stage) { stage.manager.Instance(formShow); },
     .needs = Needs::Nothing,
     .showsWindow = true},
    {.name = "ConfigInstance(2)",
     .come = [](Stage& stage) { stage.manager.Instance(FormHide); },
     .needs = Needs::Nothing},
    {.name = "ConfigInstance(3)",
     .come = [](Stage& stage) { stage.manager.Instance(3); },
     .needs = Needs::Nothing,
     .showsWindow = true},
    {.name = "ReleaseConfig",
     .come = [](Stage& stage) { stage.manager.Control()->ReleaseConfig(); },
     .needs = Needs::Nothing,
     .endsProcess = true},
    {.name = "everybody lets go",
     .come = [](Stage& stage) { stage.manager.LetGo(); },
     .needs = Needs::Unload,
     .endsProcess = true},
    {.name = "Show", .come = OnForm<[](IDispatch* form) { Call(form, L"Show"); }>, .showsWindow = true},
    {.name = "Hide", .come = OnForm<[](IDispatch* form) { Call(form, L"Hide"); }>},
    {.name = "Visible = True",
     .come = OnForm<[](IDispatch* form) { Put(form, L"Visible", true); }>,
     .showsWindow = true},
    {.name = "Caption", .come = OnForm<[](IDispatch* form) { Put(form, L"Caption", L"Calvane"); }>},
    {.name = "hWnd", .come = OnForm<[](IDispatch* form) { Get(form, L"hWnd"); }>},
    {.name = "m_oPopup", .come = OnForm<[](IDispatch* form) { Get(form, L"m_oPopup"); }>},
    {.name = "ControlHwnd", .come = [](Stage& stage) { stage.manager.Control(L"cmdOK"); }},
    {.name = "ToolTip",
     .come = [](Stage& stage) { Put(stage.Icon().Get(), L"ToolTip", L"Sentrel"); },
     .needs = Needs::Icon},
    {.name = "RemoveIcon and AddIcon",
     .come =
         [](Stage& stage) {
             const ComPtr<IDispatch> icon = stage.Icon();
             Call(icon.Get(), L"RemoveIcon");
             Call(icon.Get(), L"AddIcon", {Get(stage.manager.Form().Get(), L"picShellIcon")});
         },
     .needs = Needs::Icon},
    {.name = "cmdOK", .button = L"cmdOK", .mark = Mark::Cleared},
    {.name = "cmdApply", .button = L"cmdApply", .mark = Mark::Cleared},
    {.name = "cmdCancel", .button = L"cmdCancel"},
    {.name = "cmdRefreshLog", .button = L"cmdRefreshLog"},
    {.name = "chkBeep", .button = L"chkBeep", .mark = Mark::Set},
    {.name = "a dialog",
     .come =
         [](Stage& stage) {
             Press(stage, L"cmdAddURL");
             stage.dialog = stage.WaitForDialog();
         },
     .mark = Mark::Set,
     // The window may go together with it.
     .after =
         [](Stage& stage) {
             PostMessageW(stage.dialog, WM_COMMAND, IDCANCEL, 0);
             CHECK(WaitUntil([&] { return !IsWindow(stage.dialog); }));
         }},
    {.name = "the close box", .come = Send<WM_SYSCOMMAND, SC_CLOSE>},
    {.name = "the tray menu", .come = OpenMenuOf, .needs = Needs::Icon, .after = [](Stage&) { CloseMenu(); }},
    {.name = "mnuShowConfig", .come = ChooseFrom<L'o'>, .needs = Needs::Icon, .showsWindow = true},
    {.name = "mnuExit", .come = ChooseFrom<L'x'>, .needs = Needs::Icon, .takesWindow = true},
    {.name = "a log-off called off", .come = Send<WM_ENDSESSION, FALSE>},
    {.name = "a log-off", .come = Send<WM_ENDSESSION, TRUE>, .takesWindow = true},
    {.name = "Killed", .come = [](Stage& stage) { stage.engine.Raise(L"Killed"); }, .needs = Needs::Icon},
    {.name = "Paused", .come = [](Stage& stage) { stage.engine.Raise(L"Paused"); }, .needs = Needs::Icon},
    {.name = "Stopped", .come = [](Stage& stage) { stage.engine.Raise(L"Stopped"); }, .needs = Needs::Icon},
    {.name = "the same once more"},
};

void Come(Stage& stage, const Row& row, const Column& column) {
    const wchar_t* const button =
        column.come == nullptr && column.button == nullptr ? row.button : column.button;
    if (column.come != nullptr) {
        column.come(stage);
    } else if (button != nullptr) {
        Press(stage, button);
    } else {
        Make(stage, row);
    }
}

bool IsPossible(const Row& row, const Column& column) {
    switch (column.needs) {
        case Needs::Nothing:
            return true;
        case Needs::Window:
            return !row.isStart && (column.come != nullptr || column.button != nullptr || row.menuItem == 0);
        case Needs::Icon:
            return !row.isStart && !row.isUnload;
        default:
            return row.isUnload;
    }
}

// --- What must hold then

bool IsMarked(const Row& row, const Column& column) {
    return row.mark != Mark::Cleared && column.mark == Mark::Set && !row.isLoad;
}

int MostIcons() {
    int icons = 0;
    int most = 0;
    for (const ShellCall& call : ShellCalls()) {
        if (call.done == FALSE) continue;
        icons += (call.action == NIM_ADD) - (call.action == NIM_DELETE);
        most = std::max(most, icons);
    }
    return most;
}

// The first thing that does not hold; empty where all does.
std::string Problem(Stage& stage, const Log& log, const Row& row, const Column& column) {
    const std::vector<HWND> windows = stage.Windows();
    if (MostIcons() > 1) return "more than one icon";
    if (windows.size() > 1) return "more than one window";
    if (windows.empty()) {
        if (ShownIcons() != 0) return "an icon without a window";
        if (stage.engine.Popups() != 0 || stage.engine.Connections() != 0)
            return "an engine without a window";
        if (!column.takesWindow && !column.endsProcess && (!row.isUnload || column.showsWindow))
            return "no window";
        return {};
    }
    if (column.endsProcess || (row.isUnload && !column.showsWindow) || (column.takesWindow && !row.isStart))
        return "the window is there";
    if (column.showsWindow && row.isUnload && !IsWindowVisible(windows.front())) return "a hidden window";
    if (ShownIcons() != 1) return "no icon";
    if (stage.engine.Popups() != 1 || stage.engine.Connections() != 1) return "not one engine";
    const Rows rows = ListBoxRows(stage.manager.Control(L"lstClosedWnd"));
    if (rows != log.newest) return "not the log: " + std::to_string(rows.size()) + " rows";
    const bool isMarked = IsWindowEnabled(stage.manager.Control(L"cmdApply")) != FALSE;
    if (!row.isStart && !row.isUnload && isMarked != IsMarked(row, column))
        return isMarked ? "a mark without a change" : "a change is not marked";
    return {};
}

// As before a pair: the window as it is at first, or none.
void Restore(Stage& stage, const Row& row) {
    if (row.isStart) {
        if (stage.TheWindow() != nullptr) Exit(stage);
        REQUIRE(WaitUntil([&] { return stage.TheWindow() == nullptr && ShownIcons() == 0; }));
        return;
    }
    stage.manager.Instance(FormHide);
    stage.Start();
    // Cancel leaves the mark as it is.
    EnableWindow(stage.apply, FALSE);
    Call(stage.manager.Form().Get(), L"Hide");
    REQUIRE(WaitUntil([] { return ShownIcons() == 1; }));
}

void RunPair(Stage& stage, const Log& log, const Row& row, const Column& column) {
    Restore(stage, row);
    const HeldCall held = stage.engine.Hold(row.call);
    const std::string pair = std::string(row.name) + " x " + column.name;
    CAPTURE(pair);
    Make(stage, row);
    REQUIRE(held.Arrives());
    // What comes in may be refused.
    ResumeNext([&] { Come(stage, row, column); });
    held.LetGo();
    if (column.after != nullptr) column.after(stage);
    stage.Join();
    // The next call comes to the engine when the held one has returned, to the manager when it has the reply.
    for (int i = 0; i < 2 && !column.endsProcess; ++i) {
        stage.engine.Popups();
        Send<WM_NULL, 0>(stage);
    }
    std::string problem;
    const bool holds =
        WaitUntil([&] { return (problem = Problem(stage, log, row, column)).empty(); }, kLongest);
    CHECK_MESSAGE(holds, problem);
    if (column.endsProcess) CHECK(stage.manager.WaitForEnd());
}

void RunRows(bool (*isWanted)(const Row&)) {
    const Log log;
    const DWORD start = GetTickCount();
    int pairs = 0;
    std::optional<Stage> stage;
    for (const Row& row : kRows) {
        if (!isWanted(row)) continue;
        for (size_t i = row.first; i < std::size(kColumns); i += row.every) {
            const Column& column = kColumns[i];
            if (!IsPossible(row, column)) continue;
            if (!stage) stage.emplace(log);
            RunPair(*stage, log, row, column);
            ++pairs;
            if (column.endsProcess) stage.reset();
        }
    }
    std::printf("%d pairs across processes, %u ms\n", pairs, static_cast<unsigned>(GetTickCount() - start));
}

}  // namespace

TEST_CASE("what comes in while the engine is called from the window breaks nothing") {
    RunRows([](const Row& row) { return !row.isStart && !row.isUnload; });
}

TEST_CASE("what comes in while the window takes its leave of the engine breaks nothing") {
    RunRows([](const Row& row) { return row.isUnload; });
}

TEST_CASE("what comes in while the window is made breaks nothing") {
    RunRows([](const Row& row) { return row.isStart; });
}
