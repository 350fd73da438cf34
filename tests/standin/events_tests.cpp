#include <doctest.h>

#include "tests/standin/engine_process.h"
#include "tests/support/message_pump.h"
#include "tests/support/test_folder.h"

TEST_CASE("Start, Stop and Pause change the state and raise their events, unless told not to by themselves") {
    for (const bool raises : {true, false}) {
        CAPTURE(raises);
        const EngineProcess engine;
        const ComPtr<_Popup> popup = CreatePopup();
        EventLog log(popup.Get());
        Events expected;
        CHECK(engine.control->put_RaiseByItself(raises ? VARIANT_TRUE : VARIANT_FALSE) == S_OK);
        const auto check = [&](long state, const wchar_t* event) {
            if (raises) expected.push_back(event);
            CHECK(engine.State() == state);
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
            CHECK(engine.control->put_State(state) == S_OK);
            CHECK(engine.State() == state);
        }
        PumpFor(200);
        CHECK(log.events == expected);
    }
}

TEST_CASE("each event can be raised by order, and changes nothing else") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    const TestFolder folder;
    const std::wstring log = folder.Path(L"closed.log");
    EventLog events(popup.Get());
    CHECK(engine.control->put_LogFile(Text(log)) == S_OK);
    CHECK(engine.control->put_State(9) == S_OK);
    CHECK(engine.control->RaiseKilled(-7, Text(L"Buy now \x2013 caf\xe9")) == S_OK);
    CHECK(engine.control->RaisePaused() == S_OK);
    CHECK(engine.control->RaiseStarted() == S_OK);
    CHECK(engine.control->RaiseStopped() == S_OK);
    CHECK(events.events == Events{L"Killed -7 Buy now \x2013 caf\xe9", L"Paused", L"Started", L"Stopped"});
    CHECK(engine.State() == 9);
    CHECK(engine.Calls() == L"CreatePopup hwnd=1234 form=5678 mode=2\r\n");
    CHECK_FALSE(FileExists(log));
}

TEST_CASE("events reach every connected client and nobody who has disconnected") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    ComPtr<_Popup> other = CreatePopup();
    const auto check = [&](long expectedPopups, long expectedConnections) {
        long popups = 0;
        long connections = 0;
        CHECK(engine.control->get_Popups(&popups) == S_OK);
        CHECK(engine.control->get_Connections(&connections) == S_OK);
        CHECK(popups == expectedPopups);
        CHECK(connections == expectedConnections);
    };

    EventLog log(popup.Get());
    {
        EventLog second(other.Get());
        check(2, 2);
        CHECK(engine.control->RaiseStarted() == S_OK);
        CHECK(log.events == Events{L"Started"});
        CHECK(second.events == Events{L"Started"});
    }
    check(2, 1);
    other.Reset();
    check(1, 1);
    CHECK(engine.control->RaiseStopped() == S_OK);
    CHECK(log.events == Events{L"Started", L"Stopped"});
}
