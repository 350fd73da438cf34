// The programs of a pair across processes: the delivered manager, the stand-in engine and its log.
#pragma once

#include <windows.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/engine/session.h"
#include "tests/support/automation.h"
#include "tests/support/plain_log.h"
#include "tests/support/program.h"

inline constexpr size_t kLogRows = 25;

// A log that has equal lines, and more than are shown.
class Log {
public:
    Log();
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;
    ~Log() { DeleteFileW(m_path.c_str()); }

    const std::wstring& Path() const noexcept { return m_path; }
    const Lines& Newest() const noexcept { return m_newest; }

private:
    std::wstring m_path;
    Lines m_newest;
};

// A manager, and what a pair needs of it. The window is not made yet.
struct Stage : Session {
    explicit Stage(const Log& log) {
        Put(engine.Control(), L"LogFile", log.Path());
        engine.RaiseByItself(false);
        process = ProcessesOf(L"SentrelConfig.exe").at(0);
    }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage() { Join(); }

    void Join() {
        if (starter.joinable()) starter.join();
    }

    // The configuration windows of the process.
    std::vector<HWND> Windows() const;
    HWND TheWindow() const {
        const std::vector<HWND> windows = Windows();
        return windows.empty() ? nullptr : windows.front();
    }

    ComPtr<IDispatch> Icon() { return ObjectIn(Get(manager.Form().Get(), L"m_oShellIcon")); }

    DWORD process = 0;
    std::thread starter;  // another client
    HWND dialog = nullptr;
};
