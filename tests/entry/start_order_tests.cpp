// In what order the manager starts, and what comes in while it does.
#include <doctest.h>

#include <cstring>

#include "app/resource.h"
#include "tests/entry/inside.h"
#include "tests/entry/start_journal.h"
#include "tests/support/automation.h"
#include "tests/support/shown_text.h"

namespace {

constexpr char kSettingsOpened[] = "open:Software\\Calvane\\Settings";

const ImportPatch* modulePath = nullptr;
bool atRoot = false;

// The first who asks for the program's path is told that it lies in the root of a drive.
DWORD WINAPI PathAtRoot(HMODULE module, LPWSTR path, DWORD size) {
    if (!atRoot || module != nullptr) {
        return modulePath->Original<decltype(&GetModuleFileNameW)>()(module, path, size);
    }
    atRoot = false;
    lstrcpynW(path, L"C:\\SentrelConfig.exe", static_cast<int>(size));
    return static_cast<DWORD>(lstrlenW(path));
}

std::wstring FolderOfThisProgram() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring folder(path);
    folder.resize(folder.find_last_of(L'\\'));
    return folder;
}

bool IsShown() {
    VARIANT_BOOL visible = VARIANT_FALSE;
    CHECK(g_frmConfig->get_Visible(&visible) == S_OK);
    return visible == VARIANT_TRUE;
}

}  // namespace

TEST_CASE("the loader's path is built first, then come the window, the engine, the icon and the settings") {
    Inside inside;
    StartJournal journal;
    inside.Instance(FormHide);

    const std::wstring loader = FolderOfThisProgram() + L"\\CalvaneConfigLoader.exe";
    REQUIRE_FALSE(journal.entries.empty());
    CHECK(journal.entries.front().text == "window");
    CHECK(journal.entries.front().loaderPath == loader);
    CHECK(g_strLoaderPath == loader);

    CHECK(journal.Count("window") == 1);
    CHECK(journal.Count("page") == 6);
    CHECK(journal.Last("page") < journal.First("engine:CreateInstance"));
    CHECK(journal.First("engine:CreateInstance") < journal.First("engine:CreatePopup"));
    CHECK(journal.First("engine:CreatePopup") < journal.First("engine:State"));
    CHECK(journal.Count("icon:0") == 1);
    CHECK(journal.First("engine:State") < journal.First("icon:0"));
    CHECK(journal.First("icon:0") < journal.First(kSettingsOpened));
    CHECK(journal.Last("write:First Time") < journal.First("engine:LogFile"));
    CHECK(journal.Last("read:1Name") < journal.First("engine:LogFile"));
    CHECK(journal.First("engine:LogFile") < journal.First("read:Startup"));
    CHECK(journal.engine.script.mode == 2);
    CHECK(journal.engine.script.configHwnd == g_lngConfigHwnd);
}

TEST_CASE("the icon is added to the hooked window with an empty tip, and gets its tip after that") {
    Inside inside;
    StartJournal journal;
    inside.Instance(FormHide);
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

TEST_CASE("the defaults are all written before any setting is read") {
    Inside inside;
    StartJournal journal;
    inside.Instance(FormHide);

    const int lastWrite = journal.Last("write:First Time");
    REQUIRE(lastWrite > 0);
    CHECK(journal.Count("write:First Time") == 1);
    // The key is missing: it is asked for once.
    const int asked = journal.First(kSettingsOpened);
    REQUIRE(asked >= 0);
    CHECK(asked < journal.First("write:chkBeep"));
    int reads = 0;
    for (int i = 0; i < static_cast<int>(journal.entries.size()); ++i) {
        const std::string& text = journal.entries[static_cast<size_t>(i)].text;
        CAPTURE(text);
        if (text.starts_with("write:")) CHECK(i <= lastWrite);
        if (text.starts_with("open:") && i != asked) CHECK(i > lastWrite);
        if (text.starts_with("read:")) {
            CHECK(i > lastWrite);
            ++reads;
        }
    }
    CHECK(reads > 40);
    CHECK(journal.Count("read:1Name") == 2);
    CHECK(journal.First("read:chkPlaySound") < journal.First("read:chkBeep"));
}

TEST_CASE("a store that has its defaults is only read") {
    Inside inside;
    inside.user.Write(L"Software\\Calvane\\Settings", L"First Time", L"no");
    StartJournal journal;
    inside.Instance(FormHide);
    CHECK(journal.Count("read:First Time") == 1);
    for (const auto& entry : journal.entries) {
        CAPTURE(entry.text);
        CHECK_FALSE(entry.text.starts_with("write:"));
    }
}

TEST_CASE("the window's handle is stored when the window has been loaded, not before") {
    Inside inside;
    StartJournal journal;
    const auto config = inside.Instance(FormHide);
    for (const auto& entry : journal.entries) {
        CAPTURE(entry.text);
        CHECK(entry.configHwnd == 0);
    }
    CHECK(IsWindow(reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd))));
    Variant handle;
    CHECK(g_oConfig->get_ConfigHwnd(handle.Receive()) == S_OK);
    CHECK(handle.Value().vt == VT_I4);
    CHECK(handle.Value().lVal == g_lngConfigHwnd);
}

TEST_CASE("a server in a drive's root gets a loader path with a doubled separator") {
    Inside inside;
    const ImportPatch noEngine("ole32.dll", "CoCreateInstance", &NoEngine);
    g_oConfig = MakeObject<Config>();
    const ImportPatch path("kernel32.dll", "GetModuleFileNameW", &PathAtRoot);
    modulePath = &path;
    atRoot = true;
    g_oConfig->Initialise();
    CHECK_FALSE(atRoot);
    CHECK(g_strLoaderPath == L"C:\\\\CalvaneConfigLoader.exe");
}

TEST_CASE(
    "a second client that asks while the engine is being connected gets the same Config and no window yet") {
    Inside inside;
    StartJournal journal;
    for (const char* const moment : {"CreateInstance", "CreatePopup", "LogFile"}) {
        SUBCASE(moment) {
            ComPtr<IDispatch> nested;
            bool shown = true;
            size_t windows = 0;
            journal.engine.script.within[moment] = [&] {
                if (nested != nullptr) return;
                const auto other = MakeObject<ConfigControl>();
                long showType = formShow;
                CHECK(other->ConfigInstance(&showType, &nested) == S_OK);
                shown = IsShown();
                windows = static_cast<size_t>(journal.Count("window"));
            };
            const auto config = inside.Instance(FormHide);
            CHECK(nested != nullptr);
            CHECK(nested.Get() == config.Get());
            CHECK(windows == 1);
            CHECK_FALSE(shown);
            CHECK(journal.Count("window") == 1);
            CHECK(journal.Count("engine:CreatePopup") + (std::string(moment) == "CreatePopup" ? 1 : 0) == 1);
            CHECK(journal.Count("read:chkPlaySound") == 1);
            CHECK(journal.Count("icon:0") == 1);
            CHECK(g_lngClientCount == 2);
            // What was asked for meanwhile is done as soon as the window is loaded.
            CHECK(IsShown());
        }
    }
}

TEST_CASE("a second client that asks for the About page while the engine is being connected gets it") {
    Inside inside;
    StartJournal journal;
    journal.engine.script.within["CreatePopup"] = [] {
        long showType = kShowAbout;
        ComPtr<IDispatch> nested;
        CHECK(MakeObject<ConfigControl>()->ConfigInstance(&showType, &nested) == S_OK);
    };
    inside.Instance(FormHide);
    CHECK(IsShown());
    const HWND tabs = GetDlgItem(reinterpret_cast<HWND>(static_cast<LONG_PTR>(g_lngConfigHwnd)), IDC_TAB);
    CHECK(SendMessageW(tabs, TCM_GETCURSEL, 0, 0) == 5);
}

TEST_CASE("a second client that hides nothing leaves the window hidden") {
    Inside inside;
    StartJournal journal;
    journal.engine.script.within["CreatePopup"] = [] {
        for (long showType : {2L, 0L, 4L}) {
            ComPtr<IDispatch> nested;
            CHECK(MakeObject<ConfigControl>()->ConfigInstance(&showType, &nested) == S_OK);
        }
    };
    inside.Instance(FormHide);
    CHECK_FALSE(IsShown());
}
