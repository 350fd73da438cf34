// The stand-in engine as the manager, which calls it, and the tests, which order it about, meet it. How it
// holds a call and dies in one is shown by the suites that make it do so.
#include <doctest.h>

#include <cstdlib>

#include "platform/com/bstr.h"
#include "platform/text.h"
#include "tests/standin/client.h"
#include "tests/support/automation.h"
#include "tests/support/error_of.h"
#include "tests/support/message_pump.h"
#include "tests/support/test_folder.h"

TEST_CASE_FIXTURE(Client,
                  "the calls are written down with their arguments, on demand with their times; CreatePopup "
                  "leaves the mode, and the engine object's members stand in the order that its clients were "
                  "built with") {
    CHECK(Calls() == Lines{L"CreatePopup hwnd=1234 form=5678 mode=2"});
    ClearCalls();
    long mode = 3;
    ComPtr<_Popup> other;
    CHECK(app->CreatePopup(-1, -2, &mode, &other) == S_OK);
    CHECK(mode == 3);
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
    CHECK(app->ReleasePopup(1, 2) == S_OK);
    CHECK(Calls() == Lines{L"CreatePopup hwnd=-1 form=-2 mode=3", L"State", L"Start", L"Stop", L"Pause",
                           L"ReloadSettings", L"LogFile", L"ReleasePopup hwnd=1 form=2"});
    ClearCalls();
    Set(L"Stamped", true);
    const DWORD before = GetTickCount();
    CHECK(popup->Start() == S_OK);
    const DWORD after = GetTickCount();
    const std::wstring stamped = Calls().at(0);
    size_t digits = 0;
    CHECK(std::stoul(stamped, &digits) - before <= after - before);
    CHECK(stamped.substr(digits) == L" Start");
}

TEST_CASE_FIXTURE(Client, "ReloadSettings tells what a watched value held when it arrived") {
    const char* const key = "Software\\Calvane Standin Tests";
    const auto reload = [&] {
        ClearCalls();
        CHECK(popup->ReloadSettings() == S_OK);
        return Calls();
    };
    const auto store = [&](DWORD type, std::string_view value) {
        RegSetKeyValueA(HKEY_CURRENT_USER, key, "txtSpeed", type, value.data(),
                        static_cast<DWORD>(value.size()));
    };
    Set(L"WatchValue", L"Software\\Calvane Standin Tests\\txtSpeed");
    CHECK(reload() == Lines{L"ReloadSettings txtSpeed missing"});
    // Settings are stored without a terminating NUL.
    store(REG_SZ, "1000");
    CHECK(reload() == Lines{L"ReloadSettings txtSpeed=1000"});
    store(REG_DWORD, "four");
    CHECK(reload() == Lines{L"ReloadSettings txtSpeed unreadable"});
    RegDeleteKeyA(HKEY_CURRENT_USER, key);
    Set(L"WatchValue", L"");
    CHECK(reload() == Lines{L"ReloadSettings"});
}

TEST_CASE_FIXTURE(Client,
                  "the next call of a member, named in any letter case, fails as ordered and does nothing "
                  "else, the one after does not; an order that makes no sense is refused") {
    State(7);
    const HRESULT failure = RPC_E_SERVERCALL_RETRYLATER;
    for (const wchar_t* const member : {L"CREATEPOPUP", L"start", L"Stop", L"Pause"})
        Fail(member, failure);
    long mode = 2;
    ComPtr<_Popup> other;
    CHECK(app->CreatePopup(1, 2, &mode, &other) == failure);
    CHECK(popup->Start() == failure);
    CHECK(popup->Stop() == failure);
    CHECK(popup->Pause() == failure);
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
                  "themselves") {
    const EventLog log(popup.Get());
    for (const bool raises : {true, false}) {
        CHECK(popup->Stop() == S_OK);
        CHECK(State() == 2);
        CHECK(popup->Pause() == S_OK);
        CHECK(State() == 3);
        CHECK(popup->Start() == S_OK);
        CHECK(State() == 1);
        // Setting the state raises nothing.
        State(-5);
        CHECK(State() == -5);
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
                  "a closed pop-up is appended as an ANSI line to the log, which lies in the user's own "
                  "folder until told otherwise and is not made by asking, and then reported") {
    const TestFolder folder;
    const std::wstring logFile = folder.Path(L"closed.log");
    const EventLog log(popup.Get());
    const auto close = [&](long hwnd, const wchar_t* address) {
        Call(Control(), L"ClosePopup", {hwnd, address});
    };
    const wchar_t* const userFolder = _wgetenv(L"APPDATA");
    REQUIRE(userFolder != nullptr);
    CHECK(ToText(Value(L"LogFile")) == std::wstring(userFolder) + L"\\Sentrel closed windows.log");
    Set(L"LogFile", logFile);
    CHECK(ToText(Value(L"LogFile")) == logFile);
    CHECK_FALSE(FileExists(logFile));
    close(11, L"http://one.example/caf\xe9");
    close(12, L"http://two.example/");
    CHECK(BytesOf(logFile) == ToAnsi(L"http://one.example/caf\xe9") + "\r\nhttp://two.example/\r\n");
    const Lines reported{L"Killed 11 http://one.example/caf\xe9", L"Killed 12 http://two.example/"};
    CHECK(log.events == reported);

    // What cannot be written is an error, and not reported.
    Set(L"LogFile", L"C:\\no such folder\\closed.log");
    CHECK(ErrorOf([&] { close(1, L"http://one.example/"); }) == HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    PumpFor(200);
    CHECK(log.events == reported);
}

TEST_CASE("an engine that is reset runs, raises by itself, and has received nothing, as a new one") {
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
    const StandIn engine;
    CHECK(engine.State() == 1);
    CHECK(ToBool(engine.Value(L"RaiseByItself")));
    CHECK(ToText(engine.Value(L"LogFile")).ends_with(L"\\Sentrel closed windows.log"));
    CHECK(engine.Calls() == Lines{});
    const ComPtr<_Popup> popup = Client::NewPopup();
    CHECK(popup->Start() == S_OK);
    CHECK(popup->ReloadSettings() == S_OK);
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
