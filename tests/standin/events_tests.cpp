// What the stand-in engine raises, and the log that it keeps of closed pop-ups.
#include <doctest.h>

#include <cstdlib>

#include "platform/text.h"
#include "tests/standin/client.h"
#include "tests/support/automation.h"
#include "tests/support/error_of.h"
#include "tests/support/message_pump.h"
#include "tests/support/test_folder.h"

namespace {

struct Listener : Client {
    EventLog log{popup.Get()};
    TestFolder folder;
    const std::wstring logFile = folder.Path(L"closed.log");
};

}  // namespace

TEST_CASE_FIXTURE(Listener,
                  "Start, Stop and Pause change the state and raise their events, unless told not to by "
                  "themselves") {
    Lines expected;
    for (const bool raises : {true, false}) {
        CAPTURE(raises);
        Set(L"RaiseByItself", raises);
        const auto check = [&](long state, const wchar_t* event) {
            if (raises) expected.push_back(event);
            CHECK(State() == state);
            CHECK(log.events == expected);
        };
        CHECK(popup->Stop() == S_OK);
        check(2, L"Stopped");
        CHECK(popup->Pause() == S_OK);
        check(3, L"Paused");
        CHECK(popup->Start() == S_OK);
        check(1, L"Started");
        // Setting the state raises nothing.
        for (const long state : {1L, 2L, 3L, 0L, -5L}) {
            State(state);
            CHECK(State() == state);
        }
        PumpFor(200);
        CHECK(log.events == expected);
    }
}

TEST_CASE_FIXTURE(Listener, "each event can be raised by order, and changes nothing else") {
    Set(L"LogFile", logFile);
    State(9);
    Call(Control(), L"RaiseKilled", {-7L, L"Buy now \x2013 caf\xe9"});
    for (const wchar_t* const event : {L"Paused", L"Started", L"Stopped"})
        Raise(event);
    CHECK(log.events == Lines{L"Killed -7 Buy now \x2013 caf\xe9", L"Paused", L"Started", L"Stopped"});
    CHECK(State() == 9);
    CHECK(Calls() == Lines{L"CreatePopup hwnd=1234 form=5678 mode=2"});
    CHECK_FALSE(FileExists(logFile));
}

TEST_CASE_FIXTURE(Listener, "events reach every connected client and nobody who has disconnected") {
    ComPtr<_Popup> other = NewPopup();
    {
        const EventLog second(other.Get());
        CHECK(Popups() == 2);
        CHECK(Connections() == 2);
        Raise(L"Started");
        CHECK(log.events == Lines{L"Started"});
        CHECK(second.events == Lines{L"Started"});
    }
    CHECK(Popups() == 2);
    CHECK(Connections() == 1);
    other.Reset();
    CHECK(Popups() == 1);
    CHECK(Connections() == 1);
    Raise(L"Stopped");
    CHECK(log.events == Lines{L"Started", L"Stopped"});
}

TEST_CASE_FIXTURE(Listener,
                  "the log lies in the user's own folder until told otherwise, and is not made by asking") {
    const wchar_t* const userFolder = _wgetenv(L"APPDATA");
    REQUIRE(userFolder != nullptr);
    CHECK(GetFileAttributesW(userFolder) != INVALID_FILE_ATTRIBUTES);
    const std::wstring path = std::wstring(userFolder) + L"\\Sentrel closed windows.log";
    DeleteFileW(path.c_str());
    CHECK(ToText(Value(L"LogFile")) == path);
    CHECK_FALSE(FileExists(path));
    Set(L"LogFile", logFile);
    CHECK(ToText(Value(L"LogFile")) == logFile);
    CHECK_FALSE(FileExists(logFile));
}

TEST_CASE_FIXTURE(Listener, "a closed pop-up is appended to the log as an ANSI line, then reported") {
    const auto close = [&](long hwnd, const wchar_t* address) {
        Call(Control(), L"ClosePopup", {hwnd, address});
    };
    Set(L"LogFile", logFile);
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
