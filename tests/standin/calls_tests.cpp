// What the stand-in engine writes down of its calls, and the orders that it takes for them.
#include <doctest.h>

#include <atomic>
#include <thread>

#include "platform/com/bstr.h"
#include "tests/standin/client.h"
#include "tests/support/automation.h"
#include "tests/support/error_of.h"
#include "tests/support/message_pump.h"

namespace {

// Every member of the engine's own interfaces, as a client calls it.
struct Member {
    const wchar_t* name;
    HRESULT (*call)(const Client& client);
};
constexpr Member kMembers[] = {
    {L"CreatePopup",
     [](const Client& client) {
         long mode = 2;
         ComPtr<_Popup> popup;
         return client.app->CreatePopup(1, 2, &mode, &popup);
     }},
    {L"ReleasePopup", [](const Client& client) { return client.app->ReleasePopup(1, 2); }},
    {L"State",
     [](const Client& client) {
         long state = 0;
         return client.popup->get_State(&state);
     }},
    {L"Start", [](const Client& client) { return client.popup->Start(); }},
    {L"Stop", [](const Client& client) { return client.popup->Stop(); }},
    {L"Pause", [](const Client& client) { return client.popup->Pause(); }},
    {L"ReloadSettings", [](const Client& client) { return client.popup->ReloadSettings(); }},
    {L"LogFile",
     [](const Client& client) {
         BstrHandle path;
         return client.popup->get_LogFile(path.Put());
     }},
};

}  // namespace

TEST_CASE_FIXTURE(
    Client,
    "the calls are written down in their order with their arguments, and CreatePopup leaves the mode") {
    CHECK(Calls() == Lines{L"CreatePopup hwnd=1234 form=5678 mode=2"});
    ClearCalls();
    CHECK(Calls() == Lines{});
    for (const Member& member : kMembers)
        CHECK(member.call(*this) == S_OK);
    CHECK(Calls() == Lines{L"CreatePopup hwnd=1 form=2 mode=2", L"ReleasePopup hwnd=1 form=2", L"State",
                           L"Start", L"Stop", L"Pause", L"ReloadSettings", L"LogFile"});
    ClearCalls();
    long mode = 3;
    ComPtr<_Popup> other;
    CHECK(app->CreatePopup(-1, -2, &mode, &other) == S_OK);
    CHECK(mode == 3);
    CHECK(Calls() == Lines{L"CreatePopup hwnd=-1 form=-2 mode=3"});
}

TEST_CASE_FIXTURE(Client,
                  "the members of the engine object stand in the order that its clients were built with") {
    ClearCalls();
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
    CHECK(ViewOf(log.Get()) == ToText(Value(L"LogFile")));
    CHECK(Calls() == Lines{L"State", L"Start", L"Stop", L"Pause", L"ReloadSettings", L"LogFile"});
}

TEST_CASE_FIXTURE(Client, "stamped lines start with the time of the call") {
    ClearCalls();
    Set(L"Stamped", true);
    const DWORD before = GetTickCount();
    CHECK(popup->Start() == S_OK);
    const DWORD after = GetTickCount();
    const Lines calls = Calls();
    REQUIRE(calls.size() == 1);
    size_t digits = 0;
    const DWORD stamp = std::stoul(calls[0], &digits);
    CHECK(calls[0].substr(digits) == L" Start");
    CHECK(stamp >= before);
    CHECK(stamp <= after);
}

TEST_CASE_FIXTURE(Client, "ReloadSettings tells what a watched value held when it arrived") {
    const char* const key = "Software\\Calvane Standin Tests";
    const auto reload = [&] {
        ClearCalls();
        CHECK(popup->ReloadSettings() == S_OK);
        return Calls();
    };
    Set(L"WatchValue", L"Software\\Calvane Standin Tests\\txtSpeed");
    CHECK(reload() == Lines{L"ReloadSettings txtSpeed missing"});
    struct Row {
        DWORD type;
        std::string_view stored;
        const wchar_t* told;
    };
    // Settings are stored without a terminating NUL.
    for (const Row& row : {Row{REG_SZ, "1000", L"=1000"}, Row{REG_SZ, "500", L"=500"}, Row{REG_SZ, "", L"="},
                           Row{REG_DWORD, "four", L" unreadable"}}) {
        CHECK(RegSetKeyValueA(HKEY_CURRENT_USER, key, "txtSpeed", row.type, row.stored.data(),
                              static_cast<DWORD>(row.stored.size())) == ERROR_SUCCESS);
        CHECK(reload() == Lines{std::wstring(L"ReloadSettings txtSpeed") + row.told});
    }
    RegDeleteKeyA(HKEY_CURRENT_USER, key);
    Set(L"WatchValue", L"");
    CHECK(reload() == Lines{L"ReloadSettings"});
}

TEST_CASE_FIXTURE(Client, "the next call of a member fails as ordered, the one after does not") {
    for (const HRESULT failure : {E_FAIL, E_OUTOFMEMORY, RPC_E_SERVERCALL_RETRYLATER}) {
        for (const Member& member : kMembers) {
            CAPTURE(ToAnsi(member.name));
            const long state = State();
            ClearCalls();
            Fail(member.name, failure);
            CHECK(member.call(*this) == failure);
            // A failing call arrives and does nothing.
            CHECK(Count(member.name) == 1);
            CHECK(State() == state);
            CHECK(member.call(*this) == S_OK);
        }
    }
}

TEST_CASE_FIXTURE(Client, "orders take the member's name in any letter case and refuse what makes no sense") {
    Fail(L"reloadSETTINGS");
    CHECK(popup->ReloadSettings() == E_FAIL);
    const HRESULT refused = HresultOf(ErrorNumber::InvalidProcedureCall);
    CHECK(ErrorOf([&] { Fail(L"Restart"); }) == refused);
    CHECK(ErrorOf([&] { Fail(L"Start", S_OK); }) == refused);
    CHECK(ErrorOf([&] { Hold(L"Restart"); }) == refused);
    CHECK(ErrorOf([&] { Hold(L""); }) == refused);
    CHECK(ErrorOf([&] { DieIn(L""); }) == refused);
    CHECK(popup->Start() == S_OK);
}

TEST_CASE_FIXTURE(
    Client,
    "the next call of a member is held until it is let go, others and the one after are served at once") {
    Call(Control(), L"HoldNext", {L"start"});
    const HeldCall held(L"Start");
    Fail(L"Start");
    CHECK_FALSE(held.HasArrived());
    bool isServed = false;
    std::atomic<bool> isLetGo = false;
    std::thread other([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        while (!held.HasArrived())
            Sleep(1);
        const DWORD start = GetTickCount();
        isServed = ErrorOf([] { Get(CreateByName(L"SentrelStandin.Control").Get(), L"Popups"); }) == S_OK &&
                   GetTickCount() - start < kPatience;
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
    for (const Member& member : kMembers) {
        CAPTURE(ToAnsi(member.name));
        {
            const Client client;
            CHECK(ProcessesOf(kStandInProgram).size() == 1);
            client.DieIn(member.name);
            CHECK(FAILED(member.call(client)));
            CHECK(StandIn::Ended());
            CHECK(FAILED(client.popup->Start()));
        }
        Client::NewApp();
        CHECK(StandIn().State() == 1);
    }
}
