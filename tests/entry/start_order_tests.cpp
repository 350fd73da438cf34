// In what order the manager starts, and what comes in while it does.
#include <doctest.h>

#include "store/server_directory.h"
#include "tests/entry/journalled.h"

TEST_CASE_FIXTURE(
    Journalled,
    "the loader's path is built first, then come the window, the engine, the icon, the defaults and the "
    "settings; the window's handle is stored when all is there") {
    atEntry = [] {
        CHECK(g_strLoaderPath == ServerDirectory() + L"\\CalvaneConfigLoader.exe");
        CHECK(g_lngConfigHwnd == 0);
    };
    Instance(FormHide);
    atEntry = nullptr;
    int before = -1;
    for (const std::string entry :
         {"window", "page", "engine:CreateInstance", "engine:CreatePopup", "engine:State", "icon:0",
          "write:First Time", "read:1Name", "engine:LogFile", "read:Startup"}) {
        CAPTURE(entry);
        CHECK(First(entry) > before);
        before = Last(entry);
    }
    CHECK(Count("window") == 1);
    CHECK(Count("page") == 6);
    CHECK(Count("icon:0") == 1);
    CHECK(First("icon:0") < First("open:Software\\Calvane\\Settings"));
    // Nothing is read before the last default is written, and nothing is written behind it.
    for (size_t i = 0; i < entries.size(); ++i) {
        CAPTURE(entries[i]);
        const bool isBehind = static_cast<int>(i) > Last("write:First Time");
        CHECK_FALSE(entries[i].starts_with(isBehind ? "write:" : "read:"));
    }

    CHECK(engine.script.mode == 2);
    CHECK(engine.script.configHwnd == g_lngConfigHwnd);
    CHECK(IsWindow(Window()));
    Variant handle;
    CHECK(g_oConfig->get_ConfigHwnd(handle.Receive()) == S_OK);
    CHECK(handle.Value().vt == VT_I4);
    CHECK(handle.Value().lVal == g_lngConfigHwnd);
}

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "a server in a drive's root gets a loader path with a doubled separator") {
    g_oConfig = MakeObject<Config>();
    bool isAsked = false;
    const ImportFake<"GetModuleFileNameW", decltype(&GetModuleFileNameW)> path{
        "kernel32.dll", [&](HMODULE module, LPWSTR text, DWORD size) {
            // Others ask behind the first one.
            if (module != nullptr || std::exchange(isAsked, true)) return path.Original(module, text, size);
            lstrcpynW(text, L"C:\\SentrelConfig.exe", static_cast<int>(size));
            return static_cast<DWORD>(lstrlenW(text));
        }};
    g_oConfig->Initialise();
    CHECK(g_strLoaderPath == L"C:\\\\CalvaneConfigLoader.exe");
}

TEST_CASE(
    "a second client that asks while the engine is being connected gets the same Config, and what it asks "
    "the window for is done as soon as that is loaded") {
    struct Row {
        std::string moment;
        long showType;
        bool isShown;
        int tab;
    };
    for (const Row& row : {Row{"CreateInstance", formShow, true, 0}, Row{"LogFile", formShow, true, 0},
                           Row{"CreatePopup", kShowAbout, true, 5}, Row{"CreatePopup", FormHide, false, 0}}) {
        CAPTURE(row.moment);
        CAPTURE(row.showType);
        Journalled inside;
        ComPtr<IDispatch> nested;
        inside.LetIn(row.moment, [&] {
            CHECK(inside.Instance(row.showType, nested) == S_OK);
            CHECK_FALSE(IsShown());
        });
        const auto config = inside.Instance(FormHide);
        CHECK(nested != nullptr);
        CHECK(nested.Get() == config.Get());
        CHECK(inside.Count("window") == 1);
        CHECK(inside.engine.script.Count("CreatePopup") == 1);
        CHECK(inside.Count("read:chkPlaySound") == 1);
        CHECK(inside.Count("icon:0") == 1);
        CHECK(g_lngClientCount == 2);
        CHECK(IsShown() == row.isShown);
        CHECK(SelectedTab() == row.tab);
    }
}
