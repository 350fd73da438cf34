// A sample of the pairs of tests/pairs across processes: the delivered manager calls the stand-in engine,
// which holds the call; meanwhile something comes in from this process; then the call is let go.
#include <doctest.h>

#include <windows.h>

#include <cstdio>
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
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage() { Join(); }

    void Join() {
        if (starter.joinable()) starter.join();
    }

    // The configuration windows of the process.
    std::vector<HWND> Windows() const {
        std::pair<DWORD, std::vector<HWND>> found{process, {}};
        EnumWindows(&TakeConfigWindow, reinterpret_cast<LPARAM>(&found));
        return found.second;
    }
    HWND TheWindow() const {
        const std::vector<HWND> windows = Windows();
        return windows.empty() ? nullptr : windows.front();
    }

    HWND Button(const std::wstring& name) {
        const HWND button = manager.Control(name.c_str());
        if (name == L"cmdApply") EnableWindow(button, TRUE);
        return button;
    }

    ComPtr<IDispatch> Icon() { return ObjectIn(Get(manager.Form().Get(), L"m_oShellIcon")); }

    Rows newestLines;     // what the manager shows of the log
    std::thread starter;  // another client
    HWND dialog = nullptr;

private:
    static BOOL CALLBACK TakeConfigWindow(HWND hwnd, LPARAM parameter) {
        auto& [process, windows] = *reinterpret_cast<std::pair<DWORD, std::vector<HWND>>*>(parameter);
        DWORD owner = 0;
        GetWindowThreadProcessId(hwnd, &owner);
        if (owner == process && ClassOf(hwnd) == L"#32770" && GetWindow(hwnd, GW_OWNER) == nullptr)
            windows.push_back(hwnd);
        return TRUE;
    }

    const TestFolder folder;
    const DWORD process = ProcessesOf(L"SentrelConfig.exe").at(0);
};

// What becomes of the change mark.
enum class Mark { Untouched, Set, Cleared };

// --- What is done to the manager

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

void Start(Stage& stage) {
    stage.starter = std::thread(StartHidden);
}

void Exit(Stage& stage) {
    Put(stage.manager.Form().Get(), L"b_OKtoUnload", true);
    PostMessageW(stage.TheWindow(), WM_CLOSE, 0, 0);
}

template <long kShowType>
void Instance(Stage& stage) {
    stage.manager.Instance(kShowType);
}

template <UINT kMessage, WPARAM kParameter>
void Send(Stage& stage) {
    DWORD_PTR result = 0;
    SendMessageTimeoutW(stage.TheWindow(), kMessage, kParameter, 0, SMTO_NORMAL, kPatience, &result);
}

constexpr wchar_t kAddURL[] = L"cmdAddURL";
constexpr wchar_t kApply[] = L"cmdApply";
constexpr wchar_t kBeep[] = L"chkBeep";
constexpr wchar_t kCancel[] = L"cmdCancel";
constexpr wchar_t kOK[] = L"cmdOK";
constexpr wchar_t kRefreshLog[] = L"cmdRefreshLog";

// The click waits in the manager's queue for its turn.
template <const wchar_t* kButton>
void Click(Stage& stage) {
    PostMessageW(stage.Button(kButton), BM_CLICK, 0, 0);
    Send<WM_NULL, 0>(stage);
}

// The click comes in at once. What it leads to is not waited for: it may be a dialog. The engine may not be
// asked for its log within a message that another process sends.
template <const wchar_t* kButton>
void Press(Stage& stage) {
    SendNotifyMessageW(stage.Button(kButton), BM_CLICK, 0, 0);
    Send<WM_NULL, 0>(stage);
}

void OpenDialog(Stage& stage) {
    Press<kAddURL>(stage);
    HWND& dialog = stage.dialog;
    WaitUntil([&] {
        dialog = nullptr;
        while ((dialog = FindWindowExW(nullptr, dialog, L"#32770", nullptr)) != nullptr) {
            if (GetWindow(dialog, GW_OWNER) == stage.window && IsWindowVisible(dialog)) return true;
        }
        return false;
    });
}

// The window may go together with it.
void CloseDialog(Stage& stage) {
    PostMessageW(stage.dialog, WM_COMMAND, IDCANCEL, 0);
    CHECK(WaitUntil([&] { return !IsWindow(stage.dialog); }));
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

// The menu offers what fits the engine's state as last told.
void ChooseStart(Stage& stage) {
    stage.engine.Raise(L"Stopped");
    Command(stage.TheWindow(), L's');
}

void ReplaceIcon(Stage& stage) {
    const ComPtr<IDispatch> icon = stage.Icon();
    Call(icon.Get(), L"RemoveIcon");
    Call(icon.Get(), L"AddIcon", {Get(stage.manager.Form().Get(), L"picShellIcon")});
}

// --- The calls that are held

struct Row {
    const char* name;
    const wchar_t* call;  // the engine's member
    void (*make)(Stage&);
    void (*makeAgain)(Stage&) = nullptr;  // null where there is no way meanwhile
    Mark mark = Mark::Untouched;

    bool IsStart() const { return make == Start; }          // the window is made
    bool IsUnload() const { return make == Exit; }          // the window goes
    bool IsLoad() const { return make == Click<kCancel>; }  // settings are being loaded
};

constexpr Row kRows[] = {
    {"LogFile in Cancel", L"LogFile", Click<kCancel>, Click<kCancel>},
    {"LogFile in Refresh List", L"LogFile", Click<kRefreshLog>, Click<kRefreshLog>},
    {"ReloadSettings", L"ReloadSettings", Click<kApply>, Press<kApply>, Mark::Cleared},
    {"Start", L"Start", ChooseStart},
    {"ReleasePopup", L"ReleasePopup", Exit, Exit},
    {"CreatePopup", L"CreatePopup", Start},
    {"State", L"State", Start},
    {"LogFile in the first load", L"LogFile", Start},
};

// --- What comes in meanwhile. While the manager waits for the engine it takes clients' calls and what is
// sent; what is posted waits in its queue.

enum class Needs { Nothing, Window, Icon, Unload };

struct ColumnTraits {
    Needs needs = Needs::Window;
    Mark mark = Mark::Untouched;
    bool showsWindow = false;  // makes it, if need be
    bool takesWindow = false;
    bool endsProcess = false;
    void (*after)(Stage&) = [](Stage&) {};  // once the call has been let go
};

struct Column {
    const char* name;
    void (*come)(Stage&);  // null: what leads to the call that is held
    ColumnTraits traits = {};
};

// Of the members that clients may call, those that make, show, hide, replace or end something.
constexpr Column kColumns[] = {
    {"ConfigInstance(1)", Instance<formShow>, {.needs = Needs::Nothing, .showsWindow = true}},
    {"ConfigInstance(2)", Instance<FormHide>, {.needs = Needs::Nothing}},
    {"ConfigInstance(3)", Instance<3>, {.needs = Needs::Nothing, .showsWindow = true}},
    {"ReleaseConfig",
     [](Stage& stage) { stage.manager.Control()->ReleaseConfig(); },
     {.needs = Needs::Nothing, .endsProcess = true}},
    {"everybody lets go",
     [](Stage& stage) { stage.manager.LetGo(); },
     {.needs = Needs::Unload, .endsProcess = true}},
    {"Show", [](Stage& stage) { Call(stage.manager.Form().Get(), L"Show"); }, {.showsWindow = true}},
    {"Hide", [](Stage& stage) { Call(stage.manager.Form().Get(), L"Hide"); }},
    {"RemoveIcon and AddIcon", ReplaceIcon, {.needs = Needs::Icon}},
    {"cmdOK", Press<kOK>, {.mark = Mark::Cleared}},
    {"cmdApply", Press<kApply>, {.mark = Mark::Cleared}},
    {"cmdCancel", Click<kCancel>},
    {"cmdRefreshLog", Click<kRefreshLog>},
    {"chkBeep", Press<kBeep>, {.mark = Mark::Set}},
    {"a dialog", OpenDialog, {.mark = Mark::Set, .after = CloseDialog}},
    {"the close box", Send<WM_SYSCOMMAND, SC_CLOSE>},
    {"the tray menu", OpenMenuOf, {.needs = Needs::Icon, .after = [](Stage&) { CloseMenu(); }}},
    {"mnuShowConfig", ChooseFrom<L'o'>, {.needs = Needs::Icon, .showsWindow = true}},
    {"mnuExit", ChooseFrom<L'x'>, {.needs = Needs::Icon, .takesWindow = true}},
    {"a log-off called off", Send<WM_ENDSESSION, FALSE>},
    {"a log-off", Send<WM_ENDSESSION, TRUE>, {.takesWindow = true}},
    {"Killed", [](Stage& stage) { stage.engine.Raise(L"Killed"); }, {.needs = Needs::Icon}},
    {"Paused", [](Stage& stage) { stage.engine.Raise(L"Paused"); }, {.needs = Needs::Icon}},
    {"Stopped", [](Stage& stage) { stage.engine.Raise(L"Stopped"); }, {.needs = Needs::Icon}},
    {"the same once more", nullptr},
};

bool IsPossible(const Row& row, const Column& column) {
    switch (column.traits.needs) {
        case Needs::Nothing:
            return true;
        case Needs::Window:
            return !row.IsStart() && (column.come != nullptr || row.makeAgain != nullptr);
        case Needs::Icon:
            return !row.IsStart() && !row.IsUnload();
        default:
            return row.IsUnload();
    }
}

// --- What must hold then

bool IsMarked(const Row& row, const Column& column) {
    return row.mark != Mark::Cleared && column.traits.mark == Mark::Set && !row.IsLoad();
}

// The first thing that does not hold; empty where all does.
std::string Problem(Stage& stage, const Row& row, const Column& column) {
    const std::vector<HWND> windows = stage.Windows();
    if (MostIcons() > 1) return "more than one icon";
    if (windows.size() > 1) return "more than one window";
    if (windows.empty()) {
        if (ShownIcons() != 0) return "an icon without a window";
        if (stage.engine.Popups() != 0 || stage.engine.Connections() != 0)
            return "an engine without a window";
        if (!column.traits.takesWindow && !column.traits.endsProcess &&
            (!row.IsUnload() || column.traits.showsWindow))
            return "no window";
        return {};
    }
    if (column.traits.endsProcess || (row.IsUnload() && !column.traits.showsWindow) ||
        (column.traits.takesWindow && !row.IsStart()))
        return "the window is there";
    if (column.traits.showsWindow && row.IsUnload() && !IsWindowVisible(windows.front()))
        return "a hidden window";
    if (ShownIcons() != 1) return "no icon";
    if (stage.engine.Popups() != 1 || stage.engine.Connections() != 1) return "not one engine";
    const Rows rows = ListBoxRows(stage.manager.Control(L"lstClosedWnd"));
    if (rows != stage.newestLines) return "not the log: " + std::to_string(rows.size()) + " rows";
    const bool isMarked = IsWindowEnabled(stage.manager.Control(L"cmdApply")) != FALSE;
    if (!row.IsStart() && !row.IsUnload() && isMarked != IsMarked(row, column))
        return isMarked ? "a mark without a change" : "a change is not marked";
    return {};
}

// As before a pair: the window as it is at first, or none.
void Restore(Stage& stage, const Row& row) {
    if (row.IsStart()) {
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
    ResumeNext([&] { (column.come != nullptr ? column.come : row.makeAgain)(stage); });
    held.LetGo();
    column.traits.after(stage);
    stage.Join();
    // The next call comes to the engine when the held one has returned, to the manager when it has the reply.
    for (int i = 0; i < 2 && !column.traits.endsProcess; ++i) {
        stage.engine.Popups();
        Send<WM_NULL, 0>(stage);
    }
    std::string problem;
    const bool holds = WaitUntil([&] { return (problem = Problem(stage, row, column)).empty(); }, kLongest);
    CHECK_MESSAGE(holds, problem);
    if (column.traits.endsProcess) CHECK(stage.manager.WaitForEnd());
}

void RunRows(bool (*isWanted)(const Row&)) {
    int pairs = 0;
    std::optional<Stage> stage;
    for (const Row& row : kRows) {
        for (const Column& column : kColumns) {
            if (!isWanted(row) || !IsPossible(row, column)) continue;
            if (!stage) stage.emplace();
            RunPair(*stage, row, column);
            ++pairs;
            if (column.traits.endsProcess) stage.reset();
        }
    }
    std::printf("%d pairs across processes\n", pairs);
}

}  // namespace

TEST_CASE("what comes in while the engine is called from the window breaks nothing") {
    RunRows([](const Row& row) { return !row.IsStart() && !row.IsUnload(); });
}

TEST_CASE("what comes in while the window takes its leave of the engine breaks nothing") {
    RunRows([](const Row& row) { return row.IsUnload(); });
}

TEST_CASE("what comes in while the window is made breaks nothing") {
    RunRows([](const Row& row) { return row.IsStart(); });
}
