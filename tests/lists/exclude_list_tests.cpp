// The Exclude page, its dialog, and what counts as a duplicate in the list.
#include <doctest.h>

#include "lists/is_in_list.h"
#include "tests/lists/list_pages.h"

namespace {

constexpr int kAddress = IDC_TXTURL;

struct FilledPage : ExcludePage {
    void Fill(int count) {
        lstExclude.Clear();
        for (int i = 0; i < count; ++i)
            lstExclude.AddItem(L"row" + std::to_wstring(i));
    }
};

}  // namespace

TEST_CASE_FIXTURE(
    FilledPage,
    "the dialog opens with the caret behind http://, where the typed address follows; OK appends "
    "the address exactly as typed as the last row, blanks alone and the untouched http:// too") {
    lstExclude.AddItem(L"zzz");
    Play(cmdAddURL, {[](HWND dialog) {
                         CHECK(SelectionIn(dialog, kAddress) == MAKELRESULT(7, 7));
                         TypeKeys(dialog, kAddress, L"www.example.com");
                     },
                     kOK});
    Play(cmdAddURL, {Enter({{kAddress, L" HTTP://Www.Example.com/A b "}}), kOK});
    Play(cmdAddURL, {Enter({{kAddress, L"  "}}), kOK});
    Play(cmdAddURL, {kOK});
    CHECK(Rows() ==
          Texts{L"zzz", L"http://www.example.com", L" HTTP://Www.Example.com/A b ", L"  ", L"http://"});
    CHECK(changes == 4);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(FilledPage,
                  "an empty address is refused, and a duplicate but for letter case; the focus goes to the "
                  "address, in which what follows http:// is selected to be overtyped, or else the whole") {
    const wchar_t* const empty = L"Please enter the web site address to exclude.";
    const wchar_t* const duplicate = L"The URL you entered already exists in the list, please enter another";
    struct Row {
        std::wstring listed;
        std::wstring typed;
        const wchar_t* message;
        WORD start;  // of the selected part
        WORD end;
    };
    const Row rows[] = {{L"a", L"", empty, 0, 0},
                        {L"http://Example.com", L"http://eXAMPLE.COM", duplicate, 7, 18},
                        {L"x http://a", L"x http://a", duplicate, 7, 10},
                        {L"https://example.com", L"https://example.com", duplicate, 0, 19},
                        {L"http://b", L"HTTP://b", duplicate, 0, 8},
                        {L"a", L"a", duplicate, 0, 1}};
    for (const Row& row : rows) {
        CAPTURE(row.typed);
        lstExclude.Clear();
        lstExclude.AddItem(L"http://other");
        lstExclude.AddItem(row.listed);
        CheckRefused(cmdAddURL, {{kAddress, row.typed}}, row.message, MB_ICONINFORMATION, kAddress,
                     [&](HWND dialog) {
                         CHECK(SelectionIn(dialog, kAddress) == MAKELRESULT(row.start, row.end));
                         TypeKeys(dialog, kAddress, L"new");
                         CHECK(TextIn(dialog, kAddress) == row.typed.substr(0, row.start) + L"new");
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
    "a removal selects the row above, of row 0 the new row 0, of the last row the new last row, and enables "
    "Apply by itself, not through the change mark; without a selected row it changes nothing; where the list "
    "is empty then Remove Url is disabled") {
    constexpr int kRows[][3] = {{6, 3, 2}, {3, 0, 0},  {3, 2, 1},   {2, 1, 0},
                                {3, 1, 0}, {1, 0, -1}, {2, -1, -1}, {0, -1, -1}};
    for (const auto& [count, removed, selected] : kRows) {
        CAPTURE(count);
        CAPTURE(removed);
        Fill(count);
        Texts expected = Rows();
        if (removed != -1) expected.erase(expected.begin() + removed);
        cmdApply.Enabled(false);
        cmdRemoveURL.Enabled(true);
        lstExclude.ListIndex(removed);
        excludeList.cmdRemoveURL_Click();
        CHECK(Rows() == expected);
        CHECK(lstExclude.ListIndex() == selected);
        CHECK(cmdApply.Enabled() == (removed != -1));
        CHECK(cmdRemoveURL.Enabled() == !expected.empty());
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
    excludeList.cmdRemoveURL_Click();
    CHECK(cmdRemoveURL.Enabled());
    CHECK(changes == 0);
}
