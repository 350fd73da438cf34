#include <doctest.h>

#include "platform/automation_error.h"
#include "platform/text.h"
#include "tests/standin/engine_process.h"

TEST_CASE("The next call of a member fails as ordered, the one after does not") {
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

TEST_CASE("Orders take the member's name in any letter case and refuse what makes no sense") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    const HRESULT refused = HresultOf(ErrorNumber::InvalidProcedureCall);
    CHECK(engine.control->FailNext(Text(L"reloadSETTINGS"), E_FAIL) == S_OK);
    CHECK(popup->ReloadSettings() == E_FAIL);
    CHECK(engine.control->FailNext(Text(L"Restart"), E_FAIL) == refused);
    CHECK(engine.control->FailNext(Text(L"Start"), S_OK) == refused);
    CHECK(engine.control->DelayNext(Text(L"Start"), -1) == refused);
    CHECK(engine.control->DelayNext(nullptr, 1) == refused);
    CHECK(engine.control->DieIn(Text(L"")) == refused);
    CHECK(popup->Start() == S_OK);
}

TEST_CASE("The next call of a member takes as long as ordered") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    CHECK(engine.control->DelayNext(Text(L"Start"), 700) == S_OK);
    CHECK(engine.control->FailNext(Text(L"Start"), E_FAIL) == S_OK);
    DWORD start = GetTickCount();
    CHECK(popup->Start() == E_FAIL);
    CHECK(GetTickCount() - start >= 690);
    start = GetTickCount();
    CHECK(popup->Start() == S_OK);
    CHECK(GetTickCount() - start < 600);
}

TEST_CASE("The engine dies inside the next call of a member, and a new one can be started") {
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
