// The Search page and its dialog.
#include <doctest.h>

#include "tests/lists/list_pages.h"

namespace {

constexpr int kName = IDC_TXTNAME;
constexpr int kAddress = IDC_TXTURL;
constexpr int kIndex = IDC_TXTINDEX;

DialogScript::Step EnterBoth(const std::wstring& name, const std::wstring& address) {
    return Enter({{kName, name}, {kAddress, address}});
}

}  // namespace

TEST_CASE_FIXTURE(SearchPage,
                  "setting up the search columns empties the list, shares its width out, marks no change") {
    for (const int width : {200, 300, 333, 1000}) {
        CAPTURE(width);
        SetWindowPos(lvwSearchURLs.Hwnd(), nullptr, 0, 0, width, 100, SWP_NOMOVE | SWP_NOZORDER);
        AddRow({L"a", L"b"}, false);
        SetupSearchColumns(lvwSearchURLs);
        CHECK(lvwSearchURLs.Count() == 0);
        for (const auto& [column, share] : {std::pair(0, 0.3), std::pair(1, 0.68)})
            CHECK(ListView_GetColumnWidth(lvwSearchURLs.Hwnd(), column) ==
                  doctest::Approx(share * width).epsilon(0.01));
    }
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(
    SearchPage,
    "an added engine is a checked row at the end, as typed, also with the untouched http://, a name of "
    "blanks, or what is there already") {
    const std::pair<std::vector<DialogScript::Step>, const wchar_t*> additions[] = {
        {{EnterBoth(L" Three ", L"three.example "), kOK}, L" Three |three.example |x"},
        {{Enter({{kName, L"Four"}}), kOK}, L"Four|http://|x"},
        {{Enter({{kName, L" "}}), kOK}, L" |http://|x"},
        {{EnterBoth(L"One", L"http://one"), kOK}, L"One|http://one|x"}};
    for (const auto& [steps, row] : additions) {
        changes = 0;
        const int before = RowCount();
        Play(cmdAddSearch, steps);
        REQUIRE(RowCount() == before + 1);
        CHECK(Row(RowCount()) == row);
        CHECK(changes == 1);
    }
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(
    SearchPage,
    "an empty address is refused before an empty name; with both empty only the address is named") {
    struct Refusal {
        const wchar_t* name;
        const wchar_t* address;
        const wchar_t* message;
        int focus;
    };
    constexpr Refusal kRefusals[] = {{L"", L"", L"You need an URL.", kAddress},
                                     {L"Three", L"", L"You need an URL.", kAddress},
                                     {L"", L"http://three", L"You need a Name.", kName}};
    for (const Refusal& refusal : kRefusals)
        CheckRefused(cmdAddSearch, {{kName, refusal.name}, {kAddress, refusal.address}}, refusal.message, 0,
                     refusal.focus);
    CHECK(RowCount() == 2);
}

TEST_CASE_FIXTURE(SearchPage,
                  "Edit Search opens the dialog with the selected row, whose index is not for the user") {
    AddRow({L"", L""}, false);
    const std::wstring rows[][3] = {{L"Two", L"http://two", L"2"}, {L"", L"", L"3"}};
    for (const auto& row : rows) {
        changes = 0;
        lvwSearchURLs.Select(std::stoi(row[2]));
        Play(cmdEditSearch, {[&](HWND dialog) {
                                 CHECK(changes == 0);
                                 wchar_t caption[64]{};
                                 GetWindowTextW(dialog, caption, 64);
                                 CHECK(std::wstring(caption) == L"Add Search Address");
                                 CHECK(TextIn(dialog, kName) == row[0]);
                                 CHECK(TextIn(dialog, kAddress) == row[1]);
                                 CHECK(TextIn(dialog, kIndex) == row[2]);
                                 CHECK_FALSE(IsWindowVisible(GetDlgItem(dialog, kIndex)));
                             },
                             kCancel});
    }
}

TEST_CASE_FIXTURE(
    SearchPage,
    "an edited row keeps its place and its box, unchecked or checked; a cancelled edit leaves the "
    "row as it is and yet marks a change") {
    lvwSearchURLs.Select(2);
    Play(cmdEditSearch, {EnterBoth(L"Zwei", L"http://zwei"), kCancel});
    CHECK(Row(2) == L"Two|http://two");
    CHECK(changes == 1);
    Play(cmdEditSearch, {EnterBoth(L"Zwei", L"http://zwei"), kOK});
    CHECK(Row(1) == L"One|http://one|x");
    CHECK(Row(2) == L"Zwei|http://zwei");
    CHECK(changes == 2);
    lvwSearchURLs.Select(1);
    Play(cmdEditSearch, {EnterBoth(L"Eins", L"http://eins"), kOK});
    CHECK(Row(1) == L"Eins|http://eins|x");
    CHECK(RowCount() == 2);
    CHECK(changes == 3);
}

TEST_CASE_FIXTURE(SearchPage,
                  "the row to edit is the whole number that the index comes to, and 0 is a new row") {
    const auto enter = [this](const wchar_t* index) {
        frmAddSearch dialog;
        dialog.ListReference(lvwSearchURLs);
        dialog.SearchName(L"New");
        dialog.SearchURL(L"http://new");
        dialog.SearchIndex(index);
        const DialogScript script({kOK});
        dialog.ShowModal(window.Hwnd());
    };
    enter(L"1.6");
    CHECK(RowCount() == 2);
    CHECK(Row(2) == L"New|http://new");
    enter(L"0.0");
    CHECK(RowCount() == 3);
    CHECK(Row(3) == L"New|http://new|x");
}

TEST_CASE_FIXTURE(SearchPage,
                  "every row can be removed, which leaves an empty list; Edit and Remove Search without a "
                  "selected row do nothing at all") {
    Click(cmdEditSearch);
    Click(cmdRemoveSearch);
    CHECK(RowCount() == 2);
    CHECK(changes == 0);
    for (int left = 1; left >= 0; --left) {
        lvwSearchURLs.Select(1);
        Click(cmdRemoveSearch);
        CHECK(RowCount() == left);
    }
    CHECK(changes == 2);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(SearchPage, "ticking and clearing an engine's box marks a change") {
    lvwSearchURLs.Select(2);
    CHECK(changes == 0);
    for (int times = 1; times <= 2; ++times) {
        SendMessageW(lvwSearchURLs.Hwnd(), WM_KEYDOWN, VK_SPACE, 1);
        CHECK(lvwSearchURLs.Checked(2) == (times == 1));
        CHECK(changes == times);
    }
}
