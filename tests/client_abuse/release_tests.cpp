// Clients that go on calling when another has called ReleaseConfig.
#include <doctest.h>

#include <algorithm>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "tests/client_abuse/client.h"
#include "tests/engine/session.h"
#include "tests/support/killed_servers.h"
#include "tests/support/program.h"

namespace {

constexpr wchar_t kProgram[] = L"SentrelConfig.exe";
constexpr int kClients = 3;
// The calls of each member by each client.
constexpr int kRounds = 1000 / kClients + 1;

// What a call may return from the moment on in which ReleaseConfig has returned, beside the refusal: that
// there is no server any more.
constexpr HRESULT kGone[] = {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED),
                             HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), RPC_E_DISCONNECTED,
                             RPC_E_SERVER_DIED, RPC_E_SERVER_DIED_DNE};

// Shared by the test and its clients.
struct Board {
    std::atomic<int> ready = 0;
    std::atomic<bool> hasBegun = false;
    std::atomic<bool> isReleased = false;

    // How the calls ended.
    std::atomic<int> rounds = 0;
    std::atomic<int> early = 0;    // those that began before ReleaseConfig had come
    std::atomic<int> refused = 0;  // of the others
    std::atomic<int> gone = 0;
    std::mutex lock;
    std::set<std::string> wrong;  // neither
    DWORD slowest = 0;            // milliseconds
};

struct Member {
    std::string name;
    std::function<HRESULT()> call;
};

// Those that make or show something, or hand something out. Every member is asked in the suites "pairs_end"
// and "entry"; here all but ConfigInstance go through the same Invoke.
std::vector<Member> MembersOf(Client& client) {
    const ComPtr<_ConfigControl> control = client.control;
    const ComPtr<IDispatch> config = client.config;
    const ComPtr<IDispatch> form = ObjectIn(Get(config.Get(), L"ConfigForm"));
    const ComPtr<IDispatch> icon = ObjectIn(Get(config.Get(), L"ShellIconClass"));
    const ComPtr<IDispatch> picture = ObjectIn(Get(form.Get(), L"picShellIcon"));
    std::vector<Member> members;
    for (const long showType : {1, 2, 3}) {
        members.push_back({"ConfigInstance", [control, showType] {
                               long argument = showType;
                               ComPtr<IDispatch> instance;
                               return control->ConfigInstance(&argument, &instance);
                           }});
    }
    const auto add = [&](const char* name, const ComPtr<IDispatch>& object, DISPID member, WORD flags,
                         std::vector<Variant> arguments = {}) {
        members.push_back({name, [=] {
                               Variant result;
                               return InvokeByNumber(object.Get(), member, flags, arguments, result);
                           }});
    };
    add("ConfigHwnd", config, 0x68030002, DISPATCH_PROPERTYGET);
    add("ConfigForm", config, 0x68030001, DISPATCH_PROPERTYGET);
    add("b_OKtoUnload =", form, 1, DISPATCH_PROPERTYPUT, {false});
    add("Show", form, 4, DISPATCH_METHOD);
    add("Visible =", form, 6, DISPATCH_PROPERTYPUT, {true});
    add("hWnd", form, 8, DISPATCH_PROPERTYGET);
    add("picTray", form, 10, DISPATCH_PROPERTYGET, {1L});
    add("ControlHwnd", form, 11, DISPATCH_METHOD, {L"cmdApply"});
    add("ToolTip =", icon, 1, DISPATCH_PROPERTYPUT, {L"Sentrel"});
    add("InitShellNotify", icon, 2, DISPATCH_METHOD, {client.Window(), 1025L});
    add("AddIcon", icon, 3, DISPATCH_METHOD, {picture.Get()});
    add("Picture", picture, 2, DISPATCH_PROPERTYGET);
    members.push_back({"GetTypeInfo", [form] {
                           ComPtr<ITypeInfo> info;
                           return form->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info);
                       }});
    return members;
}

void Call(const Member& member, Board& board) {
    const bool isLate = board.isReleased;
    const DWORD start = GetTickCount();
    const HRESULT result = member.call();
    const DWORD duration = GetTickCount() - start;
    const bool isGone = std::ranges::find(kGone, result) != std::end(kGone);
    if (!isLate) {
        ++board.early;
    } else if (result == CO_E_SERVER_STOPPING) {
        ++board.refused;
    } else if (isGone) {
        ++board.gone;
    }
    const std::lock_guard guard(board.lock);
    board.slowest = std::max(board.slowest, duration);
    if (isLate && result != CO_E_SERVER_STOPPING && !isGone)
        board.wrong.insert(member.name + " returns " + std::to_string(result));
}

void CallEverything(Client& client, Board& board) {
    const std::vector<Member> members = MembersOf(client);
    ++board.ready;
    while (!board.hasBegun)
        Sleep(1);
    for (int round = 0; round < kRounds;) {
        for (const Member& member : members)
            Call(member, board);
        if (!board.isReleased) continue;
        Call({"ReleaseConfig", [&] { return client.control->ReleaseConfig(); }}, board);
        ++round;
        ++board.rounds;
    }
}

}  // namespace

TEST_CASE(
    "from ReleaseConfig on clients' calls are refused, nothing comes back, and who comes now gets a new "
    "manager") {
    ForgetKilledServers();
    const auto board = std::make_shared<Board>();
    Session session;
    session.Start();
    const HWND window = session.window;
    const Clients clients(kClients, [board](Client& client, int) { CallEverything(client, *board); });
    REQUIRE(PumpUntil([&] { return board->ready == kClients; }));
    board->hasBegun = true;
    REQUIRE(PumpUntil([&] { return board->early > 100; }));

    // While the engine holds its leave up, the manager serves its clients.
    const HeldCall held = session.engine.Hold(L"ReleasePopup");
    const auto released = std::make_shared<std::atomic<HRESULT>>(E_PENDING);
    const Clients last(1, [released](Client& client, int) { *released = client.control->ReleaseConfig(); });
    REQUIRE(held.Arrives());
    board->isReleased = true;
    ComPtr<_ConfigControl> next;
    REQUIRE(CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&next)) ==
            S_OK);
    CHECK(ProcessesOf(kProgram).size() == 2);
    // Few calls: the engine may not hold the leave up for longer than the manager waits for it.
    CHECK(PumpUntil([&] { return board->rounds >= kClients; }));
    CHECK(board->refused > 0);
    CHECK(board->gone == 0);
    CHECK(ShownIcons() == 0);

    held.LetGo();
    REQUIRE(last.End());
    // The process may have ended before its reply.
    CHECK((*released == S_OK || *released == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED)));
    REQUIRE(session.manager.WaitForEnd());
    REQUIRE(clients.End());
    CHECK(board->rounds == kClients * kRounds);
    for (const std::string& wrong : board->wrong)
        FAIL_CHECK(wrong);
    MESSAGE(board->early.load() << " calls before ReleaseConfig, behind it " << board->refused.load()
                                << " refused and " << board->gone.load() << " without a server; slowest "
                                << board->slowest << " ms");
    CHECK_FALSE(IsWindow(window));
    CHECK(ShownIcons() == 0);
    CHECK(session.engine.Popups() == 0);
    CHECK(session.engine.Connections() == 0);
    CHECK(session.engine.Count(L"ReleasePopup") == 1);

    long showType = FormHide;
    ComPtr<IDispatch> config;
    REQUIRE(next->ConfigInstance(&showType, &config) == S_OK);
    CHECK(IsWindow(reinterpret_cast<HWND>(static_cast<LONG_PTR>(ToLong(Get(config.Get(), L"ConfigHwnd"))))));
    config.Reset();
    next->ReleaseConfig();
    next.Reset();
    session.manager.LetGo();
    CHECK(ProgramEnds(kProgram));
}
