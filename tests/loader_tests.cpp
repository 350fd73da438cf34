// The loader and the manager that it loads, both out of process. Manager and engine must have been registered
// before.
#include <doctest.h>

#include <windows.h>
#include <commctrl.h>
#include <shellapi.h>

#include <iterator>
#include <string>

#include "store/server_directory.h"
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

// The manager is not registered meanwhile.
struct NoClass {
    NoClass() { REQUIRE(RunProgram(kManager, L"/UnregServer") == 0); }
    ~NoClass() { CHECK(RunProgram(kManager, L"/RegServer") == 0); }
};

// Closes message boxes while the test waits for the program that shows them, and keeps the last one's text.
class MessageBoxes {
public:
    MessageBoxes() : m_timer(SetTimer(nullptr, 0, 20, Look)) { Forget(); }
    ~MessageBoxes() { KillTimer(nullptr, m_timer); }

    static const std::wstring& Text() { return g_text; }
    static void Forget() { g_text.clear(); }

private:
    static void CALLBACK Look(HWND, UINT, UINT_PTR, DWORD) {
        constexpr int kMessageText = 0xFFFF;
        const HWND box = FindWindowW(MAKEINTRESOURCEW(32770), L"Calvane");
        if (box == nullptr || !IsWindowVisible(box)) return;
        wchar_t text[512]{};
        SendMessageW(GetDlgItem(box, kMessageText), WM_GETTEXT, std::size(text),
                     reinterpret_cast<LPARAM>(text));
        if (*text != L'\0') g_text = text;  // not of a box that closes
        PostMessageW(box, WM_COMMAND, IDOK, 0);
    }

    static inline std::wstring g_text;
    UINT_PTR m_timer;
};

}  // namespace

TEST_CASE("without a switch the loader loads the manager hidden and leaves it running") {
    const NoManager none;
    CHECK(RunProgram(kLoader) == 0);
    CHECK(ProgramEnds(kLoader));
    REQUIRE(ManagerWindow() != nullptr);
    PumpFor(1000);
    CHECK(ProcessesOf(kManager).size() == 1);
    CHECK_FALSE(IsWindowVisible(ManagerWindow()));
}

TEST_CASE(
    "a switch shows the window of the running manager, in any letter case; loading again leaves it shown") {
    for (const wchar_t* const command : {L"/show", L"/SHOW"}) {
        const NoManager none;
        CHECK(RunProgram(kLoader) == 0);
        const HWND window = ManagerWindow();
        REQUIRE(window != nullptr);
        CHECK(RunProgram(kLoader, command) == 0);
        CHECK(IsShown());
        CHECK(ManagerWindow() == window);
        CHECK(SelectedTab() == 0);
        CHECK(ProcessesOf(kManager).size() == 1);
        CHECK(RunProgram(kLoader) == 0);
        PumpFor(500);
        CHECK(IsWindowVisible(window));
    }
}

TEST_CASE("the about switch shows the window on its About page") {
    const NoManager none;
    CHECK(RunProgram(kLoader, L"/about") == 0);
    CHECK(IsShown());
    CHECK(SelectedTab() == kAboutTab);
}

TEST_CASE("the release switch ends the manager, whatever its window is like, and starts none") {
    const NoManager none;
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

TEST_CASE("the release switch takes no other program's window of the same caption for the manager") {
    const NoManager none;
    const NoClass unregistered;  // a manager that is asked for cannot be had
    const HWND foreign =
        CreateWindowW(WC_STATICW, L"Calvane", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    REQUIRE(ManagerWindow() == foreign);
    CHECK(RunProgram(kLoader, L"/release") == 0);
    DestroyWindow(foreign);
}

TEST_CASE("the exit code tells that no manager is registered; only who waits for a window reads why") {
    const NoManager none;
    const NoClass unregistered;
    const MessageBoxes boxes;
    CHECK(RunProgram(kLoader) == static_cast<DWORD>(REGDB_E_CLASSNOTREG));
    CHECK(RunProgram(kLoader, L"/release") == 0);
    CHECK(MessageBoxes::Text().empty());
    for (const wchar_t* const command : {L"/show", L"/about"}) {
        CHECK(RunProgram(kLoader, command) == static_cast<DWORD>(REGDB_E_CLASSNOTREG));
        CHECK(MessageBoxes::Text().starts_with(
            L"The configuration manager cannot be started. Installing Calvane again helps.\n\n0x80040154"));
        MessageBoxes::Forget();
    }
}

TEST_CASE("the loader has the manager's icon") {
    const std::wstring above = L"\\..\\";
    CHECK(ExtractIconW(nullptr, (ServerDirectory() + above + kLoader).c_str(), 0) != nullptr);
}
