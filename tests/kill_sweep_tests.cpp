// The manager as it is delivered, ended by force from within before a change of the store. What each registry
// call leaves behind it is the registry faults' subject.
#include <doctest.h>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "store/server_directory.h"
#include "tests/engine/stand_in.h"
#include "tests/support/killed_servers.h"
#include "tests/support/manager.h"
#include "tests/support/message_pump.h"
#include "tests/support/program.h"
#include "tests/support/shown_text.h"
#include "tests/support/store_snapshot.h"
#include "tests/support/other_process.h"

namespace {

constexpr DWORD kKilled = 77;
constexpr size_t kFirstRunWrites = 46;

// A manager that ends by force before the given change of the store, counted from 1. It serves the next
// client.
class DoomedManager {
public:
    explicit DoomedManager(size_t change) {
        SetEnvironmentVariableW(L"KILL_AT", std::to_wstring(change).c_str());
        m_process.Reset(StartServerWith(L"SentrelConfig.exe", ServerDirectory() + L"\\kill_at.dll"));
        SetEnvironmentVariableW(L"KILL_AT", nullptr);
    }

    // The exit code; STILL_ACTIVE when it goes on living.
    DWORD WaitForEnd() {
        PumpUntil([&] { return WaitForSingleObject(m_process.Get(), 0) == WAIT_OBJECT_0; });
        DWORD code = STILL_ACTIVE;
        GetExitCodeProcess(m_process.Get(), &code);
        if (code == STILL_ACTIVE) TerminateProcess(m_process.Get(), 1);
        ForgetKilledServers();
        return code;
    }

private:
    ProcessHandle m_process;
};

// What the window of a manager shows of the settings.
Rows Look(Manager& manager) {
    Rows shown{manager.Text(L"txtSpeed"), ComboText(manager.Control(L"cboPauseKey"))};
    for (const Rows& rows :
         {ListBoxRows(manager.Control(L"lstExclude")), ListViewRows(manager.Control(L"lvwBanners")),
          ListViewRows(manager.Control(L"lvwSearchURLs"))})
        shown.insert(shown.end(), rows.begin(), rows.end());
    return shown;
}

HWND PostApply(Manager& manager) {
    const HWND apply = manager.Control(L"cmdApply");
    EnableWindow(apply, TRUE);
    PostMessageW(apply, BM_CLICK, 0, 0);
    return apply;
}

// Whatever becomes of a test, no manager is called that it has killed.
struct NoEngineNoKilled {
    NoEngineNoKilled() { ForgetKilledServers(); }
    ~NoEngineNoKilled() { ForgetKilledServers(); }
    NoEngineRegistered noEngine;
};

}  // namespace

TEST_CASE("the delivered manager, ended by force in its first run, starts with all defaults the next time") {
    const NoEngineNoKilled none;
    Rows ideal;
    Rows idealWindow;
    {
        Manager manager(false, Manager::Start::Ahead);
        idealWindow = Look(manager);
        ideal = Stored();
    }
    CHECK(ideal.size() == kFirstRunWrites);
    DeleteSettings();
    constexpr size_t kChange = 23;
    {
        DoomedManager doomed(kChange);
        Manager client(true);
        CHECK_THROWS_AS(client.Instance(FormHide), AutomationError);
        CHECK(doomed.WaitForEnd() == kKilled);
        client.LetGo();
    }
    CHECK(Stored().size() == kChange - 1);
    Manager manager(true, Manager::Start::Ahead);
    CHECK(Look(manager) == idealWindow);
    CHECK(Stored() == ideal);
}

TEST_CASE(
    "the delivered manager, ended by force in an Apply, starts with what the store holds, and a further "
    "Apply leaves just that") {
    const NoEngineNoKilled none;
    DeleteSettings();
    Manager(false, Manager::Start::Ahead).Window();  // writes the defaults
    {
        // Of the changes that an Apply of the defaults makes: deletions, then writes.
        DoomedManager doomed(30);
        Manager client(true);
        client.Instance(FormHide);
        PostApply(client);
        CHECK(doomed.WaitForEnd() == kKilled);
        client.LetGo();
    }
    Rows shown;
    {
        Manager manager(true, Manager::Start::Ahead);
        shown = Look(manager);
        CHECK(shown[0] == L"6");
        CHECK(shown[1] == L"Shift");
        const HWND apply = PostApply(manager);
        CHECK(WaitUntil([&] { return !IsWindowEnabled(apply); }));
    }
    Manager manager(true, Manager::Start::Ahead);
    CHECK(Look(manager) == shown);
}
