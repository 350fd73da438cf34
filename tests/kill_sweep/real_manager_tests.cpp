// The manager as it is delivered, ended by force from within before a change of the store.
#include <doctest.h>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "store/server_directory.h"
#include "tests/engine/stand_in.h"
#include "tests/kill_sweep/subjects.h"
#include "tests/support/automation.h"
#include "tests/support/killed_servers.h"
#include "tests/support/manager.h"
#include "tests/support/message_pump.h"
#include "tests/support/program.h"
#include "tests/support/shown_text.h"
#include "tests/support/wine.h"
#include "tests/window/other_process.h"

namespace {

constexpr DWORD kKilled = 77;
constexpr long kFirstRunWrites = 46;

// A manager that ends by force before the given change of the store, counted from 1. It serves the next
// client.
class DoomedManager {
public:
    explicit DoomedManager(long change) {
        SetEnvironmentVariableW(L"KILL_SWEEP_CALL", std::to_wstring(change).c_str());
        m_process.Reset(StartServerWith(L"SentrelConfig.exe", ServerDirectory() + L"\\kill_at.dll"));
        SetEnvironmentVariableW(L"KILL_SWEEP_CALL", nullptr);
    }

    // The exit code; STILL_ACTIVE when it goes on living.
    DWORD WaitForEnd() {
        PumpUntil([&] { return WaitForSingleObject(m_process.Get(), 0) == WAIT_OBJECT_0; }, kPatience);
        DWORD code = STILL_ACTIVE;
        GetExitCodeProcess(m_process.Get(), &code);
        if (code == STILL_ACTIVE) TerminateProcess(m_process.Get(), 1);
        return code;
    }

private:
    ProcessHandle m_process;
};

RegistryContents UserSoftware() {
    HKEY key = nullptr;
    REQUIRE(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, &key) == ERROR_SUCCESS);
    const RegistryKey owner(key);
    RegistryContents contents;
    Walk(key, "Software", contents);
    return contents;
}

// On Windows other programs write there meanwhile.
RegistryContents WithoutSettings(RegistryContents contents) {
    if (!RunsUnderWine()) return {};
    std::erase_if(contents, [](const auto& key) { return key.first.starts_with("Software\\Calvane\\"); });
    return contents;
}

RegistryContents Settings(const RegistryContents& contents) {
    RegistryContents settings;
    for (const auto& [path, values] : contents) {
        if (path.starts_with("Software\\Calvane\\")) settings[path] = values;
    }
    return settings;
}

size_t ValueCount(const RegistryContents& contents) {
    size_t count = 0;
    for (const auto& [path, values] : contents)
        count += values.size();
    return count;
}

// What the window of a manager shows of the settings.
struct Shown {
    Rows exclude;
    Rows banners;
    Rows search;
    std::wstring speed;
    std::wstring pauseKey;
    bool operator==(const Shown&) const = default;
};

Shown Look(Manager& manager) {
    return {ListBoxRows(manager.Control(L"lstExclude")), ListViewRows(manager.Control(L"lvwBanners")),
            ListViewRows(manager.Control(L"lvwSearchURLs")), manager.Text(L"txtSpeed"),
            ComboText(manager.Control(L"cboPauseKey"))};
}

void Apply(Manager& manager) {
    const HWND apply = manager.Control(L"cmdApply");
    EnableWindow(apply, TRUE);
    PostMessageW(apply, BM_CLICK, 0, 0);
    CHECK(WaitUntil([&] { return !IsWindowEnabled(apply); }));
}

// Whatever becomes of a test, no manager is called that it has killed.
struct NoEngineNoKilled {
    NoEngineNoKilled() { ForgetKilledServers(); }
    ~NoEngineNoKilled() { ForgetKilledServers(); }

    NoEngineRegistered noEngine;
};

// The call in which a manager dies fails.
template <class Body>
void CheckDies(DoomedManager& manager, Body&& body) {
    const DWORD start = GetTickCount();
    CHECK_THROWS_AS(body(), AutomationError);
    CHECK(manager.WaitForEnd() == kKilled);
    CHECK(GetTickCount() - start < kPatience);
    ForgetKilledServers();
}

}  // namespace

TEST_CASE("the delivered manager, ended by force in its first run, starts with all defaults the next time") {
    const NoEngineNoKilled none;
    RegistryContents ideal;
    Shown idealWindow;
    {
        Manager manager(false, Manager::Start::Ahead);
        idealWindow = Look(manager);
        ideal = Settings(UserSoftware());
    }
    CHECK(ValueCount(ideal) == kFirstRunWrites);
    int kills = 0;
    for (const long change : {1L, 23L, kFirstRunWrites}) {
        CAPTURE(change);
        DeleteSettings();
        const RegistryContents before = WithoutSettings(UserSoftware());
        {
            DoomedManager doomed(change);
            Manager client(true);
            CheckDies(doomed, [&] { client.Instance(FormHide); });
            client.LetGo();
        }
        CHECK(ValueCount(Settings(UserSoftware())) == static_cast<size_t>(change - 1));
        Manager manager(true, Manager::Start::Ahead);
        CHECK(Look(manager) == idealWindow);
        CHECK(Difference(Settings(UserSoftware()), ideal) == "");
        CHECK(Difference(WithoutSettings(UserSoftware()), before) == "");
        ++kills;
    }
    MESSAGE("the delivered manager: ended by force at " << kills << " of " << kFirstRunWrites
                                                        << " writes of a first run");
}

TEST_CASE(
    "the delivered manager, ended by force in an Apply, starts with what the store holds, and a further "
    "Apply "
    "leaves just that") {
    const NoEngineNoKilled none;
    int kills = 0;
    // Of the changes that an Apply of the defaults makes: deletions, then writes.
    for (const long change : {3L, 30L, 60L}) {
        CAPTURE(change);
        DeleteSettings();
        Manager(false, Manager::Start::Ahead).Window();  // writes the defaults
        const RegistryContents before = WithoutSettings(UserSoftware());
        {
            DoomedManager doomed(change);
            Manager client(true);
            client.Instance(FormHide);
            const HWND apply = client.Control(L"cmdApply");
            EnableWindow(apply, TRUE);
            PostMessageW(apply, BM_CLICK, 0, 0);
            CHECK(doomed.WaitForEnd() == kKilled);
            client.LetGo();
            ForgetKilledServers();
        }
        Shown shown;
        {
            Manager manager(true, Manager::Start::Ahead);
            shown = Look(manager);
            CHECK(shown.speed == L"6");
            CHECK(shown.pauseKey == L"Shift");
            Apply(manager);
        }
        Manager manager(true, Manager::Start::Ahead);
        CHECK(Look(manager) == shown);
        CHECK(Difference(WithoutSettings(UserSoftware()), before) == "");
        ++kills;
    }
    MESSAGE("the delivered manager: ended by force at " << kills << " changes of an Apply");
}
