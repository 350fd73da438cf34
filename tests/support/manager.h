// The real manager in a process of its own, started and driven as its clients and its user do.
#pragma once

#include <windows.h>

#include <string>

#include "platform/com/com_ptr.h"
#include "platform/handle.h"
#include "tests/support/crash_watch.h"
#include "tests/support/message_pump.h"
#include "sentrel_config.h"

struct ProcessTraits : NullHandleTraits<HANDLE> {
    static void Close(Type handle) noexcept { CloseHandle(handle); }
};
using ProcessHandle = UniqueHandle<ProcessTraits>;

// A client of the manager. Its end ends the manager too.
class Manager {
public:
    // Who starts the process: COM, or the test, which is quicker.
    enum class Start { ByCom, Ahead };

    // Starts the manager where none runs. No settings of an earlier test are left unless keepSettings.
    explicit Manager(bool keepSettings = false, Start start = Start::ByCom);

    // Starts a manager, no other running any longer, that loads a library before it runs.
    explicit Manager(const std::wstring& library, bool keepSettings = false);
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;
    ~Manager();

    _ConfigControl* Control() const { return m_control.Get(); }

    // ConfigInstance; throws AutomationError.
    ComPtr<IDispatch> Instance(long showType);

    // The window, its form object and its controls by name. Each calls ConfigInstance(2) first where that has
    // not been done.
    HWND Window();
    ComPtr<IDispatch> Form();
    HWND Control(const wchar_t* name);

    // What a user does to a control.
    void Click(const wchar_t* name);
    void Type(const wchar_t* name, const std::wstring& text);
    std::wstring Text(const wchar_t* name);

    // Forgets the references without calling the manager, as a client that ends does.
    void LetGo();

    // Waits for the process to end; false when it does not. Known from the first Window() on.
    bool WaitForEnd(DWORD milliseconds = kPatience);
    bool Running();

private:
    void Connect();

    ComPtr<_ConfigControl> m_control;
    ComPtr<IDispatch> m_config;
    ProcessHandle m_process;
};

// Settings in the registry of the test's user, which the manager shares.
void DeleteSettings();
std::wstring Setting(const std::wstring& key, const std::wstring& value);

// Polls a condition about another process. False when it does not hold within the time, or when the manager
// crashes.
template <class Condition>
bool WaitUntil(Condition&& condition, DWORD milliseconds = kPatience) {
    for (const DWORD start = GetTickCount(); GetTickCount() - start < milliseconds; Sleep(10)) {
        if (condition()) return true;
        if (HasCrashed()) return false;
    }
    return condition();
}
