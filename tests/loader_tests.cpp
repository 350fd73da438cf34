// The loader and the manager that it loads, both out of process. Manager and engine must have been registered
// before.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>
#include <shellapi.h>

#include <string>

#include "store/server_directory.h"
#include "tests/support/message_pump.h"
#include "tests/support/other_process.h"
#include "tests/support/program.h"
#include "tests/support/shown_text.h"

namespace {

constexpr wchar_t kLoader[] = L"CalvaneConfigLoader.exe";
constexpr wchar_t kManager[] = L"SentrelConfig.exe";
constexpr int kAboutTab = 5;

// The manager's window, hidden or shown.
HWND ManagerWindow() {
    return FindWindowW(nullptr, L"Calvane");
}

LRESULT SelectedTab() {
    const HWND tabs = FindWindowExW(ManagerWindow(), nullptr, WC_TABCONTROLW, nullptr);
    return SendMessageW(tabs, TCM_GETCURSEL, 0, 0);
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

// The manager is not registered meanwhile.
struct NoClass {
    NoClass() { REQUIRE(RunProgram(kManager, L"/UnregServer") == 0); }
    ~NoClass() { CHECK(RunProgram(kManager, L"/RegServer") == 0); }
};

std::wstring shownMessage;

// Closes a message box while the test waits for the program that shows it, and keeps the text.
void CALLBACK CloseMessageBox(HWND, UINT, UINT_PTR, DWORD) {
    constexpr int kMessageText = 0xFFFF;
    const HWND box = FindWindowW(MAKEINTRESOURCEW(32770), L"Calvane");
    if (box == nullptr || !IsWindowVisible(box)) return;
    const std::wstring text = ShownText(GetDlgItem(box, kMessageText));
    if (!text.empty()) shownMessage = text;  // not of a box that closes
    PostMessageW(box, WM_COMMAND, IDOK, 0);
}

}  // namespace

TEST_CASE(
    "without a switch the loader loads the manager hidden and leaves it running, shown or not; a switch "
    "shows the window on its page, in any letter case, be it the running manager's or a new one's") {
    struct Row {
        std::wstring command;
        bool isLoaded;
        int tab;
    };
    for (const Row& row :
         {Row{L"/show", false, 0}, Row{L"/SHOW", true, 0}, Row{L"/about", false, kAboutTab}}) {
        CAPTURE(row.command);
        const NoManager none;
        if (row.isLoaded) {
            CHECK(RunProgram(kLoader) == 0);
            PumpFor(1000);
            REQUIRE(ManagerWindow() != nullptr);
            CHECK_FALSE(IsWindowVisible(ManagerWindow()));
        }
        const HWND loaded = ManagerWindow();
        CHECK(RunProgram(kLoader, row.command) == 0);
        CHECK(PumpUntil([] { return IsWindowVisible(ManagerWindow()) != FALSE; }));
        if (row.isLoaded) CHECK(ManagerWindow() == loaded);
        CHECK(SelectedTab() == row.tab);
        CHECK(ProcessesOf(kManager).size() == 1);
        CHECK(RunProgram(kLoader) == 0);
        PumpFor(500);
        CHECK(IsWindowVisible(ManagerWindow()));
    }
}

TEST_CASE_FIXTURE(NoManager,
                  "the release switch ends the manager, whatever its window is like, and starts none") {
    CHECK(RunProgram(kLoader, L"/release") == 0);
    CHECK(ProcessesOf(kManager).empty());
    SUBCASE("with another caption") {
        CHECK(RunProgram(kLoader) == 0);
        REQUIRE(SetWindowTextW(ManagerWindow(), L"Renamed"));
    }
    SUBCASE("no window yet") {
        StartServerAhead(kManager);
        REQUIRE(ManagerWindow() == nullptr);
    }
    REQUIRE(ProcessesOf(kManager).size() == 1);
    CHECK(RunProgram(kLoader, L"/release") == 0);
    CHECK(ProgramEnds(kManager));
    // It can be loaded again.
    CHECK(RunProgram(kLoader) == 0);
    CHECK(ManagerWindow() != nullptr);
}

TEST_CASE_FIXTURE(NoManager,
                  "the exit code tells that no manager is registered; only who waits for a window reads why, "
                  "and another program's window of the same caption is no manager to release") {
    const NoClass unregistered;
    const HWND foreign =
        CreateWindowW(WC_STATICW, L"Calvane", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const UINT_PTR timer = SetTimer(nullptr, 0, 20, CloseMessageBox);
    CHECK(RunProgram(kLoader, L"/release") == 0);
    CHECK(RunProgram(kLoader) == static_cast<DWORD>(REGDB_E_CLASSNOTREG));
    CHECK(shownMessage.empty());
    for (const wchar_t* const command : {L"/show", L"/about"}) {
        CHECK(RunProgram(kLoader, command) == static_cast<DWORD>(REGDB_E_CLASSNOTREG));
        CHECK(shownMessage.starts_with(
            L"The configuration manager cannot be started. Installing Calvane again helps.\n\n0x80040154"));
        shownMessage.clear();
    }
    KillTimer(nullptr, timer);
    DestroyWindow(foreign);
}

TEST_CASE("the loader has the manager's icon") {
    const std::wstring above = L"\\..\\";
    CHECK(ExtractIconW(nullptr, (ServerDirectory() + above + kLoader).c_str(), 0) != nullptr);
}
