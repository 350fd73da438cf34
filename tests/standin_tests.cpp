// The stand-in engine as the manager, which calls it, the tests, which order it about, and a person at its
// window meet it. How it holds a call and dies in one is shown by the suites that make it do so.
#include <doctest.h>

#include <cstdlib>
#include <string>

#include "platform/com/bstr.h"
#include "platform/com/event_connection.h"
#include "platform/text.h"
#include "sentrel1.h"
#include "standin/engine/resource.h"
#include "tests/engine/stand_in.h"
#include "tests/support/automation.h"
#include "tests/support/error_of.h"
#include "tests/support/message_pump.h"
#include "tests/support/other_process.h"
#include "tests/support/program.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"

namespace {

// An engine as if it were new, and the objects that a client has of it.
struct Client : StandIn {
    static ComPtr<_SentrelApp> NewApp() {
        ComPtr<_SentrelApp> app;
        ThrowIfFailed(
            CoCreateInstance(__uuidof(SentrelApp), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&app)));
        return app;
    }

    static ComPtr<_Popup> NewPopup() {
        long mode = 2;
        ComPtr<_Popup> popup;
        ThrowIfFailed(NewApp()->CreatePopup(1234, 5678, &mode, &popup));
        return popup;
    }

    const ComPtr<_SentrelApp> app = NewApp();
    const ComPtr<_Popup> popup = NewPopup();
};

// Writes down the events of an engine object, each as a word and its arguments.
struct EventLog {
    explicit EventLog(IUnknown* popup)
        : connection(popup, __uuidof(__Popup),
                     {{1,
                       [this](const DISPPARAMS& arguments) {
                           REQUIRE(arguments.cArgs == 2);
                           CHECK(arguments.rgvarg[1].vt == VT_I4);
                           CHECK(arguments.rgvarg[0].vt == VT_BSTR);
                           events.push_back(L"Killed " + ToText(arguments.rgvarg[1]) + L' ' +
                                            ToText(arguments.rgvarg[0]));
                       }},
                      {2, [this](const DISPPARAMS&) { events.push_back(L"Paused"); }},
                      {3, [this](const DISPPARAMS&) { events.push_back(L"Started"); }},
                      {4, [this](const DISPPARAMS&) { events.push_back(L"Stopped"); }}}) {}

    Lines events;
    EventConnection connection;
};

HWND EngineWindow() {
    return FindWindowW(nullptr, L"Sentrel Stand-in");
}

std::wstring ControlText(int id) {
    return ShownText(GetDlgItem(EngineWindow(), id));
}

void Click(int id) {
    PostMessageW(EngineWindow(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
}

}  // namespace

TEST_CASE_FIXTURE(Client,
                  "the calls are written down with their arguments, on demand with their times; the engine "
                  "object's members stand in the order that its clients were built with") {
    // The first seven slots are IDispatch's.
    void* const* const slots = *reinterpret_cast<void* const* const*>(popup.Get());
    using Property = HRESULT(STDMETHODCALLTYPE*)(void*, void*);
    using Method = HRESULT(STDMETHODCALLTYPE*)(void*);
    long state = 0;
    BstrHandle log;
    CHECK(reinterpret_cast<Property>(slots[7])(popup.Get(), &state) == S_OK);
    for (int slot = 8; slot <= 11; ++slot)
        CHECK(reinterpret_cast<Method>(slots[slot])(popup.Get()) == S_OK);
    CHECK(reinterpret_cast<Property>(slots[12])(popup.Get(), log.Put()) == S_OK);
    CHECK(state == 1);
    CHECK(ViewOf(log.Get()) == ToText(Value(L"LogFile")));
    CHECK(app->ReleasePopup(1, -2) == S_OK);
    CHECK(Calls() == Lines{L"CreatePopup hwnd=1234 form=5678 mode=2", L"State", L"Start", L"Stop", L"Pause",
                           L"ReloadSettings", L"LogFile", L"ReleasePopup hwnd=1 form=-2"});
    ClearCalls();
    Set(L"Stamped", true);
    const DWORD before = GetTickCount();
    CHECK(popup->Start() == S_OK);
    const std::wstring stamped = Calls().at(0);
    CHECK(std::stoul(stamped) - before <= GetTickCount() - before);
    CHECK(stamped.ends_with(L" Start"));
}

TEST_CASE_FIXTURE(Client,
                  "the next call of a member, named in any letter case, fails as ordered and does nothing "
                  "else, the one after does not; an order that makes no sense is refused") {
    const HRESULT failure = RPC_E_SERVERCALL_RETRYLATER;
    State(7);
    Fail(L"CREATEPOPUP", failure);
    Fail(L"start", failure);
    long mode = 2;
    ComPtr<_Popup> other;
    CHECK(app->CreatePopup(1, 2, &mode, &other) == failure);
    CHECK(popup->Start() == failure);
    CHECK(State() == 7);
    CHECK(Popups() == 1);
    CHECK(popup->Start() == S_OK);

    const HRESULT refused = HresultOf(ErrorNumber::InvalidProcedureCall);
    CHECK(ErrorOf([&] { Fail(L"Restart"); }) == refused);
    CHECK(ErrorOf([&] { Fail(L"Start", S_OK); }) == refused);
    CHECK(ErrorOf([&] { Hold(L"Restart"); }) == refused);
    CHECK(ErrorOf([&] { DieIn(L""); }) == refused);
    CHECK(popup->Start() == S_OK);
}

TEST_CASE_FIXTURE(Client,
                  "Start, Stop and Pause change the state and raise their events, unless told not to by "
                  "themselves; setting the state raises nothing") {
    const EventLog log(popup.Get());
    for (const bool raises : {true, false}) {
        CHECK(popup->Stop() == S_OK);
        CHECK(State() == 2);
        CHECK(popup->Pause() == S_OK);
        CHECK(State() == 3);
        CHECK(popup->Start() == S_OK);
        CHECK(State() == 1);
        State(-5);
        if (raises) Set(L"RaiseByItself", false);
        PumpFor(200);
        CHECK(log.events == Lines{L"Stopped", L"Paused", L"Started"});
    }
}

TEST_CASE_FIXTURE(Client,
                  "each event can be raised by order, reaches every connected client and nobody who has "
                  "disconnected, and changes nothing else") {
    const EventLog log(popup.Get());
    const Lines all{L"Killed -7 Buy now \x2013 caf\xe9", L"Paused", L"Started", L"Stopped"};
    State(9);
    {
        const ComPtr<_Popup> other = NewPopup();
        const EventLog second(other.Get());
        ClearCalls();
        CHECK(Popups() == 2);
        CHECK(Connections() == 2);
        Call(Control(), L"RaiseKilled", {-7L, L"Buy now \x2013 caf\xe9"});
        for (const wchar_t* const event : {L"Paused", L"Started", L"Stopped"})
            Raise(event);
        CHECK(second.events == all);
    }
    CHECK(log.events == all);
    CHECK(State() == 9);
    CHECK(Calls() == Lines{});
    CHECK(Popups() == 1);
    CHECK(Connections() == 1);
    Raise(L"Stopped");
    CHECK(log.events.size() == all.size() + 1);
}

TEST_CASE_FIXTURE(Client,
                  "a closed pop-up is appended as an ANSI line to the log, which is not made by asking, and "
                  "then reported; what cannot be written is an error, and not reported") {
    const TestFolder folder;
    const std::wstring logFile = folder.Path(L"closed.log");
    const EventLog log(popup.Get());
    const auto close = [&](long hwnd, const wchar_t* address) {
        Call(Control(), L"ClosePopup", {hwnd, address});
    };
    Set(L"LogFile", logFile);
    CHECK(ToText(Value(L"LogFile")) == logFile);
    CHECK_FALSE(FileExists(logFile));
    close(11, L"http://one.example/caf\xe9");
    close(12, L"http://two.example/");
    CHECK(BytesOf(logFile) == ToAnsi(L"http://one.example/caf\xe9") + "\r\nhttp://two.example/\r\n");
    Set(L"LogFile", L"C:\\no such folder\\closed.log");
    CHECK(ErrorOf([&] { close(1, L"http://one.example/"); }) == HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    PumpFor(200);
    CHECK(log.events == Lines{L"Killed 11 http://one.example/caf\xe9", L"Killed 12 http://two.example/"});
}

TEST_CASE(
    "an engine that is reset runs, raises by itself, logs to the user's own folder and has received nothing, "
    "as a new one") {
    {
        const Client used;
        used.State(3);
        used.Set(L"RaiseByItself", false);
        used.Set(L"Stamped", true);
        used.Set(L"LogFile", L"C:\\other.log");
        used.Set(L"WatchValue", L"Software\\Other");
        used.Fail(L"Start");
        used.popup->Stop();
    }
    const Client engine;
    CHECK(engine.State() == 1);
    CHECK(ToBool(engine.Value(L"RaiseByItself")));
    CHECK(ToText(engine.Value(L"LogFile")) ==
          std::wstring(_wgetenv(L"APPDATA")) + L"\\Sentrel closed windows.log");
    CHECK(engine.popup->Start() == S_OK);
    CHECK(engine.popup->ReloadSettings() == S_OK);
    CHECK(engine.Calls() == Lines{L"CreatePopup hwnd=1234 form=5678 mode=2", L"Start", L"ReloadSettings"});
}

TEST_CASE("one process serves both classes, and ends when the last reference is let go") {
    StandIn::End();
    ComPtr<_Popup> popup = Client::NewPopup();
    ComPtr<IDispatch> control = CreateByName(L"SentrelStandin.Control");
    CLSID classId{};
    CHECK(CLSIDFromProgID(L"Sentrel1.SentrelApp", &classId) == S_OK);
    CHECK(IsEqualCLSID(classId, __uuidof(SentrelApp)));
    CHECK(ProcessesOf(kStandInProgram).size() == 1);
    popup.Reset();
    PumpFor(500);
    CHECK(ProcessesOf(kStandInProgram).size() == 1);
    control.Reset();
    CHECK(ProgramEnds(kStandInProgram));
}

TEST_CASE_FIXTURE(Client, "started by hand, the engine that serves the clients opens its window") {
    const TestFolder folder;
    const std::wstring logFile = folder.Path(L"closed.log");
    const EventLog log(popup.Get());
    Set(L"LogFile", logFile);
    const std::vector<DWORD> serving = ProcessesOf(kStandInProgram);
    CHECK(EngineWindow() == nullptr);
    CHECK(RunProgram(kStandInProgram) == 0);
    CHECK(IsWindowVisible(EngineWindow()));
    CHECK(ProcessesOf(kStandInProgram) == serving);
    CHECK(ControlText(IDC_STATE) == L"Running");

    struct Row {
        int button;
        std::wstring event;
        std::wstring state;
    };
    Lines expected;
    for (const Row& row : {Row{IDC_STOP, L"Stopped", L"Stopped"}, Row{IDC_PAUSE, L"Paused", L"Paused"},
                           Row{IDC_START, L"Started", L"Running"}}) {
        Click(row.button);
        expected.push_back(row.event);
        CHECK(PumpUntil([&] { return log.events == expected; }));
        CHECK(ControlText(IDC_STATE) == row.state);
    }
    State(8);
    CHECK(ControlText(IDC_STATE) == L"State 8");

    const std::wstring address = ControlText(IDC_ADDRESS);
    CHECK(address.starts_with(L"http://"));
    Click(IDC_CLOSE_POPUP);
    CHECK(PumpUntil([&] { return log.events.size() == 4; }));
    CHECK(log.events.back() == L"Killed 0 " + address);
    CHECK(BytesOf(logFile) == ToAnsi(address) + "\r\n");
    End();
}

TEST_CASE("an open window keeps the engine running; closing it ends one that no client holds") {
    StandIn::End();
    CHECK(RunProgram(kStandInProgram) == 0);
    const HWND window = EngineWindow();
    REQUIRE(window != nullptr);
    {
        const Client client;
        PostMessageW(window, WM_CLOSE, 0, 0);
        CHECK(PumpUntil([] { return EngineWindow() == nullptr; }));
        CHECK(client.State() == 1);
        StandIn::End();
    }
    CHECK(RunProgram(kStandInProgram) == 0);
    Client::NewPopup();
    PumpFor(500);
    const HWND second = EngineWindow();
    REQUIRE(second != nullptr);
    // Started once more, it brings the same window to the front.
    CHECK(RunProgram(kStandInProgram) == 0);
    CHECK(EngineWindow() == second);
    PostMessageW(second, WM_CLOSE, 0, 0);
    CHECK(ProgramEnds(kStandInProgram));
}
