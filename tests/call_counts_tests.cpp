// The manager in the test's own process, with an engine, a shell and a store of its own: a start, a load, a
// save and a refresh of the log make the calls that the rules ask for, and not one more; and while nobody
// wants anything of it, it does nothing.
#include <doctest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "lists/resource.h"
#include "options/resource.h"
#include "tests/entry/journalled.h"
#include "tests/support/other_process.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"

namespace {

using EngineCalls = std::vector<std::string>;

// Longer than any period of its timers: the animation's, the menu's and that of an icon which is refused.
constexpr DWORD kIdleMilliseconds = 2500;

// What a first run writes; what is read of it: four options, 16 and 18 values of the two lists, the startup
// mode, the pause key and the sound file.
constexpr long kDefaults = 46;
constexpr long kRead = 4 + 16 + 18 + 3;
// What an Apply deletes of it: of each list with a key, and an entry behind its last. The startup mode is as
// it was read and is not written.
constexpr long kDeleted = 16 + 4 + 18 + 3;
constexpr long kWritten = kRead - 1;

// Of Windows' own timers, which blink carets and follow the mouse.
constexpr UINT kSystemTimer = 0x118;

// Handles the messages that come within the time and returns the numbers of those that are not Windows' own.
std::vector<UINT> MessagesWithin(DWORD milliseconds) {
    std::vector<UINT> messages;
    const DWORD start = GetTickCount();
    for (DWORD passed = 0; passed < milliseconds; passed = GetTickCount() - start) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, milliseconds - passed, QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message != kSystemTimer) messages.push_back(message.message);
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    return messages;
}

struct CountedManager : Journalled {
    CountedManager() { engine.script.logFile = folder.Path(L"closed.log"); }

    void Watch(const std::function<void()>& body) {
        engine.script.calls.clear();
        shell.calls.clear();
        store.Watch(body);
    }

    void Start() {
        Watch([this] { config = Instance(FormHide); });
    }

    // Watches a press of the button.
    void Press(int id) {
        EnableWindow(ControlOf(id), TRUE);
        Watch([&] { Click(id); });
    }

    // That the last body read, wrote and deleted so many values and called this of the engine, and nothing
    // else.
    void CheckCalls(long read, long written, long deleted, const EngineCalls& ofEngine) {
        const auto count = [this](const char* word) {
            return std::ranges::count_if(store.Values(),
                                         [&](const std::string& line) { return line.starts_with(word); });
        };
        CHECK(count("read ") == read);
        CHECK(count("write ") == written);
        CHECK(count("delete ") == deleted);
        CHECK(store.Count(RegistryFunction::Create) == static_cast<size_t>(written));
        CHECK(store.Count(RegistryFunction::Open) <= static_cast<size_t>(read + deleted) + 2);
        CHECK(engine.script.calls == ofEngine);
    }

    // While no message comes, nothing of the manager runs. What the screen has to tell, however late, it
    // tells once; what the manager did by itself would come in each period.
    void CheckIdle() {
        constexpr int kPeriods = 8;
        bool isIdle = false;
        for (int i = 0; i < kPeriods && !isIdle; ++i) {
            engine.script.calls.clear();
            isIdle = MessagesWithin(kIdleMilliseconds).empty() && engine.script.calls.empty();
        }
        CHECK(isIdle);
    }

    TestFolder folder;
    ComPtr<IDispatch> config;
};

const EngineCalls kStartOfEngine{"CreateInstance", "CreatePopup", "Advise", "State", "LogFile"};

}  // namespace

TEST_CASE_FIXTURE(
    CountedManager,
    "a first start writes each default once and reads each setting once; further clients and the showing "
    "of the window read nothing; a later start reads the mark and each setting once") {
    Start();
    // The two lists are read to their ends; the keys of the mark and of the exclude list are not there.
    CheckCalls(kRead + 2, kDefaults, 0, kStartOfEngine);
    REQUIRE(shell.calls.size() == 1);
    CHECK(shell.calls[0].action == NIM_ADD);
    Watch([this] {
        for (const long showType : {2L, 1L, 3L, 1L, 0L})
            Instance(showType);
    });
    CheckCalls(0, 0, 0, {});

    config.Reset();
    g_oConfig.Reset();
    g_frmConfig.Reset();
    g_lngConfigHwnd = 0;
    Start();
    CheckCalls(1 + kRead + 2, 0, 0, kStartOfEngine);
}

TEST_CASE_FIXTURE(
    CountedManager,
    "Cancel reads each setting once, and the log; Apply deletes each list, writes each setting once and "
    "tells the engine; OK does the same without telling it; a refresh asks for the path") {
    Start();
    Press(IDCANCEL);
    CheckCalls(kRead + 2, 0, 0, {"LogFile"});
    Press(IDC_CMDAPPLY);
    CheckCalls(0, kWritten, kDeleted, {"ReloadSettings"});
    Press(IDC_CMDOK);
    CheckCalls(0, kWritten, kDeleted, {});
    Press(IDC_CMDREFRESHLOG);
    CheckCalls(0, 0, 0, {"LogFile"});
    CHECK(shell.calls.empty());
    CheckIdle();
}

TEST_CASE_FIXTURE(CountedManager,
                  "2,000 exclude rows are read, deleted and written once each, and come back in their order "
                  "after a removal") {
    constexpr int kRows = 2000;
    Rows rows;
    for (int n = 0; n < kRows; ++n) {
        const std::string address = "http://site" + std::to_string(n * 7919 % kRows) + ".example";
        store.contents[kExclude][std::to_string(n)].bytes = address;
        rows.push_back(FromAnsi(address));
    }
    Start();
    CheckCalls(kRead + 3 + kRows, kDefaults, 0, kStartOfEngine);
    const HWND list = ControlOf(IDC_LSTEXCLUDE);
    CHECK(ListBoxRows(list) == rows);
    SendMessageW(list, LB_SETCURSEL, 3, 0);
    Press(IDC_CMDREMOVEURL);
    rows.erase(rows.begin() + 3);
    Press(IDC_CMDAPPLY);
    CheckCalls(0, kWritten + kRows - 1, kDeleted + kRows + 1, {"ReloadSettings"});
    Press(IDCANCEL);
    CHECK(ListBoxRows(list) == rows);
}

TEST_CASE_FIXTURE(CountedManager,
                  "a manager, hidden or shown, on whatever page, gets no message; a notice keeps it busy for "
                  "three frames and the end, and leaves it idle again") {
    Start();
    CheckIdle();
    shell.calls.clear();
    engine.Raise(1, {0L, L"http://ads.example.com"});
    const std::vector<UINT> messages = MessagesWithin(kIdleMilliseconds);
    CHECK(std::ranges::count(messages, UINT{WM_TIMER}) == 4);
    CHECK(shell.calls.size() == 5);
    for (const long showType : std::initializer_list<long>{FormHide, formShow, kShowAbout}) {
        Instance(showType);
        CheckIdle();
    }
}
