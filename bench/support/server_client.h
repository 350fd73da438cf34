// A client of the manager or of a bare server, each in a process of its own.
#pragma once

#include <windows.h>

#include <string>

#include "bench/bare_server/bare_server.h"
#include "platform/com/com_ptr.h"
#include "sentrel_config.h"

// Registers a bare server, which lies beside this program, for as long as it exists.
class BareServerRegistration {
public:
    explicit BareServerRegistration(const BareServerIdentity& server);
    BareServerRegistration(const BareServerRegistration&) = delete;
    BareServerRegistration& operator=(const BareServerRegistration&) = delete;
    ~BareServerRegistration();

private:
    std::wstring m_key;
};

// Takes the stand-in engine out of the registry for as long as it exists.
class NoEngineRegistered {
public:
    NoEngineRegistered();
    NoEngineRegistered(const NoEngineRegistered&) = delete;
    NoEngineRegistered& operator=(const NoEngineRegistered&) = delete;
    ~NoEngineRegistered();
};

// Starts the stand-in engine and returns its own controls. Throws std::runtime_error when it does not start.
ComPtr<IDispatch> StartEngine();

// Ends it.
void EndEngine(IDispatch* control);

class ServerClient {
public:
    ServerClient(const CLSID& classId, const wchar_t* program) : m_classId(classId), m_program(program) {}
    explicit ServerClient(const BareServerIdentity& server) : ServerClient(server.classId, server.program) {}
    // The manager.
    ServerClient() : ServerClient(__uuidof(ConfigControl), L"SentrelConfig.exe") {}
    ServerClient(const ServerClient&) = delete;
    ServerClient& operator=(const ServerClient&) = delete;
    ~ServerClient();

    // Creates the class, which starts the process where none runs. Throws AutomationError.
    void Create();

    // Creates the class where that has not been done, and calls ConfigInstance. Throws AutomationError.
    void Activate(long showType);

    // Ends the process and waits until it is gone. Throws std::runtime_error when it does not go.
    void End();

    const wchar_t* Program() const { return m_program; }

private:
    const CLSID m_classId;
    const wchar_t* const m_program;
    ComPtr<_ConfigControl> m_control;
    ComPtr<IDispatch> m_config;
};
