#include <windows.h>
#include <commctrl.h>

#include <string>

#include "store/settings_schema.h"
#include "tests/support/import_patch.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

// What a user without rights to the machine's settings sees: its keys can be read, but not opened for
// writing.
LONG(WINAPI* g_createKey)(HKEY, LPCSTR, DWORD, LPSTR, DWORD, REGSAM, LPSECURITY_ATTRIBUTES, PHKEY, LPDWORD);
LONG(WINAPI* g_openKey)(HKEY, LPCSTR, DWORD, REGSAM, PHKEY);

LONG WINAPI RefusingCreateKey(HKEY root, LPCSTR path, DWORD reserved, LPSTR keyClass, DWORD options,
                              REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY key, LPDWORD disposition) {
    if (root == HKEY_LOCAL_MACHINE) return ERROR_ACCESS_DENIED;
    return g_createKey(root, path, reserved, keyClass, options, access, security, key, disposition);
}

LONG WINAPI RefusingOpenKey(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key) {
    if (root == HKEY_LOCAL_MACHINE && (access & KEY_SET_VALUE) != 0) return ERROR_ACCESS_DENIED;
    return g_openKey(root, path, options, access, key);
}

class NoMachineRights {
public:
    NoMachineRights() {
        g_createKey = m_create.Original<decltype(g_createKey)>();
        g_openKey = m_open.Original<decltype(g_openKey)>();
    }

private:
    ImportPatch m_create{"advapi32.dll", "RegCreateKeyExA", &RefusingCreateKey};
    ImportPatch m_open{"advapi32.dll", "RegOpenKeyExA", &RefusingOpenKey};
};

struct Stored {
    const wchar_t* text;        // null: no value
    const wchar_t* remembered;  // after the reading, when nothing was remembered before it; null: unchanged
};

constexpr Stored kStored[] = {
    {nullptr, L"Manual"},     {L"", nullptr},         {L"Startup", L"Startup"},
    {L"RunOnly", L"RunOnly"}, {L"Manual", L"Manual"}, {L"startup", nullptr},
    {L"MANUAL", nullptr},     {L"Startup ", nullptr}, {L"Something", nullptr},
};

constexpr const wchar_t* kModes[] = {L"Startup", L"RunOnly", L"Manual"};
constexpr const wchar_t* kOldRunData = L"C:\\old loader.exe";

OptionButton& ButtonOf(SettingsWindow& page, const std::wstring& mode) {
    return mode == L"Startup"   ? page.optStartup
           : mode == L"RunOnly" ? page.optLoadWithKiller
                                : page.optLoadFromMenu;
}

void Select(SettingsWindow& page, const std::wstring& mode) {
    for (const wchar_t* const each : kModes)
        SettingsWindow::Check(ButtonOf(page, each), mode == each);
}

std::wstring SelectedModes(const SettingsWindow& page) {
    std::wstring selected;
    if (page.optStartup.Value()) selected += L"Startup";
    if (page.optLoadWithKiller.Value()) selected += L"RunOnly";
    if (page.optLoadFromMenu.Value()) selected += L"Manual";
    return selected;
}

void PutStored(SettingsWindow& page, const wchar_t* text) {
    page.user.DeleteTree(Schema::kSettingsKey);
    if (text != nullptr) page.Store(L"Startup", text);
}

// On Windows BM_SETCHECK changes the button that it is sent to, and no other of its group.
LRESULT CALLBACK CheckAlone(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR flag) {
    if (message != BM_SETCHECK) return DefSubclassProc(hwnd, message, wParam, lParam);
    bool& isChecking = *reinterpret_cast<bool*>(flag);
    if (isChecking) return 0;
    isChecking = true;
    const LRESULT result = DefSubclassProc(hwnd, message, wParam, lParam);
    isChecking = false;
    return result;
}

}  // namespace

TEST_CASE("reading the startup mode leaves a tab stop to the selected button alone") {
    for (const wchar_t* const stored : kModes) {
        CAPTURE(std::wstring(stored));
        bool isChecking = false;
        SettingsWindow page;
        for (const wchar_t* const mode : kModes) {
            const HWND button = ButtonOf(page, mode).Hwnd();
            SetWindowSubclass(button, CheckAlone, 0, reinterpret_cast<DWORD_PTR>(&isChecking));
            REQUIRE((GetWindowLongW(button, GWL_STYLE) & WS_TABSTOP) != 0);
        }
        PutStored(page, stored);
        Registry registry;
        page.generalOptions.ReadStartupMode(registry);
        for (const wchar_t* const mode : kModes) {
            CAPTURE(std::wstring(mode));
            const bool isStop = (GetWindowLongW(ButtonOf(page, mode).Hwnd(), GWL_STYLE) & WS_TABSTOP) != 0;
            CHECK(isStop == (std::wstring(mode) == stored));
        }
    }
}

TEST_CASE("reading the startup mode selects its button and remembers it; an unknown text changes neither") {
    SettingsWindow page;
    Registry registry;
    for (const Stored& stored : kStored) {
        for (const wchar_t* const remembered : {L"", L"Startup", L"RunOnly", L"Manual"}) {
            for (const wchar_t* const selected : {L"", L"Startup", L"RunOnly", L"Manual"}) {
                CAPTURE(std::wstring(stored.text == nullptr ? L"(missing)" : stored.text));
                CAPTURE(std::wstring(remembered));
                CAPTURE(std::wstring(selected));
                PutStored(page, stored.text);
                page.generalOptions.m_strStartupMode = remembered;
                Select(page, selected);
                page.generalOptions.ReadStartupMode(registry);
                const bool isKnown = stored.remembered != nullptr;
                CHECK(page.generalOptions.m_strStartupMode == (isKnown ? stored.remembered : remembered));
                CHECK(SelectedModes(page) == (isKnown ? stored.remembered : selected));
                CHECK(page.HasStored(L"Startup") == (stored.text != nullptr));
                CHECK(page.machine.ValueCount(Schema::kRunKey) == 0);
            }
        }
    }
}

TEST_CASE("writing the startup mode: the store and the Run value for each remembered and selected mode") {
    for (const bool hasRights : {true, false}) {
        for (const Stored& stored : kStored) {
            SettingsWindow page;
            Registry registry;
            for (const wchar_t* const remembered : {L"", L"Startup", L"RunOnly", L"Manual"}) {
                for (const wchar_t* const selected : {L"", L"Startup", L"RunOnly", L"Manual"}) {
                    for (const bool runValueThere : {false, true}) {
                        CAPTURE(hasRights);
                        CAPTURE(std::wstring(stored.text == nullptr ? L"(missing)" : stored.text));
                        CAPTURE(std::wstring(remembered));
                        CAPTURE(std::wstring(selected));
                        CAPTURE(runValueThere);
                        PutStored(page, stored.text);
                        page.machine.Write(Schema::kRunKey, L"Another program", L"stays");
                        page.machine.Delete(Schema::kRunKey, Schema::kRunValue);
                        if (runValueThere)
                            page.machine.Write(Schema::kRunKey, Schema::kRunValue, kOldRunData);
                        page.generalOptions.m_strStartupMode = remembered;
                        Select(page, selected);
                        if (hasRights) {
                            page.generalOptions.WriteStartupMode(registry);
                        } else {
                            const NoMachineRights noRights;
                            page.generalOptions.WriteStartupMode(registry);
                        }

                        const bool changes = *selected != L'\0' && std::wstring(selected) != remembered;
                        const bool writesRun = hasRights && changes && std::wstring(selected) == L"Startup";
                        const bool deletesRun =
                            hasRights && changes && std::wstring(remembered) == L"Startup";
                        CHECK(page.generalOptions.m_strStartupMode == (changes ? selected : remembered));
                        CHECK(page.HasStored(L"Startup") == (changes || stored.text != nullptr));
                        if (page.HasStored(L"Startup")) {
                            CHECK(page.Stored(L"Startup") == (changes ? selected : stored.text));
                        }
                        const bool runIsThere = writesRun || (runValueThere && !deletesRun);
                        REQUIRE(page.machine.Exists(Schema::kRunKey, Schema::kRunValue) == runIsThere);
                        if (runIsThere) {
                            DWORD type = 0;
                            const std::string data =
                                page.machine.Bytes(Schema::kRunKey, Schema::kRunValue, &type);
                            CHECK(data == ToAnsi(writesRun ? page.loaderPath : kOldRunData));
                            CHECK(type == REG_SZ);
                        }
                        CHECK(page.machine.Exists(Schema::kRunKey, L"Another program"));
                        CHECK_FALSE(page.user.Exists(Schema::kRunKey));
                    }
                }
            }
        }
    }
}

TEST_CASE("the Run value holds the loader's path as it stands when the mode is written") {
    SettingsWindow page;
    Registry registry;
    page.loaderPath = L"D:\\\\CalvaneConfigLoader.exe";
    page.optStartup.Value(true);
    page.generalOptions.WriteStartupMode(registry);
    CHECK(page.machine.Text(Schema::kRunKey, Schema::kRunValue) == L"D:\\\\CalvaneConfigLoader.exe");
    CHECK(page.machine.ValueCount(Schema::kRunKey) == 1);
}

TEST_CASE("the mode is followed through a session: only leaving and entering Startup touches the Run value") {
    SettingsWindow page;
    const auto hasRun = [&] { return page.machine.Exists(Schema::kRunKey, Schema::kRunValue); };
    page.Store(L"Startup", L"RunOnly");
    page.transfer.LoadSettings();
    CHECK(SelectedModes(page) == L"RunOnly");

    SettingsWindow::Click(page.optLoadFromMenu);
    page.machine.Write(Schema::kRunKey, Schema::kRunValue, kOldRunData);
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"Startup") == L"Manual");
    CHECK(hasRun());

    SettingsWindow::Click(page.optStartup);
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"Startup") == L"Startup");
    CHECK(page.machine.Text(Schema::kRunKey, Schema::kRunValue) == page.loaderPath);

    page.machine.Delete(Schema::kRunKey, Schema::kRunValue);
    page.transfer.SaveSettings();
    CHECK_FALSE(hasRun());  // neither checked nor repaired

    page.machine.Write(Schema::kRunKey, Schema::kRunValue, kOldRunData);
    SettingsWindow::Click(page.optLoadWithKiller);
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"Startup") == L"RunOnly");
    CHECK_FALSE(hasRun());

    SettingsWindow::Click(page.optStartup);
    page.transfer.SaveSettings();
    CHECK(hasRun());
    SettingsWindow::Click(page.optLoadFromMenu);
    page.transfer.SaveSettings();
    CHECK_FALSE(hasRun());
    CHECK(page.Stored(L"Startup") == L"Manual");
}

TEST_CASE("without a stored mode Manual is selected, and a save that changes nothing writes none") {
    SettingsWindow page;
    page.transfer.LoadSettings();
    CHECK(SelectedModes(page) == L"Manual");
    CHECK(page.generalOptions.m_strStartupMode == L"Manual");
    page.transfer.SaveSettings();
    CHECK_FALSE(page.HasStored(L"Startup"));
}

TEST_CASE("after an unknown stored mode the next save writes the selected one") {
    SettingsWindow page;
    page.Store(L"Startup", L"Sometimes");
    page.transfer.LoadSettings();
    CHECK(SelectedModes(page).empty());
    CHECK(page.generalOptions.m_strStartupMode.empty());
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"Startup") == L"Sometimes");
    SettingsWindow::Click(page.optStartup);
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"Startup") == L"Startup");
    CHECK(page.machine.Exists(Schema::kRunKey, Schema::kRunValue));
}

TEST_CASE("a user without rights is not told, and later saves believe the Run value to be in place") {
    SettingsWindow page;
    page.Store(L"Startup", L"Manual");
    page.transfer.LoadSettings();
    SettingsWindow::Click(page.optStartup);
    {
        const NoMachineRights noRights;
        page.transfer.SaveSettings();
    }
    CHECK(page.Stored(L"Startup") == L"Startup");
    CHECK(page.generalOptions.m_strStartupMode == L"Startup");
    page.transfer.SaveSettings();
    CHECK_FALSE(page.machine.Exists(Schema::kRunKey, Schema::kRunValue));
}
