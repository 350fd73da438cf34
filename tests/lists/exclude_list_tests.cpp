#include <doctest.h>

#include "tests/lists/exclude_page.h"
#include "tests/support/shown_text.h"

using Texts = std::vector<std::wstring>;

namespace {

struct RemovalPage : ExcludePage {
    RemovalPage() { cmdApply.Enabled(false); }

    void RemoveRow(int row) {
        lstExclude.ListIndex(row);
        Click(cmdRemoveURL);
    }
};

}  // namespace

TEST_CASE_FIXTURE(RemovalPage, "removing a row selects the row above it") {
    Fill(6);
    RemoveRow(3);
    CHECK(Rows() == Texts{L"row0", L"row1", L"row2", L"row4", L"row5"});
    CHECK(lstExclude.ListIndex() == 2);
    CHECK(cmdApply.Enabled());
    CHECK(cmdRemoveURL.Enabled());
}

TEST_CASE_FIXTURE(RemovalPage, "removing the first row selects the new first row") {
    Fill(3);
    RemoveRow(0);
    CHECK(Rows() == Texts{L"row1", L"row2"});
    CHECK(lstExclude.ListIndex() == 0);
    CHECK(cmdApply.Enabled());
}

TEST_CASE_FIXTURE(RemovalPage, "removing the last row selects the new last row") {
    Fill(3);
    RemoveRow(2);
    CHECK(Rows() == Texts{L"row0", L"row1"});
    CHECK(lstExclude.ListIndex() == 1);
    CHECK(cmdApply.Enabled());
}

TEST_CASE_FIXTURE(RemovalPage,
                  "removing the only row leaves an empty list, Remove Url disabled and Apply enabled") {
    Fill(1);
    RemoveRow(0);
    CHECK(lstExclude.ListCount() == 0);
    CHECK(lstExclude.ListIndex() == -1);
    CHECK_FALSE(cmdRemoveURL.Enabled());
    CHECK(cmdApply.Enabled());
}

TEST_CASE_FIXTURE(RemovalPage, "a removal enables Apply by itself, not through the change mark") {
    Fill(2);
    RemoveRow(1);
    CHECK(changes == 0);
    CHECK(cmdApply.Enabled());
}

TEST_CASE_FIXTURE(RemovalPage, "Remove Url without a selected row changes nothing while there are rows") {
    Fill(2);
    page.cmdRemoveURL_Click();
    CHECK(lstExclude.ListCount() == 2);
    CHECK(lstExclude.ListIndex() == -1);
    CHECK(cmdRemoveURL.Enabled());
    CHECK_FALSE(cmdApply.Enabled());
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(RemovalPage, "Remove Url on an empty list only disables itself") {
    page.cmdRemoveURL_Click();
    CHECK_FALSE(cmdRemoveURL.Enabled());
    CHECK_FALSE(cmdApply.Enabled());
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(RemovalPage, "selecting a row enables Remove Url, selecting none disables it") {
    Fill(2);
    cmdRemoveURL.Enabled(false);
    lstExclude.ListIndex(1);
    CHECK(cmdRemoveURL.Enabled());
    lstExclude.ListIndex(-1);
    CHECK_FALSE(cmdRemoveURL.Enabled());
    CHECK(changes == 0);
    CHECK_FALSE(cmdApply.Enabled());
}

TEST_CASE_FIXTURE(RemovalPage, "selecting from code what is selected already raises no click") {
    Fill(2);
    lstExclude.ListIndex(1);
    cmdRemoveURL.Enabled(false);
    lstExclude.ListIndex(1);
    CHECK_FALSE(cmdRemoveURL.Enabled());
}

TEST_CASE_FIXTURE(RemovalPage, "a row that the user clicks enables Remove Url") {
    Fill(2);
    cmdRemoveURL.Enabled(false);
    SendMessageW(lstExclude.Hwnd(), LB_SETCURSEL, 0, 0);
    SendMessageW(window.Hwnd(), WM_COMMAND, MAKEWPARAM(lstExclude.Id(), LBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(lstExclude.Hwnd()));
    CHECK(cmdRemoveURL.Enabled());
}

TEST_CASE_FIXTURE(RemovalPage, "the selection that a removal sets raises the list's click") {
    Fill(3);
    lstExclude.ListIndex(2);
    cmdRemoveURL.Enabled(false);
    page.cmdRemoveURL_Click();
    CHECK(cmdRemoveURL.Enabled());
}

TEST_CASE_FIXTURE(RemovalPage, "rows can be removed until none is left") {
    Fill(200);
    lstExclude.ListIndex(120);
    for (int left = 199; left >= 0; --left) {
        Click(cmdRemoveURL);
        REQUIRE(lstExclude.ListCount() == left);
    }
    CHECK_FALSE(cmdRemoveURL.Enabled());
}
