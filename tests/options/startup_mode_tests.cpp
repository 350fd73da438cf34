// The startup mode: its buttons, its value and the Run value.
#include <windows.h>
#include <commctrl.h>

#include <string>

#include "store/settings_schema.h"
#include "tests/support/registry_calls.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

// What a user without rights to the machine's settings sees: the two calls that write the mode succeed, those
// for the Run value fail.
const Fault kNoMachineRights{std::nullopt, 3, true};

// Windows' own name, of what it starts with the user.
constexpr wchar_t kRunKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";

constexpr const wchar_t* kModes[] = {L"Startup", L"RunOnly", L"Manual"};
constexpr const wchar_t* kModesOrNone[] = {L"", L"Startup", L"RunOnly", L"Manual"};

struct Page : SettingsWindow {
    OptionButton& ButtonOf(const std::wstring& mode) {
        return mode == L"Startup" ? optStartup : mode == L"RunOnly" ? optLoadWithKiller : optLoadFromMenu;
    }
    // What is remembered and selected.
    void Put(const std::wstring& remembered, const std::wstring& selected) {
        generalOptions.m_strStartupMode = remembered;
        for (const wchar_t* const each : kModes)
            Check(ButtonOf(each), selected == each);
    }
    std::wstring Selected() {
        std::wstring selected;
        for (const wchar_t* const mode : kModes)
            if (ButtonOf(mode).Value()) selected += mode;
        return selected;
    }
    void PutStored(const wchar_t* text) {
        user.DeleteTree(Schema::kSettingsKey);
        if (text != nullptr) Store(L"Startup", text);
    }

    Registry registry;
    RegistryCalls calls;
};

// On Windows BM_SETCHECK changes the button that it is sent to, and no other of its group.
LRESULT CALLBACK CheckAlone(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    static bool isChecking = false;
    if (message != BM_SETCHECK) return DefSubclassProc(hwnd, message, wParam, lParam);
    if (isChecking) return 0;
    isChecking = true;
    const LRESULT result = DefSubclassProc(hwnd, message, wParam, lParam);
    isChecking = false;
    return result;
}

}  // namespace

TEST_CASE("reading the startup mode leaves a tab stop to the selected button alone") {
    for (const std::wstring stored : kModes) {
        CAPTURE(stored);
        Page page;
        const auto isTabStop = [&](const wchar_t* mode) {
            return (GetWindowLongW(page.ButtonOf(mode).Hwnd(), GWL_STYLE) & WS_TABSTOP) != 0;
        };
        for (const wchar_t* const mode : kModes) {
            SetWindowSubclass(page.ButtonOf(mode).Hwnd(), CheckAlone, 0, 0);
            REQUIRE(isTabStop(mode));
        }
        page.PutStored(stored.c_str());
        page.generalOptions.ReadStartupMode(page.registry);
        for (const wchar_t* const mode : kModes)
            CHECK(isTabStop(mode) == (stored == mode));
    }
}

TEST_CASE_FIXTURE(
    Page, "reading the startup mode selects its button and remembers it; an unknown text changes neither") {
    // The stored text, null for none, and the mode that it is; null: it changes nothing.
    constexpr std::pair<const wchar_t*, const wchar_t*> kStored[] = {
        {nullptr, L"Manual"},   {L"", nullptr},        {L"Startup", L"Startup"}, {L"RunOnly", L"RunOnly"},
        {L"Manual", L"Manual"}, {L"startup", nullptr}, {L"Startup ", nullptr},   {L"Something", nullptr}};
    const std::wstring remembered = L"RunOnly";
    for (const auto& [stored, mode] : kStored) {
        for (const std::wstring selected : kModesOrNone) {
            CAPTURE(std::wstring(stored == nullptr ? L"(missing)" : stored));
            CAPTURE(selected);
            PutStored(stored);
            Put(remembered, selected);
            generalOptions.ReadStartupMode(registry);
            CHECK(generalOptions.m_strStartupMode == (mode != nullptr ? mode : remembered));
            CHECK(Selected() == (mode != nullptr ? mode : selected));
            CHECK(user.Exists(Schema::kSettingsKey, L"Startup") == (stored != nullptr));
            CHECK(machine.ValueCount(kRunKey) == 0);
        }
    }
}

TEST_CASE_FIXTURE(
    Page,
    "writing the startup mode: the store and, entering and leaving Startup alone, the Run value, which holds "
    "the loader's path as it stands then") {
    const std::string before = "C:\\old loader.exe";
    loaderPath = L"D:\\\\CalvaneConfigLoader.exe";
    machine.Write(kRunKey, L"Another program", L"stays");
    for (const bool hasRights : {true, false}) {
        for (const std::wstring remembered : kModesOrNone) {
            for (const std::wstring selected : kModesOrNone) {
                for (const bool isRunThere : {false, true}) {
                    CAPTURE(hasRights);
                    CAPTURE(remembered);
                    CAPTURE(selected);
                    CAPTURE(isRunThere);
                    PutStored(L"as it was");
                    machine.Delete(kRunKey, Schema::kRunValue);
                    if (isRunThere) machine.Write(kRunKey, Schema::kRunValue, REG_SZ, before);
                    Put(remembered, selected);
                    calls.Fail(hasRights ? Fault{} : kNoMachineRights);
                    calls.Watch([this] { generalOptions.WriteStartupMode(registry); });
                    const bool isChange = !selected.empty() && selected != remembered;
                    CHECK(generalOptions.m_strStartupMode == (isChange ? selected : remembered));
                    CHECK(Stored(L"Startup") == (isChange ? selected : L"as it was"));
                    std::string run = isRunThere ? before : "";
                    if (hasRights && isChange && selected == L"Startup")
                        run = "D:\\\\CalvaneConfigLoader.exe";
                    if (hasRights && isChange && remembered == L"Startup") run.clear();
                    DWORD type = REG_SZ;
                    const bool isThere = machine.Exists(kRunKey, Schema::kRunValue);
                    CHECK((isThere ? machine.Bytes(kRunKey, Schema::kRunValue, &type) : "") == run);
                    CHECK(type == REG_SZ);
                    CHECK(machine.ValueCount(kRunKey) == (isThere ? 2 : 1));
                    CHECK_FALSE(user.Exists(kRunKey));
                }
            }
        }
    }
}
