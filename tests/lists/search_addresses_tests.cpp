// The Search page and its dialog.
#include <doctest.h>

#include "lists/frm_add_search.h"
#include "tests/lists/list_pages.h"

namespace {

constexpr int kName = IDC_TXTNAME;
constexpr int kAddress = IDC_TXTURL;
constexpr int kIndex = IDC_TXTINDEX;

DialogScript::Step EnterBoth(const std::wstring& name, const std::wstring& address) {
    return Enter({{kName, name}, {kAddress, address}});
}

}  // namespace

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
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*, int> refusals[] = {
        {L"", L"", L"You need an URL.", kAddress},
        {L"Three", L"", L"You need an URL.", kAddress},
        {L"", L"http://three", L"You need a Name.", kName}};
    for (const auto& [name, address, message, focus] : refusals)
        CheckRefused(cmdAddSearch, {{kName, name}, {kAddress, address}}, message, 0, focus);
    CHECK(RowCount() == 2);
}

TEST_CASE_FIXTURE(
    SearchPage,
    "Edit Search opens the dialog with the selected row, whose index is not for the user; an edited row "
    "keeps its place and its box, unchecked or checked; a cancelled edit leaves the row and yet marks a "
    "change") {
    const auto edit = [this](int row, const Texts& shown, const DialogScript::Step& end) {
        Select(lvwSearchURLs, row);
        changes = 0;
        Play(cmdEditSearch, {[&](HWND dialog) {
                                 CHECK(changes == 0);
                                 CHECK(ShownText(dialog) == L"Add Search Address");
                                 CHECK(TextIn(dialog, kName) == shown[0]);
                                 CHECK(TextIn(dialog, kAddress) == shown[1]);
                                 CHECK(TextIn(dialog, kIndex) == std::to_wstring(row));
                                 CHECK_FALSE(IsWindowVisible(GetDlgItem(dialog, kIndex)));
                             },
                             EnterBoth(L"New", L"http://new"), end});
        CHECK(changes == 1);
        return Row(row);
    };
    AddRow(lvwSearchURLs, L"|");
    CHECK(edit(3, {L"", L""}, kCancel) == L"|");
    CHECK(edit(2, {L"Two", L"http://two"}, kCancel) == L"Two|http://two");
    CHECK(edit(2, {L"Two", L"http://two"}, kOK) == L"New|http://new");
    CHECK(edit(1, {L"One", L"http://one"}, kOK) == L"New|http://new|x");
    CHECK(RowCount() == 3);
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
        Select(lvwSearchURLs, 1);
        Click(cmdRemoveSearch);
        CHECK(RowCount() == left);
    }
    CHECK(changes == 2);
    CHECK(recorder.messages.empty());
}
