// What the Log page shows of a file, and what its buttons do.
#include <doctest.h>

#include <utility>

#include "lists/site_of_address.h"
#include "platform/automation_error.h"
#include "tests/lists/list_pages.h"
#include "tests/support/message_pump.h"

using namespace std::string_literals;

TEST_CASE_FIXTURE(LogPage, "a file is shown as its lines, the newest first, each at its latest place") {
    // Not as UTF-16, although it begins with its mark.
    const std::string ansi = "\xFF\xFE" + ToAnsi(L"caf\u00E9");
    const std::tuple<std::string, std::string, Texts> rows[] = {
        {"the lines A, B and A show A above B", "A\r\nB\r\nA\r\n", {L"A", L"B"}},
        {"lines that differ in letter case are two rows", "A\r\na\r\n", {L"a", L"A"}},
        {"a line ended by LF, CR LF or nothing is the same line", "A\nA\r\nB\r\nA", {L"A", L"B"}},
        {"empty lines are one row", "\r\nA\r\n\r\n", {L"", L"A"}},
        {"the file is text in the ANSI code page", ansi + "\r\n", {FromAnsi(ansi)}},
        {"what follows a NUL is not shown", "a\0b\na\0c\nd\n\0\0e\n"s, {L"", L"d", L"a"}},
        {"nor compared", "a\na\0b\n"s, {L"a"}},
        {"nor compared where it comes first", "a\0b\na\n"s, {L"a"}},
    };
    for (const auto& [meaning, bytes, shown] : rows) {
        CAPTURE(meaning);
        CHECK(Show(bytes) == shown);
    }
}

TEST_CASE_FIXTURE(
    LogPage, "Refresh List asks for the path and reads the log again, marks no change and changes no log") {
    CHECK(Show("A\r\n") == Texts{L"A"});
    Append(path, "B\r\nA\r\nC");
    for (int times = 0; times < 2; ++times) {
        Click(cmdRefreshLog);
        CHECK(RowsOf(lstClosedWnd) == Texts{L"C", L"A", L"B"});
    }
    CHECK(changes == 0);
    lstClosedWnd.ListIndex(0);
    Click(cmdAddTo);
    Click(cmdClearList);
    CHECK(BytesOf(path) == "A\r\nB\r\nA\r\nC");
    path = folder.Write(L"other.log", "D\r\n");
    Click(cmdRefreshLog);
    CHECK(RowsOf(lstClosedWnd) == Texts{L"D"});
}

TEST_CASE_FIXTURE(
    LogPage,
    "a log that is asked for in a message from another program is read behind that; one that the "
    "engine cannot tell of is asked for once") {
    Show("A\r\n");
    int refusals = 2;
    onPathAsked = [&] {
        if (refusals-- > 0) throw AutomationError(RPC_E_CANTCALLOUT_ININPUTSYNCCALL);
    };
    pathAsked = 0;
    Click(cmdRefreshLog);
    CHECK(RowsOf(lstClosedWnd).empty());
    CHECK(PumpUntil([&] { return RowsOf(lstClosedWnd) == Texts{L"A"}; }));
    PumpFor(300);
    CHECK(pathAsked == 3);
    CHECK(changes == 0);

    onPathAsked = [] { throw AutomationError(RPC_E_DISCONNECTED); };
    Click(cmdRefreshLog);
    PumpFor(300);
    CHECK(pathAsked == 4);
}

TEST_CASE_FIXTURE(LogPage, "an entry is found by its exact text, at its first row") {
    Show("c\r\nb\r\na\r\n");
    CHECK(closedLog.FindClosedEntry(L"a") == 0);
    CHECK(closedLog.FindClosedEntry(L"c") == 2);
    CHECK(closedLog.FindClosedEntry(L"A") == -1);
    CHECK(closedLog.FindClosedEntry(L"a ") == -1);
    CHECK(closedLog.FindClosedEntry(L"") == -1);
    lstClosedWnd.AddItem(L"b");
    CHECK(closedLog.FindClosedEntry(L"b") == 1);
}

TEST_CASE("the site of an address ends before the first slash at or behind its eighth character") {
    const std::tuple<std::string, const wchar_t*, const wchar_t*> rows[] = {
        {"before the path", L"http://www.example.com/path/page.htm", L"http://www.example.com"},
        {"a host alone is its own site", L"http://www.example.com", L"http://www.example.com"},
        {"an https address is cut after its first slash", L"https://www.example.com/path", L"https:/"},
        {"slashes among the first seven characters are passed over", L"a/b/c/d/e", L"a/b/c/d"},
        {"the eighth counts", L"////////", L"///////"},
        {"an address shorter than eight characters is its own site", L"ftp://a", L"ftp://a"},
        {"the empty text", L"", L""}};
    for (const auto& [what, address, site] : rows) {
        CAPTURE(what);
        CHECK(SiteOfAddress(address) == site);
    }
}

TEST_CASE_FIXTURE(
    LogPage,
    "Add To Exclude List appends the site of the selected entry, whole where no slash is behind the eighth "
    "character, and marks a change; without a selected entry it does nothing, and it refuses a site that is "
    "in the list already") {
    const Texts entries =
        Show("http://WWW.example.com/\r\nhttp://www.example.com/popup/page.htm\r\nabout:blank page\r\n");
    Click(cmdAddTo);
    CHECK(lstExclude.ListCount() == 0);
    CHECK(changes == 0);
    for (const int row : {1, 0}) {
        lstClosedWnd.ListIndex(row);
        Click(cmdAddTo);
    }
    CHECK(RowsOf(lstExclude) == Texts{L"http://www.example.com", L"about:blank page"});
    CHECK(changes == 2);
    CHECK(RowsOf(lstClosedWnd) == entries);
    CHECK(recorder.messages.empty());
    lstClosedWnd.ListIndex(2);
    Click(cmdAddTo);
    CHECK(RowsOf(lstExclude).size() == 2);
    CHECK(changes == 2);
    CheckMessage(L"This is a duplicate entry and cannot be added.", MB_ICONINFORMATION, window.Hwnd());
}

TEST_CASE_FIXTURE(LogPage, "Clear List, which nothing enables, clears nothing and marks a change") {
    cmdClearList.Enabled(false);
    Show("A\r\n");
    Click(cmdRefreshLog);
    lstClosedWnd.ListIndex(0);
    CHECK_FALSE(cmdClearList.Enabled());
    closedLog.cmdClearList_Click();
    CHECK(RowsOf(lstClosedWnd) == Texts{L"A"});
    CHECK(changes == 1);
}

TEST_CASE_FIXTURE(LogPage,
                  "a refresh that comes in while another one asks for the path leaves each line once") {
    const Texts once = Show("A\r\nB\r\nA\r\n");
    onPathAsked = [this, isFirst = true]() mutable {
        if (std::exchange(isFirst, false)) closedLog.ReadClosedLog();
    };
    pathAsked = 0;
    Click(cmdRefreshLog);
    CHECK(pathAsked == 2);
    CHECK(RowsOf(lstClosedWnd) == once);
}
