#include "tests/support/manager.h"

#include <stdexcept>

#include "platform/automation_error.h"
#include "platform/text.h"
#include "tests/support/automation.h"
#include "tests/support/other_process.h"
#include "tests/support/program.h"

namespace {

constexpr wchar_t kProgram[] = L"SentrelConfig.exe";
constexpr wchar_t kRootKey[] = L"Software\\Calvane";

std::wstring PathOf(const std::wstring& key) {
    return std::wstring(kRootKey) + L"\\" + key;
}

HWND WindowIn(const Variant& value) {
    return static_cast<HWND>(LongToHandle(ToLong(value)));
}

}  // namespace

Manager::Manager(bool keepSettings, Start start) {
    if (!keepSettings) DeleteSettings();
    if (start == Start::Ahead) StartServerAhead(kProgram);
    Connect();
}

Manager::Manager(const std::wstring& library, bool keepSettings) {
    if (!keepSettings) DeleteSettings();
    if (!ProgramEnds(kProgram)) throw std::runtime_error("an earlier manager does not end");
    CloseHandle(StartServerWith(kProgram, library));
    Connect();
}

void Manager::Connect() {
    ThrowIfFailed(
        CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&m_control)));
    KeepProcessIds(kProgram);
}

Manager::~Manager() {
    if (m_control != nullptr) m_control->ReleaseConfig();
    if (m_process && !WaitForEnd()) TerminateProcess(m_process.Get(), 1);
}

ComPtr<IDispatch> Manager::Instance(long showType) {
    ComPtr<IDispatch> config;
    ThrowIfFailed(m_control->ConfigInstance(&showType, &config));
    m_config = config;
    if (!m_process) {
        DWORD process = 0;
        GetWindowThreadProcessId(Window(), &process);
        WatchForCrash(process);
        m_process.Reset(
            OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE | PROCESS_QUERY_INFORMATION, FALSE, process));
    }
    return config;
}

HWND Manager::Window() {
    if (m_config == nullptr) Instance(FormHide);
    return WindowIn(Get(m_config.Get(), L"ConfigHwnd"));
}

ComPtr<IDispatch> Manager::Form() {
    if (m_config == nullptr) Instance(FormHide);
    return ObjectIn(Get(m_config.Get(), L"ConfigForm"));
}

HWND Manager::Control(const wchar_t* name) {
    return WindowIn(Call(Form().Get(), L"ControlHwnd", {name}));
}

void Manager::Click(const wchar_t* name) {
    SendMessageW(Control(name), BM_CLICK, 0, 0);
}

void Manager::Type(const wchar_t* name, const std::wstring& text) {
    TypeInto(Control(name), text);
}

std::wstring Manager::Text(const wchar_t* name) {
    return ShownText(Control(name));
}

void Manager::LetGo() {
    m_config.Reset();
    m_control.Reset();
}

bool Manager::WaitForEnd(DWORD milliseconds) {
    if (!m_process) throw std::runtime_error("the manager's process is not known");
    // The apartment must serve calls meanwhile: the manager may be releasing what this process gave it.
    return PumpUntil([this] { return WaitForSingleObject(m_process.Get(), 0) == WAIT_OBJECT_0; },
                     milliseconds);
}

bool Manager::Running() {
    return !WaitForEnd(0);
}

void DeleteSettings() {
    RegDeleteTreeW(HKEY_CURRENT_USER, kRootKey);
}

std::wstring Setting(const std::wstring& key, const std::wstring& value) {
    std::string bytes(1 << 16, '\0');
    DWORD size = static_cast<DWORD>(bytes.size());
    if (RegGetValueA(HKEY_CURRENT_USER, ToAnsi(PathOf(key)).c_str(), ToAnsi(value).c_str(), RRF_RT_ANY,
                     nullptr, bytes.data(), &size) != ERROR_SUCCESS) {
        throw std::runtime_error("no setting " + ToAnsi(value));
    }
    return FromAnsi(bytes.c_str());
}
