// An engine in this process, offered where the manager creates the real one.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/com/variant.h"
#include "sentrel1.h"
#include "tests/support/import_fake.h"

// What the engine was asked, and what it returns.
struct EngineScript {
    // The calls in order: "CreateInstance", "CreatePopup", "Advise", "State", "Start", ..., "Popup gone".
    std::vector<std::string> calls;

    // The result of each call of that name; S_OK where nothing is set. S_FALSE: it creates nothing.
    std::map<std::string, HRESULT> results;

    // What runs within each call of that name; and when the call has its result and has not returned yet.
    // Also of "Unadvise", which is not among the calls.
    std::map<std::string, std::function<void()>> within;
    std::map<std::string, std::function<void()>> behind;

    LONG state = 1;
    std::wstring logFile = L"C:\\Sentrel\\closed.log";

    // The arguments of the last CreatePopup and ReleasePopup.
    LONG configHwnd = 0;
    LONG configForm = 0;
    LONG mode = 0;

    int Count(const std::string& name) const;
};

class FakePopup;

// While it exists, CoCreateInstance gives its application. One at a time.
class FakeEngine {
public:
    EngineScript script;

    // What CoCreateInstance was asked for.
    CLSID classId{};
    DWORD context = 0;

    // The engine object while somebody holds it; null otherwise.
    FakePopup* popup = nullptr;

    // Raises an event of the engine object.
    void Raise(DISPID event, std::vector<Variant> arguments = {});
    size_t ConnectionCount() const;

private:
    HRESULT Create(REFIID id, void** object);

    const ImportFake<"CoCreateInstance", decltype(&CoCreateInstance)> m_create{
        "ole32.dll", [this](REFCLSID itsClassId, IUnknown*, DWORD itsContext, REFIID id, void** object) {
            classId = itsClassId;
            context = itsContext;
            return Create(id, object);
        }};
};
