#include <doctest.h>

#include "tests/standin/engine_process.h"
#include "tests/standin/temporary_log.h"
#include "tests/support/message_pump.h"

TEST_CASE("Start, Stop and Pause change the state and raise their events") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    EventLog log(popup.Get());
    CHECK(popup->Stop() == S_OK);
    CHECK(engine.State() == 2);
    CHECK(log.events == Events{L"Stopped"});
    CHECK(popup->Pause() == S_OK);
    CHECK(engine.State() == 3);
    CHECK(log.events == Events{L"Stopped", L"Paused"});
    CHECK(popup->Start() == S_OK);
    CHECK(engine.State() == 1);
    CHECK(log.events == Events{L"Stopped", L"Paused", L"Started"});
}

TEST_CASE("an engine told not to raise by itself only changes its state") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    EventLog log(popup.Get());
    CHECK(engine.control->put_RaiseByItself(VARIANT_FALSE) == S_OK);
    CHECK(popup->Stop() == S_OK);
    CHECK(engine.State() == 2);
    CHECK(popup->Pause() == S_OK);
    CHECK(engine.State() == 3);
    CHECK(popup->Start() == S_OK);
    CHECK(engine.State() == 1);
    PumpFor(200);
    CHECK(log.events.empty());
}

TEST_CASE("setting the state raises nothing") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    EventLog log(popup.Get());
    for (const long state : {1L, 2L, 3L, 0L, -5L}) {
        CHECK(engine.control->put_State(state) == S_OK);
        CHECK(engine.State() == state);
    }
    PumpFor(200);
    CHECK(log.events.empty());
}

TEST_CASE("each event can be raised by order, and changes nothing else") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    const TemporaryPath log;
    EventLog events(popup.Get());
    CHECK(engine.control->put_LogFile(Text(log.path)) == S_OK);
    CHECK(engine.control->put_State(9) == S_OK);
    CHECK(engine.control->RaiseKilled(-7, Text(L"Buy now \x2013 caf\xe9")) == S_OK);
    CHECK(engine.control->RaisePaused() == S_OK);
    CHECK(engine.control->RaiseStarted() == S_OK);
    CHECK(engine.control->RaiseStopped() == S_OK);
    CHECK(events.events == Events{L"Killed -7 Buy now \x2013 caf\xe9", L"Paused", L"Started", L"Stopped"});
    CHECK(engine.State() == 9);
    CHECK(engine.Calls() == L"CreatePopup hwnd=1234 form=5678 mode=2\r\n");
    CHECK(GetFileAttributesW(log.path.c_str()) == INVALID_FILE_ATTRIBUTES);
}

TEST_CASE("events reach every connected client and nobody who has disconnected") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    ComPtr<_Popup> other = CreatePopup();
    long popups = 0;
    long connections = 0;
    const auto count = [&] {
        CHECK(engine.control->get_Popups(&popups) == S_OK);
        CHECK(engine.control->get_Connections(&connections) == S_OK);
    };

    EventLog log(popup.Get());
    {
        EventLog second(other.Get());
        count();
        CHECK(popups == 2);
        CHECK(connections == 2);
        CHECK(engine.control->RaiseStarted() == S_OK);
        CHECK(log.events == Events{L"Started"});
        CHECK(second.events == Events{L"Started"});
    }
    count();
    CHECK(popups == 2);
    CHECK(connections == 1);
    other.Reset();
    count();
    CHECK(popups == 1);
    CHECK(engine.control->RaiseStopped() == S_OK);
    CHECK(log.events == Events{L"Started", L"Stopped"});
}
