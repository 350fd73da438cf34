// The Exclude page, its dialog, and what counts as a duplicate in the list.
#include <doctest.h>

#include "lists/is_in_list.h"
#include "tests/lists/list_pages.h"

namespace {

constexpr int kAddress = IDC_TXTURL;

struct FilledPage : ExcludePage {
    FilledPage() { cmdApply.Enabled(false); }

    void Fill(int count) {
        for (int i = 0; i < count; ++i)
            lstExclude.AddItem(L"row" + std::to_wstring(i));
    }
};

}  // namespace

TEST_CASE_FIXTURE(FilledPage,
                  "the dialog opens with the caret behind http://, where the typed address follows") {
    Play(cmdAddURL, {[](HWND dialog) {
                         CHECK(SelectionIn(dialog, kAddress) == TextSelection{7, 7});
                         TypeKeys(dialog, kAddress, L"www.example.com");
                     },
                     kOK});
    CHECK(Rows() == Texts{L"http://www.example.com"});
}

TEST_CASE_FIXTURE(FilledPage,
                  "OK appends the address exactly as typed as the last row, blanks alone and the untouched "
                  "http:// too") {
    lstExclude.AddItem(L"zzz");
    Play(cmdAddURL, {Enter({{kAddress, L" HTTP://Www.Example.com/A b "}}), kOK});
    Play(cmdAddURL, {Enter({{kAddress, L"  "}}), kOK});
    Play(cmdAddURL, {kOK});
    CHECK(Rows() == Texts{L"zzz", L" HTTP://Www.Example.com/A b ", L"  ", L"http://"});
    CHECK(changes == 3);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(FilledPage, "an empty address is refused, and the focus goes to the address") {
    CheckRefused(cmdAddURL, {{kAddress, L""}}, L"Please enter the web site address to exclude.",
                 MB_ICONINFORMATION, kAddress);
    CHECK(Rows().empty());
}

TEST_CASE_FIXTURE(
    FilledPage,
    "a duplicate but for letter case is refused; what follows http:// is selected to be overtyped, or "
    "else the whole") {
    struct Row {
        const wchar_t* listed;
        const wchar_t* typed;
        TextSelection selection;
    };
    for (const Row& row : {Row{L"http://Example.com", L"http://eXAMPLE.COM", {7, 18}},
                           Row{L"x http://a", L"x http://a", {7, 10}},
                           Row{L"https://example.com", L"https://example.com", {0, 19}},
                           Row{L"http://b", L"HTTP://b", {0, 8}}, Row{L"a", L"a", {0, 1}}}) {
        CAPTURE(std::wstring(row.typed));
        lstExclude.Clear();
        lstExclude.AddItem(L"http://other");
        lstExclude.AddItem(row.listed);
        CheckRefused(cmdAddURL, {{kAddress, row.typed}},
                     L"The URL you entered already exists in the list, please enter another",
                     MB_ICONINFORMATION, kAddress, [&](HWND dialog) {
                         CHECK(SelectionIn(dialog, kAddress) == row.selection);
                         TypeKeys(dialog, kAddress, L"new");
                         CHECK(TextIn(dialog, kAddress) ==
                               std::wstring(row.typed).substr(0, row.selection.start) + L"new");
                     });
        CHECK(Rows() == Texts{L"http://other", row.listed});
    }
}

TEST_CASE_FIXTURE(FilledPage,
                  "a text is in a list when a row equals it as a whole, without regard to letter case") {
    CHECK_FALSE(IsInList(L"", lstExclude));
    for (const wchar_t* const row : {L"http://one", L"http://Caf\u00E9", L"a"})
        lstExclude.AddItem(row);
    for (const wchar_t* const text : {L"HTTP://ONE", L"http://one", L"http://caf\u00C9"})
        CHECK(IsInList(text, lstExclude));
    for (const wchar_t* const text :
         {L"http://on", L"http://one ", L" http://one", L"one", L"http://onf", L""})
        CHECK_FALSE(IsInList(text, lstExclude));
    lstExclude.AddItem(L"");
    CHECK(IsInList(L"", lstExclude));
}

TEST_CASE_FIXTURE(
    FilledPage,
    "a removal selects the row above, of row 0 the new row 0, of the last row the new last row, and of the "
    "only row disables Remove Url; it enables Apply by itself, not through the change mark") {
    struct Row {
        int count;
        int removed;
        int selected;
    };
    for (const Row& row :
         {Row{6, 3, 2}, Row{3, 0, 0}, Row{3, 2, 1}, Row{2, 1, 0}, Row{3, 1, 0}, Row{1, 0, -1}}) {
        CAPTURE(row.count);
        CAPTURE(row.removed);
        lstExclude.Clear();
        Fill(row.count);
        Texts expected = Rows();
        expected.erase(expected.begin() + row.removed);
        cmdApply.Enabled(false);
        lstExclude.ListIndex(row.removed);
        Click(cmdRemoveURL);
        CHECK(Rows() == expected);
        CHECK(lstExclude.ListIndex() == row.selected);
        CHECK(cmdApply.Enabled());
        CHECK(cmdRemoveURL.Enabled() == (row.count > 1));
    }
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(FilledPage,
                  "Remove Url without a selected row changes nothing, except that it disables itself "
                  "where the list is empty") {
    for (const int count : {2, 0}) {
        CAPTURE(count);
        lstExclude.Clear();
        Fill(count);
        page.cmdRemoveURL_Click();
        CHECK(lstExclude.ListCount() == count);
        CHECK(lstExclude.ListIndex() == -1);
        CHECK(cmdRemoveURL.Enabled() == (count != 0));
        CHECK_FALSE(cmdApply.Enabled());
    }
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(
    FilledPage,
    "selecting a row, by code, by a click or by a removal, enables Remove Url; none disables it") {
    Fill(3);
    cmdRemoveURL.Enabled(false);
    lstExclude.ListIndex(1);
    CHECK(cmdRemoveURL.Enabled());
    cmdRemoveURL.Enabled(false);
    lstExclude.ListIndex(1);  // it is selected already, which raises no click
    CHECK_FALSE(cmdRemoveURL.Enabled());
    lstExclude.ListIndex(2);
    lstExclude.ListIndex(-1);
    CHECK_FALSE(cmdRemoveURL.Enabled());
    SendMessageW(lstExclude.Hwnd(), LB_SETCURSEL, 2, 0);
    SendMessageW(window.Hwnd(), WM_COMMAND, MAKEWPARAM(lstExclude.Id(), LBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(lstExclude.Hwnd()));
    CHECK(cmdRemoveURL.Enabled());
    CHECK_FALSE(cmdApply.Enabled());
    cmdRemoveURL.Enabled(false);
    page.cmdRemoveURL_Click();
    CHECK(cmdRemoveURL.Enabled());
    CHECK(changes == 0);
}
