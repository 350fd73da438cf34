#include <doctest.h>

#include "tests/standin/engine_process.h"
#include "tests/support/message_pump.h"

TEST_CASE("a new engine runs, raises by itself, and has received nothing") {
    SUBCASE("Just started") {
        EndEngine();
    }
    SUBCASE("Reset") {
        const EngineProcess used;
        const ComPtr<_Popup> popup = CreatePopup();
        used.control->put_State(3);
        used.control->put_RaiseByItself(VARIANT_FALSE);
        used.control->put_Stamped(VARIANT_TRUE);
        used.control->put_LogFile(Text(L"C:\\other.log"));
        used.control->put_WatchValue(Text(L"Software\\Other"));
        used.control->FailNext(Text(L"Start"), E_FAIL);
        popup->Stop();
    }
    const EngineProcess engine;
    VARIANT_BOOL flag = VARIANT_FALSE;
    CHECK(engine.State() == 1);
    CHECK(engine.control->get_RaiseByItself(&flag) == S_OK);
    CHECK(flag == VARIANT_TRUE);
    CHECK(engine.control->get_Stamped(&flag) == S_OK);
    CHECK(flag == VARIANT_FALSE);
    CHECK(engine.Calls() == L"");
    CHECK(engine.LogFile().ends_with(L"\\Sentrel closed windows.log"));
    const ComPtr<_Popup> popup = CreatePopup();
    CHECK(popup->Start() == S_OK);
    CHECK(popup->ReloadSettings() == S_OK);
    CHECK(engine.Calls() == L"CreatePopup hwnd=1234 form=5678 mode=2\r\nStart\r\nReloadSettings\r\n");
}

TEST_CASE("one process serves both classes to every client") {
    const EngineProcess engine;
    const ComPtr<_Popup> first = CreatePopup();
    const ComPtr<_Popup> second = CreatePopup();
    CHECK(EngineProcesses().size() == 1);
    CHECK(engine.control->put_State(77) == S_OK);
    long state = 0;
    CHECK(first->get_State(&state) == S_OK);
    CHECK(state == 77);
    CHECK(second->get_State(&state) == S_OK);
    CHECK(state == 77);
}

TEST_CASE("the engine ends when the last reference is let go") {
    EndEngine();
    ComPtr<_Popup> popup = CreatePopup();
    ComPtr<_Control> control = Create<_Control>(CLSID_Control);
    CHECK(EngineProcesses().size() == 1);
    popup.Reset();
    PumpFor(500);
    CHECK(EngineProcesses().size() == 1);
    control.Reset();
    CHECK(EngineEnds());
}

TEST_CASE("Quit ends the process though references are held") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    engine.control->Quit();
    CHECK(EngineEnds());
    KeptEngine().Reset();
    CHECK(FAILED(popup->Start()));
}
