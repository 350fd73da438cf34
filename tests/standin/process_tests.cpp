// The stand-in engine's process.
#include <doctest.h>

#include "tests/standin/client.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"

TEST_CASE("a new engine runs, raises by itself, and has received nothing") {
    SUBCASE("Just started") {
        StandIn::End();
    }
    SUBCASE("Reset") {
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
    CHECK_FALSE(ToBool(engine.Value(L"Stamped")));
    CHECK(ToText(engine.Value(L"Calls")) == L"");
    CHECK(ToText(engine.Value(L"LogFile")).ends_with(L"\\Sentrel closed windows.log"));
    const ComPtr<_Popup> popup = Client::NewPopup();
    CHECK(popup->Start() == S_OK);
    CHECK(popup->ReloadSettings() == S_OK);
    CHECK(engine.Calls() == Lines{L"CreatePopup hwnd=1234 form=5678 mode=2", L"Start", L"ReloadSettings"});
}

TEST_CASE_FIXTURE(Client, "one process serves both classes to every client, and scripts by name") {
    const ComPtr<_Popup> second = NewPopup();
    CHECK(ProcessesOf(kStandInProgram).size() == 1);
    CHECK_THROWS(Value(L"NoSuchMember"));
    Set(L"state", 77L);
    for (const auto& each : {popup, second}) {
        long state = 0;
        CHECK(each->get_State(&state) == S_OK);
        CHECK(state == 77);
    }
    CLSID classId{};
    REQUIRE(CLSIDFromProgID(L"Sentrel1.SentrelApp", &classId) == S_OK);
    CHECK(IsEqualCLSID(classId, __uuidof(SentrelApp)));
}

TEST_CASE("the engine ends when the last reference is let go") {
    StandIn::End();
    ComPtr<_Popup> popup = Client::NewPopup();
    ComPtr<IDispatch> control = CreateByName(L"SentrelStandin.Control");
    CHECK(ProcessesOf(kStandInProgram).size() == 1);
    popup.Reset();
    PumpFor(500);
    CHECK(ProcessesOf(kStandInProgram).size() == 1);
    control.Reset();
    CHECK(ProgramEnds(kStandInProgram));
}

TEST_CASE_FIXTURE(Client, "Quit ends the process though references are held") {
    End();
    CHECK(FAILED(popup->Start()));
}
