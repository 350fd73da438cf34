// The programs of a pair across processes: the delivered manager, the stand-in engine and its log.
#pragma once

#include <windows.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/text.h"
#include "tests/engine/session.h"
#include "tests/support/automation.h"
#include "tests/support/other_process.h"
#include "tests/support/plain_log.h"
#include "tests/support/program.h"
#include "tests/support/test_folder.h"

// What the manager shows of a log.
struct Log {
    TestFolder folder;
    std::wstring path = folder.Write(L"closed.log", RepeatingLog());
    Rows newest = [] {
        Rows rows;
        for (const std::string& line : PlainNewestLines(RepeatingLog(), 25))
            rows.push_back(FromAnsi(line));
        return rows;
    }();
};

// A manager, and what a pair needs of it. The window is not made yet.
struct Stage : Session {
    explicit Stage(const Log& log) {
        Put(engine.Control(), L"LogFile", log.path);
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
