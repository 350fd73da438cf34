// The loader and the manager that it loads, both out of process. Manager and engine must have been registered
// before.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>

#include "tests/support/message_pump.h"
#include "tests/support/program.h"

namespace {

constexpr wchar_t kLoader[] = L"CalvaneConfigLoader.exe";
constexpr wchar_t kManager[] = L"SentrelConfig.exe";
constexpr int kAboutTab = 5;

// The manager's window, hidden or shown.
HWND ManagerWindow() {
    return FindWindowW(nullptr, L"Calvane");
}

bool IsShown() {
    return PumpUntil([] { return IsWindowVisible(ManagerWindow()) != FALSE; });
}

int SelectedTab() {
    const HWND tabs = FindWindowExW(ManagerWindow(), nullptr, WC_TABCONTROLW, nullptr);
    return static_cast<int>(SendMessageW(tabs, TCM_GETCURSEL, 0, 0));
}

// No manager runs when a test starts and ends.
struct NoManager {
    NoManager() { End(); }
    ~NoManager() { End(); }

    static void End() {
        RunProgram(kLoader, L"/release");
        CHECK(ProgramEnds(kManager));
    }
};

}  // namespace

TEST_CASE("Without a switch the loader loads the manager hidden and leaves it running") {
    const NoManager none;
    CHECK(RunProgram(kLoader) == 0);
    CHECK(ProgramEnds(kLoader));
    REQUIRE(ManagerWindow() != nullptr);
    PumpFor(1000);
    CHECK(ProcessesOf(kManager).size() == 1);
    CHECK_FALSE(IsWindowVisible(ManagerWindow()));
}

TEST_CASE("A switch shows the window of the running manager, in any letter case") {
    const NoManager none;
    CHECK(RunProgram(kLoader) == 0);
    const HWND window = ManagerWindow();
    REQUIRE(window != nullptr);
    SUBCASE("/show") {
        CHECK(RunProgram(kLoader, L"/show") == 0);
    }
    SUBCASE("/SHOW") {
        CHECK(RunProgram(kLoader, L"/SHOW") == 0);
    }
    CHECK(IsShown());
    CHECK(ManagerWindow() == window);
    CHECK(SelectedTab() == 0);
    CHECK(ProcessesOf(kManager).size() == 1);
}

TEST_CASE("The about switch shows the window on its About page") {
    const NoManager none;
    CHECK(RunProgram(kLoader, L"/about") == 0);
    CHECK(IsShown());
    CHECK(SelectedTab() == kAboutTab);
}

TEST_CASE("Loading again leaves a shown window shown") {
    const NoManager none;
    CHECK(RunProgram(kLoader, L"/show") == 0);
    REQUIRE(IsShown());
    CHECK(RunProgram(kLoader) == 0);
    PumpFor(500);
    CHECK(IsWindowVisible(ManagerWindow()));
}

TEST_CASE("The release switch ends a running manager, and one that does not run it does not start") {
    const NoManager none;
    CHECK(RunProgram(kLoader, L"/release") == 0);
    CHECK(ProcessesOf(kManager).empty());
    CHECK(RunProgram(kLoader) == 0);
    CHECK(ProcessesOf(kManager).size() == 1);
    CHECK(RunProgram(kLoader, L"/release") == 0);
    CHECK(ProgramEnds(kManager));
    // It can be loaded again.
    CHECK(RunProgram(kLoader) == 0);
    CHECK(ManagerWindow() != nullptr);
}

TEST_CASE("The exit code tells that no manager is registered") {
    const NoManager none;
    REQUIRE(RunProgram(kManager, L"/UnregServer") == 0);
    CHECK(RunProgram(kLoader) == static_cast<DWORD>(REGDB_E_CLASSNOTREG));
    CHECK(RunProgram(kLoader, L"/show") == static_cast<DWORD>(REGDB_E_CLASSNOTREG));
    CHECK(RunProgram(kLoader, L"/release") == 0);
    REQUIRE(RunProgram(kManager, L"/RegServer") == 0);
    CHECK(RunProgram(kLoader) == 0);
}
