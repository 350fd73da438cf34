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

constexpr const wchar_t* kModes[] = {L"Startup", L"RunOnly", L"Manual"};
constexpr const wchar_t* kModesOrNone[] = {L"", L"Startup", L"RunOnly", L"Manual"};
constexpr wchar_t kOldRunData[] = L"C:\\old loader.exe";

struct Page : SettingsWindow {
    OptionButton& ButtonOf(const std::wstring& mode) {
        return mode == L"Startup" ? optStartup : mode == L"RunOnly" ? optLoadWithKiller : optLoadFromMenu;
    }
    void Select(const std::wstring& mode) {
        for (const wchar_t* const each : kModes)
            Check(ButtonOf(each), mode == each);
    }
    std::wstring Selected() {
        std::wstring selected;
        for (const wchar_t* const mode : kModes)
            if (ButtonOf(mode).Value()) selected += mode;
        return selected;
    }
    std::wstring& Remembered() { return generalOptions.m_strStartupMode; }
    void PutStored(const wchar_t* text) {
        user.DeleteTree(Schema::kSettingsKey);
        if (text != nullptr) Store(L"Startup", text);
    }
    // The text of the Run value; empty where there is none.
    std::wstring Run() const {
        return machine.Exists(Schema::kRunKey, Schema::kRunValue)
                   ? machine.Text(Schema::kRunKey, Schema::kRunValue)
                   : L"";
    }
    void PutRun(bool isThere) const {
        machine.Write(Schema::kRunKey, L"Another program", L"stays");
        machine.Delete(Schema::kRunKey, Schema::kRunValue);
        if (isThere) machine.Write(Schema::kRunKey, Schema::kRunValue, kOldRunData);
    }

    Registry registry;
    RegistryCalls calls;
};

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
        Page page;
        const auto isTabStop = [&](const wchar_t* mode) {
            return (GetWindowLongW(page.ButtonOf(mode).Hwnd(), GWL_STYLE) & WS_TABSTOP) != 0;
        };
        for (const wchar_t* const mode : kModes) {
            SetWindowSubclass(page.ButtonOf(mode).Hwnd(), CheckAlone, 0,
                              reinterpret_cast<DWORD_PTR>(&isChecking));
            REQUIRE(isTabStop(mode));
        }
        page.PutStored(stored);
        page.generalOptions.ReadStartupMode(page.registry);
        for (const wchar_t* const mode : kModes)
            CHECK(isTabStop(mode) == (std::wstring(mode) == stored));
    }
}

TEST_CASE_FIXTURE(
    Page, "reading the startup mode selects its button and remembers it; an unknown text changes neither") {
    // The stored text, null for none, and the mode that it is; null: it changes nothing.
    constexpr std::pair<const wchar_t*, const wchar_t*> kStored[] = {
        {nullptr, L"Manual"},     {L"", nullptr},         {L"Startup", L"Startup"},
        {L"RunOnly", L"RunOnly"}, {L"Manual", L"Manual"}, {L"startup", nullptr},
        {L"MANUAL", nullptr},     {L"Startup ", nullptr}, {L"Something", nullptr}};
    for (const auto& [stored, mode] : kStored) {
        for (const wchar_t* const remembered : kModesOrNone) {
            for (const wchar_t* const selected : kModesOrNone) {
                CAPTURE(std::wstring(stored == nullptr ? L"(missing)" : stored));
                CAPTURE(std::wstring(remembered));
                CAPTURE(std::wstring(selected));
                PutStored(stored);
                Remembered() = remembered;
                Select(selected);
                generalOptions.ReadStartupMode(registry);
                CHECK(Remembered() == (mode != nullptr ? mode : remembered));
                CHECK(Selected() == (mode != nullptr ? mode : selected));
                CHECK(HasStored(L"Startup") == (stored != nullptr));
                CHECK(machine.ValueCount(Schema::kRunKey) == 0);
            }
        }
    }
}

TEST_CASE_FIXTURE(
    Page, "writing the startup mode: the store and the Run value for each remembered and selected mode") {
    for (const bool hasRights : {true, false}) {
        for (const std::wstring remembered : kModesOrNone) {
            for (const std::wstring selected : kModesOrNone) {
                for (const bool isRunThere : {false, true}) {
                    CAPTURE(hasRights);
                    CAPTURE(remembered);
                    CAPTURE(selected);
                    CAPTURE(isRunThere);
                    PutStored(L"as it was");
                    PutRun(isRunThere);
                    Remembered() = remembered;
                    Select(selected);
                    calls.Fail(hasRights ? Fault{} : kNoMachineRights);
                    calls.Watch([this] { generalOptions.WriteStartupMode(registry); });
                    const bool changes = !selected.empty() && selected != remembered;
                    CHECK(Remembered() == (changes ? selected : remembered));
                    CHECK(Stored(L"Startup") == (changes ? selected : L"as it was"));
                    std::wstring run = isRunThere ? kOldRunData : L"";
                    if (hasRights && changes && selected == L"Startup") run = loaderPath;
                    if (hasRights && changes && remembered == L"Startup") run.clear();
                    CHECK(Run() == run);
                    CHECK(machine.Exists(Schema::kRunKey, L"Another program"));
                    CHECK_FALSE(user.Exists(Schema::kRunKey));
                }
            }
        }
    }
}

TEST_CASE_FIXTURE(Page,
                  "the Run value holds the loader's path, as it stands when the mode is written, as text") {
    loaderPath = L"D:\\\\CalvaneConfigLoader.exe";
    optStartup.Value(true);
    generalOptions.WriteStartupMode(registry);
    DWORD type = 0;
    CHECK(machine.Bytes(Schema::kRunKey, Schema::kRunValue, &type) == "D:\\\\CalvaneConfigLoader.exe");
    CHECK(type == REG_SZ);
    CHECK(machine.ValueCount(Schema::kRunKey) == 1);
}

TEST_CASE_FIXTURE(
    Page,
    "through a session only entering and leaving Startup touches the Run value; from RunOnly to "
    "Manual deletes nothing") {
    const auto saveAs = [this](const Control& button, const wchar_t* mode) {
        Click(button);
        transfer.SaveSettings();
        CHECK(Stored(L"Startup") == mode);
    };
    Store(L"Startup", L"RunOnly");
    transfer.LoadSettings();
    CHECK(Selected() == L"RunOnly");
    PutRun(true);
    saveAs(optLoadFromMenu, L"Manual");
    CHECK(Run() == kOldRunData);
    saveAs(optStartup, L"Startup");
    CHECK(Run() == loaderPath);
    PutRun(false);
    transfer.SaveSettings();
    CHECK(Run().empty());  // neither checked nor repaired
    PutRun(true);
    saveAs(optLoadWithKiller, L"RunOnly");
    CHECK(Run().empty());
    saveAs(optStartup, L"Startup");
    CHECK(Run() == loaderPath);
    saveAs(optLoadFromMenu, L"Manual");
    CHECK(Run().empty());
}
