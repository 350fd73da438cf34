// In what order the manager starts, and what comes in while it does.
#include <doctest.h>

#include <cstring>
#include <utility>

#include "store/server_directory.h"
#include "tests/entry/start_journal.h"
#include "tests/entry/window_inside.h"
#include "tests/support/automation.h"
#include "tests/support/shown_text.h"

namespace {

struct Started : Journalled {
    Started() { Instance(FormHide); }
};

const ImportPatch* modulePath = nullptr;
bool atRoot = false;

// The first who asks for the program's path is told that it lies in the root of a drive.
DWORD WINAPI PathAtRoot(HMODULE module, LPWSTR path, DWORD size) {
    const bool isFirst = module == nullptr && std::exchange(atRoot, false);
    if (!isFirst) return modulePath->Original<decltype(&GetModuleFileNameW)>()(module, path, size);
    lstrcpynW(path, L"C:\\SentrelConfig.exe", static_cast<int>(size));
    return static_cast<DWORD>(lstrlenW(path));
}

}  // namespace

TEST_CASE_FIXTURE(
    Started,
    "the loader's path is built first, then come the window, the engine, the icon and the settings") {
    CHECK(journal.entries.at(0).text == "window");
    CHECK(journal.entries.at(0).loaderPath == ServerDirectory() + L"\\CalvaneConfigLoader.exe");
    CHECK(journal.Count("window") == 1);
    CHECK(journal.Count("page") == 6);
    CHECK(journal.Last("page") < journal.First("engine:CreateInstance"));
    CHECK(journal.First("engine:CreateInstance") < journal.First("engine:CreatePopup"));
    CHECK(journal.First("engine:CreatePopup") < journal.First("engine:State"));
    CHECK(journal.Count("icon:0") == 1);
    CHECK(journal.First("engine:State") < journal.First("icon:0"));
    CHECK(journal.First("icon:0") < journal.First("open:Software\\Calvane\\Settings"));
    CHECK(journal.Last("read:1Name") < journal.First("engine:LogFile"));
    CHECK(journal.First("engine:LogFile") < journal.First("read:Startup"));
    CHECK(journal.engine.script.mode == 2);
    CHECK(journal.engine.script.configHwnd == g_lngConfigHwnd);
}

TEST_CASE_FIXTURE(Started, "the defaults are all written before any setting is read") {
    const int lastWrite = journal.Last("write:First Time");
    CHECK(journal.Count("write:First Time") == 1);
    int reads = 0;
    for (int i = 0; i < static_cast<int>(journal.entries.size()); ++i) {
        const std::string& text = journal.entries[static_cast<size_t>(i)].text;
        CAPTURE(text);
        if (text.starts_with("write:")) CHECK(i <= lastWrite);
        if (!text.starts_with("read:")) continue;
        CHECK(i > lastWrite);
        ++reads;
    }
    CHECK(reads > 40);
}

TEST_CASE_FIXTURE(Started, "the window's handle is stored when the window has been loaded, not before") {
    for (const auto& entry : journal.entries) {
        CAPTURE(entry.text);
        CHECK(entry.configHwnd == 0);
    }
    CHECK(IsWindow(Window()));
    Variant handle;
    CHECK(g_oConfig->get_ConfigHwnd(handle.Receive()) == S_OK);
    CHECK(handle.Value().vt == VT_I4);
    CHECK(handle.Value().lVal == g_lngConfigHwnd);
}

TEST_CASE_FIXTURE(Started,
                  "the icon is added to the hooked window with an empty tip, and gets its tip after that") {
    REQUIRE(journal.iconCalls.size() == 1);
    const StartJournal::IconCall& call = journal.iconCalls[0];
    CHECK(call.isHooked);
    const auto number = [&](size_t offset) {
        LONG value = 0;
        std::memcpy(&value, call.record.data() + offset, sizeof(value));
        return value;
    };
    CHECK(number(4) == g_lngConfigHwnd);
    CHECK(number(16) == 1025);
    CHECK(call.record.substr(24) == std::string(1, '\0') + std::string(63, ' '));
    ComPtr<IDispatch> icon;
    REQUIRE(g_frmConfig->get_m_oShellIcon(&icon) == S_OK);
    CHECK(ToText(Get(icon.Get(), L"ToolTip")) == L"Calvane Sentrel");
}

TEST_CASE("a server in a drive's root gets a loader path with a doubled separator") {
    InsideWithoutEngine inside;
    g_oConfig = MakeObject<Config>();
    const ImportPatch path("kernel32.dll", "GetModuleFileNameW", &PathAtRoot);
    modulePath = &path;
    atRoot = true;
    g_oConfig->Initialise();
    CHECK_FALSE(atRoot);
    CHECK(g_strLoaderPath == L"C:\\\\CalvaneConfigLoader.exe");
}

TEST_CASE(
    "a second client that asks while the engine is being connected gets the same Config, and what it asks "
    "the window for is done as soon as that is loaded") {
    const struct {
        const char* moment;
        long showType;
        bool isShown;
        int tab = 0;
    } rows[] = {
        {"CreateInstance", formShow, true}, {"CreatePopup", formShow, true},
        {"LogFile", formShow, true},        {"CreatePopup", kShowAbout, true, 5},
        {"CreatePopup", FormHide, false},   {"CreatePopup", 0, false},
        {"CreatePopup", 4, false},
    };
    for (const auto& [moment, showType, isShown, tab] : rows) {
        CAPTURE(moment);
        CAPTURE(showType);
        Journalled inside;
        const StartJournal& journal = inside.journal;
        ComPtr<IDispatch> nested;
        inside.journal.engine.script.within[moment] = [&, asked = showType] {
            if (nested != nullptr) return;
            CHECK(inside.Instance(asked, nested) == S_OK);
            CHECK_FALSE(IsShown());
        };
        const auto config = inside.Instance(FormHide);
        CHECK(nested != nullptr);
        CHECK(nested.Get() == config.Get());
        CHECK(journal.Count("window") == 1);
        CHECK(journal.engine.script.Count("CreatePopup") == 1);
        CHECK(journal.Count("read:chkPlaySound") == 1);
        CHECK(journal.Count("icon:0") == 1);
        CHECK(g_lngClientCount == 2);
        CHECK(IsShown() == isShown);
        CHECK(SelectedTab() == tab);
    }
}
