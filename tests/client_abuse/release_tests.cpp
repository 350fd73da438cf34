// Clients in processes of their own that go on calling when another has called ReleaseConfig.
#include <doctest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/client_abuse/client.h"
#include "tests/engine/session.h"
#include "tests/support/alone.h"
#include "tests/support/held_call.h"
#include "tests/support/killed_servers.h"
#include "tests/support/program.h"

namespace {

constexpr wchar_t kProgram[] = L"SentrelConfig.exe";
constexpr LONG kClients = 3;
// The calls of each member by each client.
constexpr LONG kRounds = 1000 / kClients + 1;

// What a call may return from the moment on in which ReleaseConfig has returned, beside the refusal: that
// there is no server any more.
constexpr HRESULT kGone[] = {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED),
                             HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), RPC_E_DISCONNECTED,
                             RPC_E_SERVER_DIED, RPC_E_SERVER_DIED_DNE};

// How the calls of one client ended.
struct Tally {
    LONG rounds;
    LONG early;    // those that began before ReleaseConfig had come
    LONG refused;  // of the others
    LONG gone;
    LONG wrong;  // neither
    HRESULT firstWrong;
    char wrongMember[40];
    char member[40];  // the call that is under way
    DWORD slowest;    // milliseconds
};

// Shared by the test and its clients.
struct Board {
    LONG clients;
    LONG ready;
    LONG begun;
    LONG released;
    Tally tallies[kClients];
};

LONG Read(const LONG& value) {
    return InterlockedCompareExchange(const_cast<LONG*>(&value), 0, 0);
}

class SharedBoard {
public:
    SharedBoard()
        : m_memory(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(Board),
                                      L"ClientAbuseBoard")),
          m_board(static_cast<Board*>(MapViewOfFile(m_memory.Get(), FILE_MAP_WRITE, 0, 0, sizeof(Board)))) {
        REQUIRE(m_board != nullptr);
    }
    SharedBoard(const SharedBoard&) = delete;
    SharedBoard& operator=(const SharedBoard&) = delete;
    ~SharedBoard() { UnmapViewOfFile(m_board); }

    Board* operator->() const { return m_board; }

    LONG Sum(LONG Tally::*count) const {
        LONG sum = 0;
        for (const Tally& tally : m_board->tallies)
            sum += Read(tally.*count);
        return sum;
    }

private:
    const FileHandle m_memory;
    Board* const m_board;
};

struct Member {
    const char* name;
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

void Call(const Member& member, const SharedBoard& board, Tally& tally) {
    std::snprintf(tally.member, sizeof(tally.member), "%s", member.name);
    const bool isLate = Read(board->released) != 0;
    const DWORD start = GetTickCount();
    const HRESULT result = member.call();
    tally.slowest = std::max(tally.slowest, GetTickCount() - start);
    if (!isLate) {
        InterlockedIncrement(&tally.early);
    } else if (result == CO_E_SERVER_STOPPING) {
        InterlockedIncrement(&tally.refused);
    } else if (std::ranges::find(kGone, result) != std::end(kGone)) {
        InterlockedIncrement(&tally.gone);
    } else if (InterlockedIncrement(&tally.wrong) == 1) {
        tally.firstWrong = result;
        std::snprintf(tally.wrongMember, sizeof(tally.wrongMember), "%s", member.name);
    }
}

// A call of ReleaseConfig that the test does not have to wait for.
struct Release {
    LONG isOver = 0;
    HRESULT result = E_FAIL;
};

std::shared_ptr<Release> ReleaseInThread() {
    auto release = std::make_shared<Release>();
    std::thread([release] {
        Client client;
        release->result = client.control->ReleaseConfig();
        InterlockedExchange(&release->isOver, 1);
    }).detach();
    return release;
}

// Clients, which end with this object whatever they wait for.
class Clients {
public:
    Clients() {
        for (LONG i = 0; i < kClients; ++i)
            m_processes.push_back(StartAlone("client: calls everything"));
    }
    Clients(const Clients&) = delete;
    Clients& operator=(const Clients&) = delete;
    ~Clients() {
        for (const FileHandle& process : m_processes)
            TerminateProcess(process.Get(), 1);
    }

    bool End() const {
        return std::ranges::all_of(m_processes, [](const FileHandle& process) {
            return PumpUntil([&] { return WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0; });
        });
    }

private:
    std::vector<FileHandle> m_processes;
};

void CheckResults(const SharedBoard& board) {
    DWORD slowest = 0;
    for (const Tally& tally : board->tallies) {
        slowest = std::max(slowest, tally.slowest);
        CAPTURE(tally.member);
        CHECK(tally.rounds == kRounds);
        if (tally.wrong != 0) FAIL_CHECK(tally.wrongMember << " returns " << tally.firstWrong);
    }
    MESSAGE(board.Sum(&Tally::early) << " calls before ReleaseConfig, behind it "
                                     << board.Sum(&Tally::refused) << " refused and "
                                     << board.Sum(&Tally::gone) << " without a server; slowest " << slowest
                                     << " ms");
}

}  // namespace

TEST_CASE("client: calls everything" * doctest::skip()) {
    const SharedBoard board;
    Tally& tally = board->tallies[InterlockedIncrement(&board->clients) - 1];
    Client client;
    const std::vector<Member> members = MembersOf(client);
    const Member last{"ReleaseConfig", [&] { return client.control->ReleaseConfig(); }};
    InterlockedIncrement(&board->ready);
    while (Read(board->begun) == 0)
        Sleep(1);
    for (LONG round = 0; round < kRounds;) {
        for (const Member& member : members)
            Call(member, board, tally);
        if (Read(board->released) == 0) continue;
        Call(last, board, tally);
        InterlockedExchange(&tally.rounds, ++round);
    }
}

TEST_CASE(
    "from ReleaseConfig on clients' calls are refused, nothing comes back, and who comes now gets a new "
    "manager") {
    ForgetKilledServers();
    const SharedBoard board;
    Session session;
    session.Start();
    const HWND window = session.Window();
    const Clients clients;
    REQUIRE(PumpUntil([&] { return Read(board->ready) == kClients; }));
    InterlockedExchange(&board->begun, 1);
    REQUIRE(PumpUntil([&] { return board.Sum(&Tally::early) > 100; }));

    // While the engine holds its leave up, the manager serves its clients.
    const HeldCall held = session.engine.Hold(L"ReleasePopup");
    const auto release = ReleaseInThread();
    REQUIRE(held.Arrives());
    InterlockedExchange(&board->released, 1);
    ComPtr<_ConfigControl> next;
    CHECK(CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&next)) ==
          S_OK);
    CHECK(ProcessesOf(kProgram).size() == 2);
    // Few calls: the engine may not hold the leave up for longer than the manager waits for it.
    CHECK(PumpUntil([&] {
        return std::ranges::all_of(board->tallies, [](const Tally& tally) { return Read(tally.rounds) > 0; });
    }));
    CHECK(board.Sum(&Tally::refused) > 0);
    CHECK(board.Sum(&Tally::gone) == 0);
    CHECK(ShownIcons() == 0);

    held.LetGo();
    REQUIRE(PumpUntil([&] { return Read(release->isOver) != 0; }));
    // The process may have ended before its reply.
    CHECK((release->result == S_OK || release->result == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED)));
    REQUIRE(session.manager.WaitForEnd());
    CHECK(clients.End());
    CheckResults(board);
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
