// Clients in processes of their own that go on calling when another has called ReleaseConfig.
#include <doctest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "platform/com/event_connection.h"
#include "tests/client_abuse/client.h"
#include "tests/engine/session.h"
#include "tests/support/killed_servers.h"
#include "tests/support/program.h"
#include "tray/picture_array.h"

namespace {

constexpr wchar_t kProgram[] = L"SentrelConfig.exe";
constexpr LONG kClients = 3;
// The calls of each member by each client.
constexpr LONG kRounds = 1000 / kClients + 1;

// What a call may return from the moment on in which ReleaseConfig has returned: the refusal, or that there
// is no server any more.
constexpr HRESULT kLate[] = {CO_E_SERVER_STOPPING,
                             HRESULT_FROM_WIN32(RPC_S_CALL_FAILED),
                             HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE),
                             RPC_E_DISCONNECTED,
                             RPC_E_SERVER_DIED,
                             RPC_E_SERVER_DIED_DNE};
constexpr size_t kLateKinds = std::size(kLate);

// How the calls of one client ended.
struct Tally {
    LONG rounds;
    LONG early;             // those that began before ReleaseConfig had come
    LONG late[kLateKinds];  // the others
    LONG wrong;             // of these, those with another result
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

private:
    const ProcessHandle m_memory;
    Board* const m_board;
};

struct Member {
    std::string name;
    std::function<HRESULT()> call;
};

// Every member of every object but ReleaseConfig.
std::vector<Member> MembersOf(Client& client) {
    const ComPtr<_ConfigControl> control = client.control;
    const ComPtr<IDispatch> config = client.config;
    const ComPtr<IDispatch> form = ObjectIn(Get(config.Get(), L"ConfigForm"));
    const ComPtr<IDispatch> icon = ObjectIn(Get(config.Get(), L"ShellIconClass"));
    const ComPtr<IDispatch> picture = ObjectIn(Get(form.Get(), L"picShellIcon"));
    const long window = client.Window();
    std::vector<Member> members;
    const auto add = [&](const char* name, const ComPtr<IDispatch>& object, DISPID member, WORD flags,
                         std::vector<Variant> arguments = {}) {
        members.push_back({name, [=] {
                               Variant result;
                               return InvokeByNumber(object.Get(), member, flags, arguments, result);
                           }});
    };
    for (const long showType : {1, 2, 3}) {
        members.push_back({"ConfigInstance", [control, showType] {
                               long argument = showType;
                               ComPtr<IDispatch> instance;
                               return control->ConfigInstance(&argument, &instance);
                           }});
    }
    add("ConfigHwnd", config, 0x68030002, DISPATCH_PROPERTYGET);
    add("ConfigForm", config, 0x68030001, DISPATCH_PROPERTYGET);
    add("ShellIconClass", config, 0x68030000, DISPATCH_PROPERTYGET);
    add("b_OKtoUnload", form, 1, DISPATCH_PROPERTYGET);
    add("b_OKtoUnload =", form, 1, DISPATCH_PROPERTYPUT, {false});
    add("m_oShellIcon", form, 2, DISPATCH_PROPERTYGET);
    add("m_oPopup", form, 3, DISPATCH_PROPERTYGET);
    add("Show", form, 4, DISPATCH_METHOD);
    add("Hide", form, 5, DISPATCH_METHOD);
    add("Visible", form, 6, DISPATCH_PROPERTYGET);
    add("Visible =", form, 6, DISPATCH_PROPERTYPUT, {true});
    add("Caption", form, 7, DISPATCH_PROPERTYGET);
    add("Caption =", form, 7, DISPATCH_PROPERTYPUT, {L"Calvane"});
    add("hWnd", form, 8, DISPATCH_PROPERTYGET);
    add("picShellIcon", form, 9, DISPATCH_PROPERTYGET);
    add("picTray", form, 10, DISPATCH_PROPERTYGET, {1L});
    add("ControlHwnd", form, 11, DISPATCH_METHOD, {L"cmdApply"});
    add("ToolTip", icon, 1, DISPATCH_PROPERTYGET);
    add("ToolTip =", icon, 1, DISPATCH_PROPERTYPUT, {L"Sentrel"});
    add("InitShellNotify", icon, 2, DISPATCH_METHOD, {window, 1025L});
    add("AddIcon", icon, 3, DISPATCH_METHOD, {picture.Get()});
    add("RemoveIcon", icon, 4, DISPATCH_METHOD);
    members.push_back({"AnimateIcon", [icon, picture, window] {
                           PictureArray pictures(0, 1);
                           VARIANT arguments[4]{};
                           arguments[3].vt = VT_ARRAY | VT_DISPATCH | VT_BYREF;
                           arguments[3].pparray = pictures.Reference();
                           arguments[2] = Variant(250L).Detach();
                           arguments[1] = Variant(1L).Detach();
                           arguments[0] = Variant(window).Detach();
                           DISPPARAMS parameters{arguments, nullptr, 4, 0};
                           return icon->Invoke(5, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                               nullptr, nullptr, nullptr);
                       }});
    add("Name", picture, 1, DISPATCH_PROPERTYGET);
    add("Picture", picture, 2, DISPATCH_PROPERTYGET);
    members.push_back({"GetTypeInfoCount", [form] {
                           UINT count = 0;
                           return form->GetTypeInfoCount(&count);
                       }});
    members.push_back({"GetTypeInfo", [form] {
                           ComPtr<ITypeInfo> info;
                           return form->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info);
                       }});
    members.push_back({"GetIDsOfNames", [form] {
                           wchar_t text[] = L"hWnd";
                           LPOLESTR name = text;
                           DISPID id = 0;
                           return form->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
                       }});
    return members;
}

void Call(const Member& member, const Board& board, Tally& tally) {
    std::snprintf(tally.member, sizeof(tally.member), "%s", member.name.c_str());
    const bool isLate = Read(board.released) != 0;
    const DWORD start = GetTickCount();
    const HRESULT result = member.call();
    tally.slowest = std::max(tally.slowest, GetTickCount() - start);
    if (!isLate) {
        InterlockedIncrement(&tally.early);
        return;
    }
    for (size_t kind = 0; kind < kLateKinds; ++kind) {
        if (result == kLate[kind]) {
            InterlockedIncrement(&tally.late[kind]);
            return;
        }
    }
    if (InterlockedIncrement(&tally.wrong) > 1) return;
    tally.firstWrong = result;
    std::snprintf(tally.wrongMember, sizeof(tally.wrongMember), "%s", member.name.c_str());
}

ULONGLONG Number(const FILETIME& time) {
    return (static_cast<ULONGLONG>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

// A call of ReleaseConfig that the test does not have to wait for.
struct Release {
    LONG isOver = 0;
    HRESULT result = E_FAIL;
    FILETIME end{};
};

std::shared_ptr<Release> ReleaseInThread() {
    auto release = std::make_shared<Release>();
    std::thread([release] {
        Client client;
        release->result = client.control->ReleaseConfig();
        GetSystemTimeAsFileTime(&release->end);
        InterlockedExchange(&release->isOver, 1);
    }).detach();
    return release;
}

// The manager's process, and its clients, which end with this object whatever they wait for.
class Processes {
public:
    explicit Processes(HWND window) {
        DWORD id = 0;
        GetWindowThreadProcessId(window, &id);
        m_manager.Reset(OpenProcess(PROCESS_TERMINATE | PROCESS_QUERY_INFORMATION | SYNCHRONIZE, FALSE, id));
        for (LONG i = 0; i < kClients; ++i)
            m_clients.push_back(StartClient("client: calls every member"));
    }
    Processes(const Processes&) = delete;
    Processes& operator=(const Processes&) = delete;
    ~Processes() {
        TerminateProcess(m_manager.Get(), 1);
        for (const ProcessHandle& client : m_clients)
            TerminateProcess(client.Get(), 1);
    }

    bool ManagerEnds() const { return Ends(m_manager); }
    bool ClientsEnd() const { return std::ranges::all_of(m_clients, Ends); }

    // In milliseconds since then.
    double ManagersLife(const FILETIME& since) const {
        FILETIME start{};
        FILETIME end{};
        FILETIME inSystem{};
        FILETIME inProgram{};
        GetProcessTimes(m_manager.Get(), &start, &end, &inSystem, &inProgram);
        return (static_cast<double>(Number(end)) - static_cast<double>(Number(since))) / 10000;
    }

private:
    static bool Ends(const ProcessHandle& process) {
        return PumpUntil([&] { return WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0; });
    }

    ProcessHandle m_manager;
    std::vector<ProcessHandle> m_clients;
};

LONG Sum(const SharedBoard& board, LONG Tally::*count) {
    LONG sum = 0;
    for (const Tally& tally : board->tallies)
        sum += Read(tally.*count);
    return sum;
}

LONG LateCalls(const SharedBoard& board, size_t kind) {
    LONG sum = 0;
    for (const Tally& tally : board->tallies)
        sum += Read(tally.late[kind]);
    return sum;
}

LONG CallsOfDeadServer(const SharedBoard& board) {
    LONG sum = 0;
    for (size_t kind = 1; kind < kLateKinds; ++kind)
        sum += LateCalls(board, kind);
    return sum;
}

void CheckResults(const SharedBoard& board) {
    std::string text;
    for (size_t kind = 0; kind < kLateKinds; ++kind) {
        char part[40];
        std::snprintf(part, sizeof(part), ", %ld with %08lX", LateCalls(board, kind),
                      static_cast<unsigned long>(kLate[kind]));
        if (LateCalls(board, kind) != 0) text += part;
    }
    DWORD slowest = 0;
    for (const Tally& tally : board->tallies) {
        slowest = std::max(slowest, tally.slowest);
        CAPTURE(tally.member);
        CHECK(tally.rounds == kRounds);
        if (tally.wrong != 0) FAIL_CHECK(tally.wrongMember << " returns " << tally.firstWrong);
    }
    MESSAGE(Sum(board, &Tally::early)
            << " calls before ReleaseConfig, behind it" << text << "; slowest " << slowest << " ms");
}

}  // namespace

TEST_CASE("client: calls every member" * doctest::skip()) {
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
            Call(member, *board.operator->(), tally);
        if (Read(board->released) == 0) continue;
        Call(last, *board.operator->(), tally);
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
    const Processes processes(window);
    REQUIRE(PumpUntil([&] { return Read(board->ready) == kClients; }));
    InterlockedExchange(&board->begun, 1);
    REQUIRE(PumpUntil([&] { return Sum(board, &Tally::early) > 100; }));

    // While the engine holds its leave up, the manager serves its clients.
    const HeldCall held = session.engine.Hold(L"ReleasePopup");
    const auto release = ReleaseInThread();
    REQUIRE(held.Arrives());
    InterlockedExchange(&board->released, 1);
    ComPtr<_ConfigControl> next;
    CHECK(CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&next)) ==
          S_OK);
    CHECK(ProcessesOf(kProgram).size() == 2);
    CHECK(PumpUntil([&] { return Sum(board, &Tally::rounds) > kClients * kRounds / 10; }));
    CHECK(LateCalls(board, 0) > 0);
    CHECK(CallsOfDeadServer(board) == 0);
    CHECK(ShownIcons() == 0);

    held.LetGo();
    REQUIRE(PumpUntil([&] { return Read(release->isOver) != 0; }));
    // The process may have ended before its reply.
    CHECK((release->result == S_OK || release->result == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED)));
    REQUIRE(processes.ManagerEnds());
    MESSAGE("the process lived for " << processes.ManagersLife(release->end) << " ms behind its reply");
    CHECK(processes.ClientsEnd());
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
