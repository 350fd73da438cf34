// The manager in the test's own process, with an engine, a shell and a store of its own, and every call of
// Windows counted.
#pragma once

#include <doctest.h>

#include <string>
#include <vector>

#include "tests/call_counts/import_counter.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/entry/inside.h"
#include "tests/support/message_pump.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"
#include "tests/tray_icon/shell_calls.h"

namespace doctest {

template <>
struct StringMaker<CallCounts> {
    static String convert(const CallCounts& counts) {
        std::string text;
        for (const auto& [name, count] : counts)
            text += name + " x " + std::to_string(count) + ", ";
        return text.c_str();
    }
};

}  // namespace doctest

using EngineCalls = std::vector<std::string>;

struct CountedManager {
    CountedManager() { engine.script.logFile = folder.Path(L"closed.log"); }

    // Starts the manager, hidden, and forgets what that called.
    void Start() {
        config = inside.Instance(FormHide);
        Forget();
    }

    void Forget() {
        engine.script.calls.clear();
        shell.calls.clear();
    }

    HWND Control(const wchar_t* name) {
        LONG window = 0;
        BSTR text = SysAllocString(name);
        CHECK(g_frmConfig->ControlHwnd(text, &window) == S_OK);
        SysFreeString(text);
        return static_cast<HWND>(LongToHandle(window));
    }

    // Counts what a press of the button calls.
    void Press(const wchar_t* name) {
        const HWND button = Control(name);
        EnableWindow(button, TRUE);
        Forget();
        counter.Count([&] { SendMessageW(button, BM_CLICK, 0, 0); });
    }

    TestFolder folder;
    FakeEngine engine;
    ShellCalls shell;
    Inside inside;
    ComPtr<IDispatch> config;
    ImportCounter counter;
};

// What the registry is asked, as a number of readings, writings and deletions.
struct StoreWork {
    int read = 0;         // values that are there
    int missing = 0;      // values that are not, in keys that are there
    int missingKeys = 0;  // values of keys that are not there
    int written = 0;
    int deleted = 0;  // whether they were there or not, in keys that are there

    // A reading opens the key, asks for the size, the class and the data, and closes the key and its root; a
    // value that is not there leaves its key open. A writing creates or opens the key and sets the value. A
    // deletion opens the key, deletes the value and closes the key.
    CallCounts Calls() const {
        CallCounts calls;
        const auto add = [&](const char* function, int count) {
            if (count != 0) calls[function] = count;
        };
        add("RegOpenKeyExA", read + missing + missingKeys + deleted);
        add("RegQueryValueExA", 2 * (read + missing));
        add("RegQueryInfoKeyA", read + missing);
        add("RegCloseKey", 2 * read + missing + deleted);
        add("RegCreateKeyExA", written);
        add("RegSetValueExA", written);
        add("RegDeleteValueA", deleted);
        return calls;
    }
};

// The options in the Settings key: two check boxes, two texts; and the startup mode, the pause key and the
// sound file.
inline constexpr int kOptions = 4;
inline constexpr int kOtherSettings = 3;

// The fields of an entry.
inline constexpr int kBannerFields = 4;
inline constexpr int kSearchFields = 3;

// What one reading of a log calls, of so many blocks.
inline CallCounts ReadingOf(int blocks) {
    CallCounts calls{{"CreateFileW", 1}, {"GetFileType", 1}, {"GetFileSizeEx", 1}, {"CloseHandle", 1}};
    if (blocks != 0) calls["SetFilePointerEx"] = calls["ReadFile"] = blocks;
    return calls;
}
