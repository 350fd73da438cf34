#include <doctest.h>

#include <utility>

#include "platform/automation_error.h"
#include "lists/message.h"
#include "tests/closed_log/log_page.h"
#include "tests/support/message_pump.h"
#include "tests/support/plain_log.h"
#include "tests/support/shown_text.h"

using namespace std::string_literals;

namespace {

using Rows = std::vector<std::wstring>;

void Click(const Control& button) {
    SendMessageW(button.Hwnd(), BM_CLICK, 0, 0);
}

}  // namespace

TEST_CASE_FIXTURE(LogPage, "thirty distinct lines show the last twenty-five, the newest at the top") {
    std::string bytes;
    for (int i = 1; i <= 30; ++i)
        bytes += "http://site" + std::to_string(i) + "/\r\n";
    const Rows rows = Show(bytes);
    REQUIRE(rows.size() == 25);
    CHECK(rows.front() == L"http://site30/");
    CHECK(rows[24] == L"http://site6/");
}

TEST_CASE_FIXTURE(LogPage, "the lines A, B and A show A above B") {
    CHECK(Show("A\r\nB\r\nA\r\n") == Rows{L"A", L"B"});
}

TEST_CASE_FIXTURE(LogPage, "lines that differ in letter case are two rows") {
    CHECK(Show("A\r\na\r\n") == Rows{L"a", L"A"});
}

TEST_CASE_FIXTURE(LogPage, "a line ended by LF, CR LF or nothing is the same line") {
    CHECK(Show("A\nA\r\nB\r\nA") == Rows{L"A", L"B"});
}

TEST_CASE_FIXTURE(LogPage, "empty lines are one row") {
    CHECK(Show("\r\nA\r\n\r\n") == Rows{L"", L"A"});
}

TEST_CASE_FIXTURE(LogPage, "the file is read as text in the ANSI code page") {
    // Not as UTF-16, although it begins with its mark.
    const std::string bytes = "\xFF\xFE" + ToAnsi(L"caf\u00E9");
    CHECK(Show(bytes + "\r\n") == Rows{FromAnsi(bytes)});
}

TEST_CASE_FIXTURE(LogPage, "what follows a NUL in a line is neither shown nor compared") {
    CHECK(Show("a\0b\na\0c\nd\n\0\0e\n"s) == Rows{L"", L"d", L"a"});
    CHECK(Show("a\na\0b\n"s) == Rows{L"a"});
    CHECK(Show("a\0b\na\n"s) == Rows{L"a"});
}

TEST_CASE_FIXTURE(LogPage, "a line of a million characters is one whole row") {
    const Rows rows = Show("A\r\n" + std::string(1000000, 'x') + "\r\n");
    REQUIRE(rows.size() == 2);
    CHECK((rows[0] == std::wstring(1000000, L'x')));
    CHECK(rows[1] == L"A");
}

TEST_CASE_FIXTURE(LogPage, "the rows are those of reading the file line by line from its beginning") {
    std::string bytes;
    for (int i = 0; i < 20000; ++i)
        bytes += "http://site" + std::to_string(i * i % 37) + (i % 5 == 0 ? "\n" : "\r\n");
    std::vector<std::wstring> expected;
    for (const std::string& line : PlainNewestLines(bytes, 25))
        expected.push_back(FromAnsi(line));
    CHECK(Show(bytes) == expected);
}

TEST_CASE_FIXTURE(LogPage, "Refresh List reads the log again and marks no change") {
    CHECK(Show("A\r\n") == Rows{L"A"});
    Append(path, "B\r\n");
    Click(cmdRefreshLog);
    CHECK(RowsOf(lstClosedWnd) == Rows{L"B", L"A"});
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(LogPage, "refreshing twice in a row gives the same list") {
    Show("A\r\nB\r\nA\r\n");
    Click(cmdRefreshLog);
    const Rows first = RowsOf(lstClosedWnd);
    Click(cmdRefreshLog);
    CHECK(RowsOf(lstClosedWnd) == first);
    CHECK(first == Rows{L"A", L"B"});
}

TEST_CASE_FIXTURE(LogPage, "the path is asked for at every reading, after the list has been cleared") {
    Show("A\r\n");
    Show("B\r\n");
    CHECK(pathAsked == 2);
    const std::wstring other = folder.Write(L"other.log", "C\r\n");
    onPathAsked = [&] {
        CHECK(lstClosedWnd.ListCount() == 0);
        path = other;
    };
    log.ReadClosedLog();
    CHECK(RowsOf(lstClosedWnd) == Rows{L"C"});
}

TEST_CASE_FIXTURE(LogPage, "a log that is asked for in a message from another program is read behind that") {
    Show("A\r\n");
    int refused = 0;
    onPathAsked = [&] {
        if (refused < 2) {
            ++refused;
            throw AutomationError(RPC_E_CANTCALLOUT_ININPUTSYNCCALL);
        }
    };
    pathAsked = 0;
    Click(cmdRefreshLog);
    CHECK(RowsOf(lstClosedWnd).empty());
    CHECK(PumpUntil([&] { return RowsOf(lstClosedWnd) == Rows{L"A"}; }));
    PumpFor(300);
    CHECK(pathAsked == 3);
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(LogPage, "a log that the engine cannot tell of is asked for once") {
    onPathAsked = [] { throw AutomationError(RPC_E_DISCONNECTED); };
    Click(cmdRefreshLog);
    PumpFor(300);
    CHECK(pathAsked == 1);
}

TEST_CASE_FIXTURE(LogPage, "the log itself is never changed") {
    Show("A\r\nB");
    Click(cmdRefreshLog);
    lstClosedWnd.ListIndex(0);
    Click(cmdAddTo);
    Click(cmdClearList);
    CHECK(BytesOf(path) == "A\r\nB");
}

TEST_CASE_FIXTURE(LogPage, "an entry is found by its exact text, at its first row") {
    Show("c\r\nb\r\na\r\n");
    CHECK(log.FindClosedEntry(L"a") == 0);
    CHECK(log.FindClosedEntry(L"c") == 2);
    CHECK(log.FindClosedEntry(L"A") == -1);
    CHECK(log.FindClosedEntry(L"a ") == -1);
    CHECK(log.FindClosedEntry(L"") == -1);
    lstClosedWnd.AddItem(L"b");
    CHECK(log.FindClosedEntry(L"b") == 1);
}

TEST_CASE_FIXTURE(LogPage, "Add To Exclude List appends the site of the selected entry and marks a change") {
    lstExclude.AddItem(L"http://other");
    Show("http://www.example.com/popup/page.htm\r\nB\r\n");
    lstClosedWnd.ListIndex(1);
    Click(cmdAddTo);
    CHECK(RowsOf(lstExclude) == Rows{L"http://other", L"http://www.example.com"});
    CHECK(changes == 1);
    CHECK(RowsOf(lstClosedWnd) == Rows{L"B", L"http://www.example.com/popup/page.htm"});
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(LogPage, "an entry without a slash behind the eighth character is sent whole") {
    Show("about:blank page\r\n");
    lstClosedWnd.ListIndex(0);
    Click(cmdAddTo);
    CHECK(RowsOf(lstExclude) == Rows{L"about:blank page"});
}

TEST_CASE_FIXTURE(LogPage, "Add To Exclude List without a selected entry does nothing") {
    Show("A\r\n");
    Click(cmdAddTo);
    CHECK(lstExclude.ListCount() == 0);
    CHECK(changes == 0);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(LogPage, "a site that is in the exclude list already is refused with a message") {
    Show("a\r\nA\r\n");
    lstClosedWnd.ListIndex(0);
    Click(cmdAddTo);
    lstClosedWnd.ListIndex(1);
    Click(cmdAddTo);
    CHECK(RowsOf(lstExclude) == Rows{L"A"});
    CHECK(changes == 1);
    REQUIRE(recorder.messages.size() == 1);
    CHECK(recorder.messages[0].text == L"This is a duplicate entry and cannot be added.");
    CHECK(recorder.messages[0].title == kApplicationTitle);
    CHECK(recorder.messages[0].type == (MB_OK | MB_ICONINFORMATION));
    CHECK(recorder.messages[0].owner == window.Hwnd());
}

TEST_CASE_FIXTURE(LogPage, "Clear List clears nothing and marks a change") {
    Show("A\r\n");
    log.cmdClearList_Click();
    CHECK(RowsOf(lstClosedWnd) == Rows{L"A"});
    CHECK(changes == 1);
}

TEST_CASE_FIXTURE(LogPage, "nothing enables Clear List") {
    cmdClearList.Enabled(false);
    Show("A\r\n");
    Click(cmdRefreshLog);
    lstClosedWnd.ListIndex(0);
    Click(cmdAddTo);
    CHECK_FALSE(cmdClearList.Enabled());
}

TEST_CASE_FIXTURE(LogPage,
                  "a refresh that comes in while another one asks for the path leaves each line once") {
    std::string bytes;
    for (int i = 1; i <= 30; ++i)
        bytes += "http://site" + std::to_string(i) + "/\r\n";
    const Rows once = Show(bytes);
    onPathAsked = [this, isFirst = true]() mutable {
        if (std::exchange(isFirst, false)) log.ReadClosedLog();
    };
    pathAsked = 0;
    Click(cmdRefreshLog);
    CHECK(pathAsked == 2);
    CHECK(RowsOf(lstClosedWnd) == once);
}
