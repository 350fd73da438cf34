// The stand-in engine, out of process, through COM alone. It must have been registered before.
#include <doctest.h>

#include <windows.h>
#include <objbase.h>

#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "platform/com_ptr.h"
#include "platform/event_connection.h"
#include "platform/handle.h"
#include "platform/text.h"
#include "platform/variant.h"
#include "sentrel1.h"
#include "standin.h"
#include "standin/engine/resource.h"
#include "tests/support/message_pump.h"
#include "tests/support/program.h"

namespace {

constexpr wchar_t kEngineProgram[] = L"SentrelStandin.exe";
constexpr wchar_t kWindowTitle[] = L"Sentrel Stand-in";

// A BSTR argument.
class Text {
public:
    Text(const std::wstring& text) : m_variant(text) {}
    operator BSTR() const { return m_variant.Value().bstrVal; }

private:
    Variant m_variant;
};

std::wstring TakeText(BSTR text) {
    const std::wstring copy = text == nullptr ? L"" : std::wstring(text, SysStringLen(text));
    SysFreeString(text);
    return copy;
}

std::vector<DWORD> EngineProcesses() {
    return ProcessesOf(kEngineProgram);
}

bool EngineEnds() {
    return ProgramEnds(kEngineProgram);
}

template <class Interface>
ComPtr<Interface> Create(REFCLSID classId) {
    ComPtr<Interface> object;
    const HRESULT result = CoCreateInstance(classId, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&object));
    REQUIRE(result == S_OK);
    return object;
}

ComPtr<_Popup> CreatePopup() {
    long mode = 2;
    ComPtr<_Popup> popup;
    REQUIRE(Create<_SentrelApp>(CLSID_SentrelApp)->CreatePopup(1234, 5678, &mode, &popup) == S_OK);
    REQUIRE(popup);
    return popup;
}

// Starting a process takes a second: one engine serves test after test, until one of them needs it ended.
ComPtr<_Control>& KeptEngine() {
    static ComPtr<_Control> control;
    return control;
}

void EndEngine() {
    if (KeptEngine()) KeptEngine()->Quit();
    KeptEngine().Reset();
    REQUIRE(EngineEnds());
}

// An engine as if it were new.
struct EngineProcess {
    EngineProcess() {
        if (!KeptEngine()) KeptEngine() = Create<_Control>(CLSID_Control);
        control = KeptEngine();
        REQUIRE(control->Reset() == S_OK);
    }

    std::wstring Calls() const {
        BSTR text = nullptr;
        CHECK(control->get_Calls(&text) == S_OK);
        return TakeText(text);
    }

    std::wstring LogFile() const {
        BSTR text = nullptr;
        CHECK(control->get_LogFile(&text) == S_OK);
        return TakeText(text);
    }

    long State() const {
        long state = 0;
        CHECK(control->get_State(&state) == S_OK);
        return state;
    }

    ComPtr<_Control> control;
};

// Writes down the events of an engine object, each as a word and its arguments.
struct EventLog {
    explicit EventLog(IUnknown* popup)
        : connection(popup, DIID___Popup,
                     {{1, [this](const DISPPARAMS& arguments) { Killed(arguments); }},
                      {2, [this](const DISPPARAMS&) { events.push_back(L"Paused"); }},
                      {3, [this](const DISPPARAMS&) { events.push_back(L"Started"); }},
                      {4, [this](const DISPPARAMS&) { events.push_back(L"Stopped"); }}}) {}

    void Killed(const DISPPARAMS& arguments) {
        REQUIRE(arguments.cArgs == 2);
        CHECK(arguments.rgvarg[1].vt == VT_I4);
        CHECK(arguments.rgvarg[0].vt == VT_BSTR);
        events.push_back(L"Killed " + std::to_wstring(arguments.rgvarg[1].lVal) + L' ' +
                         ToText(arguments.rgvarg[0]));
    }

    std::vector<std::wstring> events;
    EventConnection connection;
};

using Events = std::vector<std::wstring>;

// Every member of the engine's own interfaces, as a test calls it.
struct Member {
    const wchar_t* name;
    HRESULT (*call)(_SentrelApp& app, _Popup& popup);
};

const Member kMembers[] = {
    {L"CreatePopup",
     [](_SentrelApp& app, _Popup&) {
         long mode = 2;
         ComPtr<_Popup> popup;
         return app.CreatePopup(1, 2, &mode, &popup);
     }},
    {L"ReleasePopup", [](_SentrelApp& app, _Popup&) { return app.ReleasePopup(1, 2); }},
    {L"State",
     [](_SentrelApp&, _Popup& popup) {
         long state = 0;
         return popup.get_State(&state);
     }},
    {L"Start", [](_SentrelApp&, _Popup& popup) { return popup.Start(); }},
    {L"Stop", [](_SentrelApp&, _Popup& popup) { return popup.Stop(); }},
    {L"Pause", [](_SentrelApp&, _Popup& popup) { return popup.Pause(); }},
    {L"ReloadSettings", [](_SentrelApp&, _Popup& popup) { return popup.ReloadSettings(); }},
    {L"LogFile",
     [](_SentrelApp&, _Popup& popup) {
         BSTR text = nullptr;
         const HRESULT result = popup.get_LogFile(&text);
         SysFreeString(text);
         return result;
     }},
};

std::string FileBytes(const std::wstring& path) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    REQUIRE(static_cast<bool>(file));
    std::string bytes(4096, '\0');
    DWORD size = 0;
    REQUIRE(ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &size, nullptr));
    bytes.resize(size);
    return bytes;
}

// A path in the temporary folder at which no file lies, before and after.
struct TemporaryPath {
    TemporaryPath() {
        wchar_t folder[MAX_PATH] = L"";
        GetTempPathW(MAX_PATH, folder);
        path = std::wstring(folder) + L"standin_tests.log";
        DeleteFileW(path.c_str());
    }
    ~TemporaryPath() { DeleteFileW(path.c_str()); }

    std::wstring path;
};

// A value below HKEY_CURRENT_USER, gone after the test.
struct TestValue {
    static constexpr wchar_t kKey[] = L"Software\\Calvane Standin Tests";

    static void Write(DWORD type, const void* data, DWORD size) {
        HKEY key = nullptr;
        REQUIRE(RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr) ==
                ERROR_SUCCESS);
        CHECK(RegSetValueExA(key, "txtSpeed", 0, type, static_cast<const BYTE*>(data), size) ==
              ERROR_SUCCESS);
        RegCloseKey(key);
    }

    ~TestValue() { RegDeleteKeyW(HKEY_CURRENT_USER, kKey); }
};

HWND EngineWindow() {
    return FindWindowW(nullptr, kWindowTitle);
}

void Click(int id) {
    PostMessageW(EngineWindow(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(EngineWindow(), id)));
}

std::wstring ControlText(int id) {
    wchar_t text[256] = L"";
    SendDlgItemMessageW(EngineWindow(), id, WM_GETTEXT, 256, reinterpret_cast<LPARAM>(text));
    return text;
}

}  // namespace

TEST_CASE("A new engine runs, raises by itself, and has received nothing") {
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

TEST_CASE("One process serves both classes to every client") {
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

TEST_CASE("The engine ends when the last reference is let go") {
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

TEST_CASE("The calls are written down in their order with their arguments") {
    const EngineProcess engine;
    const ComPtr<_SentrelApp> app = Create<_SentrelApp>(CLSID_SentrelApp);
    const ComPtr<_Popup> popup = CreatePopup();
    CHECK(engine.Calls() == L"CreatePopup hwnd=1234 form=5678 mode=2\r\n");
    CHECK(engine.control->ClearCalls() == S_OK);
    for (const Member& member : kMembers)
        CHECK(member.call(*app.Get(), *popup.Get()) == S_OK);
    CHECK(engine.Calls() ==
          L"CreatePopup hwnd=1 form=2 mode=2\r\nReleasePopup hwnd=1 form=2\r\nState\r\nStart\r\nStop\r\n"
          L"Pause\r\nReloadSettings\r\nLogFile\r\n");
    CHECK(engine.control->ClearCalls() == S_OK);
    CHECK(engine.Calls() == L"");
}

TEST_CASE("CreatePopup leaves the mode as it was") {
    const EngineProcess engine;
    long mode = 3;
    ComPtr<_Popup> popup;
    CHECK(Create<_SentrelApp>(CLSID_SentrelApp)->CreatePopup(-1, -2, &mode, &popup) == S_OK);
    CHECK(mode == 3);
    CHECK(engine.Calls() == L"CreatePopup hwnd=-1 form=-2 mode=3\r\n");
}

TEST_CASE("The members of the engine object stand in the order that its clients were built with") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    CHECK(engine.control->ClearCalls() == S_OK);

    // The first seven slots are IDispatch's.
    void* const* const slots = *reinterpret_cast<void* const* const*>(popup.Get());
    using Get = HRESULT(STDMETHODCALLTYPE*)(void*, void*);
    using Method = HRESULT(STDMETHODCALLTYPE*)(void*);
    long state = 0;
    BSTR log = nullptr;
    CHECK(reinterpret_cast<Get>(slots[7])(popup.Get(), &state) == S_OK);
    for (int slot = 8; slot <= 11; ++slot)
        CHECK(reinterpret_cast<Method>(slots[slot])(popup.Get()) == S_OK);
    CHECK(reinterpret_cast<Get>(slots[12])(popup.Get(), &log) == S_OK);
    CHECK(TakeText(log) == engine.LogFile());
    CHECK(engine.Calls() == L"State\r\nStart\r\nStop\r\nPause\r\nReloadSettings\r\nLogFile\r\n");
}

TEST_CASE("Scripts reach the controls by name") {
    const EngineProcess engine;
    CLSID classId{};
    REQUIRE(CLSIDFromProgID(L"SentrelStandin.Control", &classId) == S_OK);
    CHECK(IsEqualCLSID(classId, CLSID_Control));
    REQUIRE(CLSIDFromProgID(L"Sentrel1.SentrelApp", &classId) == S_OK);
    CHECK(IsEqualCLSID(classId, CLSID_SentrelApp));

    const ComPtr<IDispatch> script = Create<IDispatch>(CLSID_Control);
    const auto idOf = [&](const wchar_t* name) {
        OLECHAR* names = const_cast<OLECHAR*>(name);
        DISPID id = DISPID_UNKNOWN;
        script->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
        return id;
    };
    CHECK(idOf(L"NoSuchMember") == DISPID_UNKNOWN);
    REQUIRE(idOf(L"state") != DISPID_UNKNOWN);

    Variant value(3L);
    VARIANT argument = value.Value();
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS given{&argument, &put, 1, 1};
    CHECK(script->Invoke(idOf(L"State"), IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &given, nullptr,
                         nullptr, nullptr) == S_OK);
    CHECK(engine.State() == 3);
    DISPPARAMS none{};
    Variant answer;
    CHECK(script->Invoke(idOf(L"State"), IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                         answer.Receive(), nullptr, nullptr) == S_OK);
    CHECK(ToLong(answer) == 3);
}

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

TEST_CASE("An engine told not to raise by itself only changes its state") {
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

TEST_CASE("Setting the state raises nothing") {
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

TEST_CASE("Each event can be raised by order, and changes nothing else") {
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

TEST_CASE("Events reach every connected client and nobody who has disconnected") {
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

TEST_CASE("The next call of a member fails as ordered, the one after does not") {
    const EngineProcess engine;
    const ComPtr<_SentrelApp> app = Create<_SentrelApp>(CLSID_SentrelApp);
    const ComPtr<_Popup> popup = CreatePopup();
    for (const HRESULT failure : {E_FAIL, E_OUTOFMEMORY, RPC_E_SERVERCALL_RETRYLATER}) {
        for (const Member& member : kMembers) {
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
    for (const Member& member : kMembers) {
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

TEST_CASE("Quit ends the process though references are held") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    engine.control->Quit();
    CHECK(EngineEnds());
    KeptEngine().Reset();
    CHECK(FAILED(popup->Start()));
}

TEST_CASE("Stamped lines start with the time of the call") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    CHECK(engine.control->ClearCalls() == S_OK);
    CHECK(engine.control->put_Stamped(VARIANT_TRUE) == S_OK);
    const DWORD before = GetTickCount();
    CHECK(popup->Start() == S_OK);
    const DWORD after = GetTickCount();
    const std::wstring calls = engine.Calls();
    size_t digits = 0;
    const DWORD stamp = std::stoul(calls, &digits);
    CHECK(calls.substr(digits) == L" Start\r\n");
    CHECK(stamp >= before);
    CHECK(stamp <= after);
}

TEST_CASE("ReloadSettings tells what a watched value held when it arrived") {
    const EngineProcess engine;
    const TestValue value;
    const ComPtr<_Popup> popup = CreatePopup();
    const auto reload = [&] {
        CHECK(engine.control->ClearCalls() == S_OK);
        CHECK(popup->ReloadSettings() == S_OK);
        return engine.Calls();
    };
    CHECK(engine.control->put_WatchValue(Text(std::wstring(TestValue::kKey) + L"\\txtSpeed")) == S_OK);
    CHECK(reload() == L"ReloadSettings txtSpeed missing\r\n");
    // Settings are stored without a terminating NUL.
    TestValue::Write(REG_SZ, "1000", 4);
    CHECK(reload() == L"ReloadSettings txtSpeed=1000\r\n");
    TestValue::Write(REG_SZ, "500", 3);
    CHECK(reload() == L"ReloadSettings txtSpeed=500\r\n");
    TestValue::Write(REG_SZ, "", 0);
    CHECK(reload() == L"ReloadSettings txtSpeed=\r\n");
    const DWORD number = 5;
    TestValue::Write(REG_DWORD, &number, sizeof(number));
    CHECK(reload() == L"ReloadSettings txtSpeed unreadable\r\n");
    CHECK(engine.control->put_WatchValue(nullptr) == S_OK);
    CHECK(reload() == L"ReloadSettings\r\n");
}

TEST_CASE("The log lies in the user's own folder until told otherwise, and is not made by asking") {
    const EngineProcess engine;
    const wchar_t* const folder = _wgetenv(L"APPDATA");
    REQUIRE(folder != nullptr);
    CHECK(GetFileAttributesW(folder) != INVALID_FILE_ATTRIBUTES);
    const std::wstring path = std::wstring(folder) + L"\\Sentrel closed windows.log";
    DeleteFileW(path.c_str());
    CHECK(engine.LogFile() == path);
    CHECK(GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES);

    const TemporaryPath other;
    CHECK(engine.control->put_LogFile(Text(other.path)) == S_OK);
    CHECK(engine.LogFile() == other.path);
    CHECK(GetFileAttributesW(other.path.c_str()) == INVALID_FILE_ATTRIBUTES);
}

TEST_CASE("A closed pop-up is appended to the log as an ANSI line, then reported") {
    const EngineProcess engine;
    const TemporaryPath log;
    const ComPtr<_Popup> popup = CreatePopup();
    EventLog events(popup.Get());
    CHECK(engine.control->put_LogFile(Text(log.path)) == S_OK);
    CHECK(engine.control->ClosePopup(11, Text(L"http://one.example/caf\xe9")) == S_OK);
    CHECK(engine.control->ClosePopup(12, Text(L"http://two.example/")) == S_OK);
    CHECK(FileBytes(log.path) == ToAnsi(L"http://one.example/caf\xe9") + "\r\nhttp://two.example/\r\n");
    CHECK(events.events == Events{L"Killed 11 http://one.example/caf\xe9", L"Killed 12 http://two.example/"});
}

TEST_CASE("A log that cannot be written is an error, and nothing is reported") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    EventLog events(popup.Get());
    CHECK(engine.control->put_LogFile(Text(L"C:\\no such folder\\closed.log")) == S_OK);
    CHECK(engine.control->ClosePopup(1, Text(L"http://one.example/")) ==
          HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    PumpFor(200);
    CHECK(events.events.empty());
}

TEST_CASE("Started by hand, the engine that serves the clients opens its window") {
    const EngineProcess engine;
    const TemporaryPath log;
    const ComPtr<_Popup> popup = CreatePopup();
    EventLog events(popup.Get());
    CHECK(engine.control->put_LogFile(Text(log.path)) == S_OK);
    CHECK(EngineWindow() == nullptr);
    const std::vector<DWORD> serving = EngineProcesses();
    REQUIRE(serving.size() == 1);

    CHECK(RunProgram(kEngineProgram) == 0);
    REQUIRE(EngineWindow() != nullptr);
    CHECK(IsWindowVisible(EngineWindow()));
    DWORD owner = 0;
    GetWindowThreadProcessId(EngineWindow(), &owner);
    CHECK(owner == serving[0]);
    CHECK(EngineProcesses() == serving);
    CHECK(ControlText(IDC_STATE) == L"Running");

    Click(IDC_STOP);
    CHECK(PumpUntil([&] { return events.events == Events{L"Stopped"}; }));
    CHECK(ControlText(IDC_STATE) == L"Stopped");
    Click(IDC_PAUSE);
    CHECK(PumpUntil([&] { return events.events == Events{L"Stopped", L"Paused"}; }));
    CHECK(ControlText(IDC_STATE) == L"Paused");
    Click(IDC_START);
    CHECK(PumpUntil([&] { return events.events == Events{L"Stopped", L"Paused", L"Started"}; }));
    CHECK(ControlText(IDC_STATE) == L"Running");
    CHECK(engine.control->put_State(8) == S_OK);
    CHECK(ControlText(IDC_STATE) == L"State 8");

    const std::wstring address = ControlText(IDC_ADDRESS);
    CHECK(address.starts_with(L"http://"));
    Click(IDC_CLOSE_POPUP);
    CHECK(PumpUntil([&] { return events.events.size() == 4; }));
    CHECK(events.events.back() == L"Killed 0 " + address);
    CHECK(FileBytes(log.path) == ToAnsi(address) + "\r\n");
    EndEngine();
}

TEST_CASE("An open window keeps the engine running, closing it ends it") {
    EndEngine();
    CHECK(RunProgram(kEngineProgram) == 0);
    REQUIRE(EngineWindow() != nullptr);
    {
        const ComPtr<_Popup> popup = CreatePopup();
        CHECK(EngineProcesses().size() == 1);
    }
    PumpFor(500);
    CHECK(EngineProcesses().size() == 1);
    // A second start brings the same window to the front.
    const HWND window = EngineWindow();
    CHECK(RunProgram(kEngineProgram) == 0);
    CHECK(EngineWindow() == window);
    PostMessageW(window, WM_CLOSE, 0, 0);
    CHECK(EngineEnds());
}

TEST_CASE("Closing the window leaves an engine running that clients hold") {
    const EngineProcess engine;
    CHECK(engine.control->OpenWindow() == S_OK);
    REQUIRE(EngineWindow() != nullptr);
    PostMessageW(EngineWindow(), WM_CLOSE, 0, 0);
    CHECK(PumpUntil([] { return EngineWindow() == nullptr; }));
    CHECK(engine.State() == 1);
    CHECK(engine.control->OpenWindow() == S_OK);
    CHECK(EngineWindow() != nullptr);
    EndEngine();
}
