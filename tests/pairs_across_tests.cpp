// A sample of the pairs of tests/pairs across processes: the delivered manager calls the stand-in engine,
// which holds the call; meanwhile something comes in from this process; then the call is let go.
#include <doctest.h>

#include <windows.h>

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/automation_error.h"
#include "platform/text.h"
#include "tests/engine/session.h"
#include "tests/support/automation.h"
#include "tests/support/other_process.h"
#include "tests/support/plain_log.h"
#include "tests/support/program.h"
#include "tests/support/test_folder.h"
#include "tray/bas_shell_notify.h"

namespace {

constexpr DWORD kLongest = 5000;  // milliseconds, until all holds

// A manager, and what a pair needs of it. The window is not made yet.
struct Stage : Session {
    Stage() {
        engine.Set(L"LogFile", folder.Write(L"closed.log", RepeatingLog()));
        engine.Set(L"RaiseByItself", false);
        for (const std::string& line : PlainNewestLines(RepeatingLog(), 25))
            newestLines.push_back(FromAnsi(line));
    }

    std::vector<HWND> Windows() const { return DialogsOf(process, false); }
    HWND TheWindow() const {
        const std::vector<HWND> windows = Windows();
        return windows.empty() ? nullptr : windows.front();
    }

    HWND Button(const std::wstring& name) {
        const HWND button = manager.Control(name.c_str());
        if (name == L"cmdApply") EnableWindow(button, TRUE);
        return button;
    }

    Rows newestLines;      // what the manager shows of the log
    std::jthread starter;  // another client

private:
    const TestFolder folder;
    const DWORD process = ProcessesOf(L"SentrelConfig.exe").at(0);
};

// --- What is done to the manager

using Work = std::function<void(Stage&)>;

// By another client, since this one has to go on.
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

void Start(Stage& stage) {
    stage.starter = std::jthread(StartHidden);
}

void Exit(Stage& stage) {
    Put(stage.manager.Form().Get(), L"b_OKtoUnload", true);
    PostMessageW(stage.TheWindow(), WM_CLOSE, 0, 0);
}

Work Instance(long showType) {
    return [=](Stage& stage) { stage.manager.Instance(showType); };
}

void Release(Stage& stage) {
    stage.manager.Control()->ReleaseConfig();
}

Work Calls(const wchar_t* method) {
    return [=](Stage& stage) { Call(stage.manager.Form().Get(), method); };
}

Work Raises(const wchar_t* event) {
    return [=](Stage& stage) { stage.engine.Raise(event); };
}

void Send(Stage& stage, UINT message, WPARAM parameter = 0) {
    DWORD_PTR result = 0;
    SendMessageTimeoutW(stage.TheWindow(), message, parameter, 0, SMTO_NORMAL, kPatience, &result);
}
Work Sends(UINT message, WPARAM parameter) {
    return [=](Stage& stage) { Send(stage, message, parameter); };
}

// The click waits in the manager's queue for its turn.
Work Clicks(const wchar_t* button) {
    return [=](Stage& stage) {
        PostMessageW(stage.Button(button), BM_CLICK, 0, 0);
        Send(stage, WM_NULL);
    };
}

// The click comes in at once. The engine may not be asked for its log within a message that another process
// sends.
Work Presses(const wchar_t* button) {
    return [=](Stage& stage) {
        SendNotifyMessageW(stage.Button(button), BM_CLICK, 0, 0);
        Send(stage, WM_NULL);
    };
}

void OpenMenuOf(Stage& stage) {
    SendNotifyMessageW(stage.TheWindow(), kTrayCallback, 1, WM_RBUTTONUP);
    REQUIRE(WaitForMenu() != nullptr);
}

Work Chooses(wchar_t mnemonic) {
    return [=](Stage& stage) {
        OpenMenuOf(stage);
        Choose(mnemonic);
    };
}

// The menu offers what fits the engine's state as last told.
void ChooseStart(Stage& stage) {
    stage.engine.Raise(L"Stopped");
    Command(stage.TheWindow(), L's');
}

// --- The calls that are held

// The window is made, is there, goes. A column may come in several of them.
enum Phase { kStart = 1, kOpen = 2, kUnload = 4 };

struct Row {
    const char* name;
    const wchar_t* call;  // the engine's member
    Phase phase;
    Work make;
    Work makeAgain = {};        // none where there is no way meanwhile
    bool endsUnmarked = false;  // whatever is changed meanwhile
};

const Row kRows[] = {
    {"LogFile in Cancel", L"LogFile", kOpen, Clicks(L"cmdCancel"), Clicks(L"cmdCancel"), true},
    {"LogFile in Refresh List", L"LogFile", kOpen, Clicks(L"cmdRefreshLog"), Clicks(L"cmdRefreshLog")},
    {"ReloadSettings", L"ReloadSettings", kOpen, Clicks(L"cmdApply"), Presses(L"cmdApply"), true},
    {"Start", L"Start", kOpen, ChooseStart},
    {"ReleasePopup", L"ReleasePopup", kUnload, Exit, Exit},
    {"CreatePopup", L"CreatePopup", kStart, Start},
    {"State", L"State", kStart, Start},
    {"LogFile in the first load", L"LogFile", kStart, Start},
};

// --- What comes in meanwhile. While the manager waits for the engine it takes clients' calls and what is
// sent; what is posted waits in its queue.

constexpr int kExists = kOpen | kUnload;
constexpr int kAlways = kStart | kExists;

enum class Effect { None, Marks, ShowsWindow, TakesWindow, EndsProcess };

struct Column {
    const char* name;
    int phases;
    Work come;  // none: what leads to the call that is held
    Effect effect = Effect::None;
};

// Of the members that clients may call, those that make, show, hide or end something.
const Column kColumns[] = {
    {"ConfigInstance(1)", kAlways, Instance(formShow), Effect::ShowsWindow},
    {"ConfigInstance(2)", kAlways, Instance(FormHide)},
    {"ConfigInstance(3)", kAlways, Instance(3), Effect::ShowsWindow},
    {"ReleaseConfig", kAlways, Release, Effect::EndsProcess},
    {"everybody lets go", kUnload, [](Stage& stage) { stage.manager.LetGo(); }, Effect::EndsProcess},
    {"Show", kExists, Calls(L"Show"), Effect::ShowsWindow},
    {"Hide", kExists, Calls(L"Hide")},
    {"cmdOK", kExists, Presses(L"cmdOK")},
    {"cmdApply", kExists, Presses(L"cmdApply")},
    {"cmdCancel", kExists, Clicks(L"cmdCancel")},
    {"cmdRefreshLog", kExists, Clicks(L"cmdRefreshLog")},
    {"chkBeep", kExists, Presses(L"chkBeep"), Effect::Marks},
    {"the close box", kExists, Sends(WM_SYSCOMMAND, SC_CLOSE)},
    {"the tray menu", kOpen, OpenMenuOf},
    {"mnuShowConfig", kOpen, Chooses(L'o'), Effect::ShowsWindow},
    {"mnuExit", kOpen, Chooses(L'x'), Effect::TakesWindow},
    {"a log-off called off", kExists, Sends(WM_ENDSESSION, FALSE)},
    {"a log-off", kExists, Sends(WM_ENDSESSION, TRUE), Effect::TakesWindow},
    {"Killed", kOpen, Raises(L"Killed")},
    {"Paused", kOpen, Raises(L"Paused")},
    {"Stopped", kOpen, Raises(L"Stopped")},
    {"the same once more", kExists, nullptr},
};

// --- What must hold then

// The first thing that does not hold; empty where all does.
std::string Problem(Stage& stage, const Row& row, Effect effect) {
    const bool isShown = effect == Effect::ShowsWindow;
    const bool isTaken = effect == Effect::TakesWindow || effect == Effect::EndsProcess;
    const std::vector<HWND> windows = stage.Windows();
    if (MostIcons() > 1) return "more than one icon";
    if (windows.size() > 1) return "more than one window";
    if (windows.empty()) {
        if (ShownIcons() != 0) return "an icon without a window";
        if (stage.engine.Popups() != 0 || stage.engine.Connections() != 0)
            return "an engine without a window";
        return isTaken || (row.phase == kUnload && !isShown) ? "" : "no window";
    }
    if (isTaken || (row.phase == kUnload && !isShown)) return "the window is there";
    if (row.phase == kUnload && !IsWindowVisible(windows.front())) return "a hidden window";
    if (ShownIcons() != 1) return "no icon";
    if (stage.engine.Popups() != 1 || stage.engine.Connections() != 1) return "not one engine";
    const Rows rows = ListBoxRows(stage.manager.Control(L"lstClosedWnd"));
    if (rows != stage.newestLines) return "not the log: " + std::to_string(rows.size()) + " rows";
    const bool isMarked = IsWindowEnabled(stage.manager.Control(L"cmdApply")) != FALSE;
    if (row.phase == kOpen && isMarked != (effect == Effect::Marks && !row.endsUnmarked))
        return isMarked ? "a mark without a change" : "a change is not marked";
    return {};
}

// As before a pair: the window as it is at first, or none.
void Restore(Stage& stage, const Row& row) {
    if (row.phase == kStart) {
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

void RunPair(Stage& stage, const Row& row, const Column& column) {
    Restore(stage, row);
    const HeldCall held = stage.engine.Hold(row.call);
    const std::string pair = std::string(row.name) + " x " + column.name;
    CAPTURE(pair);
    row.make(stage);
    REQUIRE(held.Arrives());
    // What comes in may be refused.
    ResumeNext([&] { (column.come ? column.come : row.makeAgain)(stage); });
    held.LetGo();
    if (OpenMenu() != nullptr) CloseMenu();
    if (stage.starter.joinable()) stage.starter.join();
    const bool endsProcess = column.effect == Effect::EndsProcess;
    // The next call comes to the engine when the held one has returned, to the manager when it has the reply.
    for (int i = 0; i < 2 && !endsProcess; ++i) {
        stage.engine.Popups();
        Send(stage, WM_NULL);
    }
    std::string problem;
    const bool holds =
        WaitUntil([&] { return (problem = Problem(stage, row, column.effect)).empty(); }, kLongest);
    CHECK_MESSAGE(holds, problem);
    if (endsProcess) CHECK(stage.manager.WaitForEnd());
}

bool IsPossible(const Row& row, const Column& column) {
    return (row.phase & column.phases) != 0 && (column.come || row.makeAgain);
}

}  // namespace

TEST_CASE("what comes in while the engine is called breaks nothing") {
    int pairs = 0;
    for (const Row& row : kRows) {
        std::optional<Stage> stage;
        for (const Column& column : kColumns) {
            if (!IsPossible(row, column)) continue;
            if (!stage) stage.emplace();
            RunPair(*stage, row, column);
            ++pairs;
            if (column.effect == Effect::EndsProcess) stage.reset();
        }
    }
    std::printf("%d pairs across processes\n", pairs);
}
