#include <doctest.h>

#include <atomic>
#include <thread>

#include "platform/automation_error.h"
#include "platform/text.h"
#include "tests/standin/engine_process.h"
#include "tests/support/held_call.h"

TEST_CASE("the next call of a member fails as ordered, the one after does not") {
    const EngineProcess engine;
    const ComPtr<_SentrelApp> app = Create<_SentrelApp>(CLSID_SentrelApp);
    const ComPtr<_Popup> popup = CreatePopup();
    for (const HRESULT failure : {E_FAIL, E_OUTOFMEMORY, RPC_E_SERVERCALL_RETRYLATER}) {
        for (const Member& member : Members()) {
            CAPTURE(ToAnsi(member.name));
            const long state = engine.State();
            CHECK(engine.control->ClearCalls() == S_OK);
            CHECK(engine.control->FailNext(Text(member.name), failure) == S_OK);
            CHECK(member.call(*app.Get(), *popup.Get()) == failure);
            // A failing call arrives and does nothing.
            CHECK(engine.Calls().starts_with(member.name));
            CHECK(engine.State() == state);
            CHECK(member.call(*app.Get(), *popup.Get()) == S_OK);
        }
    }
}

TEST_CASE("orders take the member's name in any letter case and refuse what makes no sense") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    const HRESULT refused = HresultOf(ErrorNumber::InvalidProcedureCall);
    CHECK(engine.control->FailNext(Text(L"reloadSETTINGS"), E_FAIL) == S_OK);
    CHECK(popup->ReloadSettings() == E_FAIL);
    CHECK(engine.control->FailNext(Text(L"Restart"), E_FAIL) == refused);
    CHECK(engine.control->FailNext(Text(L"Start"), S_OK) == refused);
    CHECK(engine.control->HoldNext(Text(L"Restart")) == refused);
    CHECK(engine.control->HoldNext(nullptr) == refused);
    CHECK(engine.control->DieIn(Text(L"")) == refused);
    CHECK(popup->Start() == S_OK);
}

TEST_CASE(
    "the next call of a member is held until it is let go, others and the one after are served at once") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    REQUIRE(engine.control->HoldNext(Text(L"start")) == S_OK);
    CHECK(engine.control->FailNext(Text(L"Start"), E_FAIL) == S_OK);
    const HeldCall held(L"Start");
    CHECK_FALSE(held.HasArrived());
    bool isServed = false;
    std::atomic<bool> isLetGo = false;
    std::thread other([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        while (!held.HasArrived())
            Sleep(1);
        const ComPtr<_Control> control = Create<_Control>(CLSID_Control);
        long popups = 0;
        const DWORD start = GetTickCount();
        isServed = control->get_Popups(&popups) == S_OK && GetTickCount() - start < kPatience;
        Sleep(200);
        isLetGo = true;
        held.LetGo();
        CoUninitialize();
    });
    CHECK(popup->Start() == E_FAIL);
    CHECK(isLetGo);
    other.join();
    CHECK(isServed);
    CHECK(popup->Start() == S_OK);
}

TEST_CASE("the engine dies inside the next call of a member, and a new one can be started") {
    for (const Member& member : Members()) {
        CAPTURE(ToAnsi(member.name));
        {
            const EngineProcess engine;
            const ComPtr<_SentrelApp> app = Create<_SentrelApp>(CLSID_SentrelApp);
            const ComPtr<_Popup> popup = CreatePopup();
            CHECK(engine.control->DieIn(Text(member.name)) == S_OK);
            CHECK(EngineProcesses().size() == 1);
            CHECK(FAILED(member.call(*app.Get(), *popup.Get())));
            CHECK(EngineEnds());
            CHECK(FAILED(popup->Start()));
            KeptEngine().Reset();
        }
        const EngineProcess next;
        CHECK(next.State() == 1);
    }
}
