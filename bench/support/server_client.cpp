#include "bench/support/server_client.h"

#include <objbase.h>

#include <stdexcept>

#include "platform/automation_error.h"
#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/support/automation.h"
#include "tests/support/program.h"

namespace {

// A busy machine may keep a process long.
constexpr DWORD kEndMilliseconds = 60000;

constexpr int kEngineTries = 20;
constexpr DWORD kEngineMilliseconds = 500;

}  // namespace

BareServerRegistration::BareServerRegistration(const BareServerIdentity& server) {
    wchar_t id[40];
    StringFromGUID2(server.classId, id, 40);
    m_key = L"Software\\Classes\\CLSID\\" + std::wstring(id);
    const std::wstring command = L'"' + ServerDirectory() + L'\\' + server.program + L'"';
    if (RegSetKeyValueW(HKEY_LOCAL_MACHINE, (m_key + L"\\LocalServer32").c_str(), nullptr, REG_SZ,
                        command.c_str(),
                        static_cast<DWORD>((command.size() + 1) * sizeof(wchar_t))) != ERROR_SUCCESS) {
        throw std::runtime_error("a bare server cannot be registered");
    }
}

BareServerRegistration::~BareServerRegistration() {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, m_key.c_str());
}

NoEngineRegistered::NoEngineRegistered() {
    RunProgram(L"SentrelStandin.exe", L"/UnregServer");
}

NoEngineRegistered::~NoEngineRegistered() {
    RunProgram(L"SentrelStandin.exe", L"/RegServer");
}

// One that has just ended may still be offered by COM.
ComPtr<IDispatch> StartEngine() {
    for (int tries = 0; tries < kEngineTries; ++tries) {
        ComPtr<IDispatch> control;
        const bool isStarted = ResumeNext([&] {
            control = CreateByName(L"SentrelStandin.Control");
            Call(control.Get(), L"Reset");
        });
        if (isStarted) return control;
        Sleep(kEngineMilliseconds);
    }
    throw std::runtime_error("the engine does not start");
}

// It sends no reply.
void EndEngine(IDispatch* control) {
    ResumeNext([&] { Call(control, L"Quit"); });
}

ServerClient::~ServerClient() {
    if (m_control != nullptr) m_control->ReleaseConfig();
}

void ServerClient::Create() {
    ThrowIfFailed(CoCreateInstance(m_classId, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&m_control)));
}

void ServerClient::Activate(long showType) {
    if (m_control == nullptr) Create();
    m_config.Reset();
    ThrowIfFailed(m_control->ConfigInstance(&showType, &m_config));
}

void ServerClient::End() {
    if (m_control == nullptr) return;
    m_control->ReleaseConfig();
    m_config.Reset();
    m_control.Reset();
    if (!ProgramEnds(m_program, kEndMilliseconds)) {
        throw std::runtime_error("does not end: " + ToAnsi(m_program));
    }
}
