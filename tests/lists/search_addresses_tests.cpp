#include <doctest.h>

#include "lists/message.h"
#include "tests/lists/search_page.h"
#include "tests/support/shown_text.h"

namespace {

constexpr int kName = IDC_ADD_SEARCH_NAME;
constexpr int kAddress = IDC_ADD_SEARCH_ADDRESS;
constexpr int kIndex = IDC_ADD_SEARCH_INDEX;

const DialogScript::Step kOK = [](HWND dialog) { ClickButton(dialog, IDOK); };
const DialogScript::Step kCancel = [](HWND dialog) { ClickButton(dialog, IDCANCEL); };

DialogScript::Step Enter(const std::wstring& name, const std::wstring& address) {
    return [=](HWND dialog) {
        TypeText(dialog, kName, name);
        TypeText(dialog, kAddress, address);
    };
}

}  // namespace

TEST_CASE_FIXTURE(SearchPage, "setting up the search columns empties the list and shares its width out") {
    for (const int width : {200, 300, 333, 1000}) {
        CAPTURE(width);
        SetWindowPos(lvwSearchURLs.Hwnd(), nullptr, 0, 0, width, 100, SWP_NOMOVE | SWP_NOZORDER);
        AddRow(L"a", L"b", false);
        SetupSearchColumns(lvwSearchURLs);
        CHECK(lvwSearchURLs.Count() == 0);
        CHECK(ListView_GetColumnWidth(lvwSearchURLs.Hwnd(), 0) == doctest::Approx(0.3 * width).epsilon(0.01));
        CHECK(ListView_GetColumnWidth(lvwSearchURLs.Hwnd(), 1) ==
              doctest::Approx(0.68 * width).epsilon(0.01));
    }
    CHECK(changes == 0);
}

TEST_CASE_FIXTURE(SearchPage,
                  "Add Search opens the dialog with its initial texts and the focus in the name") {
    Play(cmdAddSearch, {[this](HWND dialog) {
                            CHECK(changes == 0);
                            wchar_t caption[64]{};
                            GetWindowTextW(dialog, caption, 64);
                            CHECK(std::wstring(caption) == L"Add Search Address");
                            CHECK(TextIn(dialog, IDC_ADD_SEARCH_NAME_LABEL) == L"Name:");
                            CHECK(TextIn(dialog, IDC_ADD_SEARCH_ADDRESS_LABEL) == L"Address:");
                            CHECK(TextIn(dialog, kName).empty());
                            CHECK(TextIn(dialog, kAddress) == L"http://");
                            CHECK(TextIn(dialog, kIndex) == L"0");
                            CHECK_FALSE(IsWindowVisible(GetDlgItem(dialog, kIndex)));
                            CHECK(TextIn(dialog, IDOK) == L"OK");
                            CHECK(TextIn(dialog, IDCANCEL) == L"Cancel");
                            CHECK(FocusedId() == kName);
                        },
                        kCancel});
}

TEST_CASE_FIXTURE(SearchPage, "an added engine is a checked row at the end") {
    Play(cmdAddSearch, {Enter(L" Three ", L"three.example "), kOK});
    REQUIRE(lvwSearchURLs.Count() == 3);
    CHECK(Row(3) == L" Three |three.example |True");
    CHECK(changes == 1);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(SearchPage, "a name with the untouched http:// is accepted, and a name of blanks too") {
    Play(cmdAddSearch, {[](HWND dialog) { TypeText(dialog, kName, L"Three"); }, kOK});
    CHECK(Row(3) == L"Three|http://|True");
    Play(cmdAddSearch, {[](HWND dialog) { TypeText(dialog, kName, L" "); }, kOK});
    CHECK(Row(4) == L" |http://|True");
}

TEST_CASE_FIXTURE(SearchPage, "the same name and address can be there twice") {
    Play(cmdAddSearch, {Enter(L"One", L"http://one"), kOK});
    CHECK(Row(1) == Row(3));
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(SearchPage, "an empty address is refused before an empty name") {
    struct Refusal {
        const wchar_t* name;
        const wchar_t* address;
        const wchar_t* message;
        int focus;
    };
    constexpr Refusal kRefusals[] = {{L"", L"", L"You need an URL.", kAddress},
                                     {L"Three", L"", L"You need an URL.", kAddress},
                                     {L"", L"http://three", L"You need a Name.", kName}};
    for (const Refusal& refusal : kRefusals) {
        recorder.messages.clear();
        Play(cmdAddSearch, {Enter(refusal.name, refusal.address),
                            [&](HWND dialog) {
                                SetFocus(GetDlgItem(dialog, IDCANCEL));
                                ClickButton(dialog, IDOK);
                                REQUIRE(recorder.messages.size() == 1);
                                CHECK(recorder.messages[0].text == refusal.message);
                                CHECK(recorder.messages[0].title == kApplicationTitle);
                                CHECK(recorder.messages[0].type == MB_OK);
                                CHECK(recorder.messages[0].owner == dialog);
                                CHECK(FocusedId() == refusal.focus);
                                CHECK(IsWindow(dialog));
                            },
                            kCancel});
    }
    CHECK(lvwSearchURLs.Count() == 2);
}

TEST_CASE_FIXTURE(SearchPage, "Edit Search opens the dialog with the selected row") {
    lvwSearchURLs.Select(2);
    Play(cmdEditSearch, {[this](HWND dialog) {
                             CHECK(changes == 0);
                             wchar_t caption[64]{};
                             GetWindowTextW(dialog, caption, 64);
                             CHECK(std::wstring(caption) == L"Add Search Address");
                             CHECK(TextIn(dialog, kName) == L"Two");
                             CHECK(TextIn(dialog, kAddress) == L"http://two");
                             CHECK(TextIn(dialog, kIndex) == L"2");
                         },
                         kCancel});
}

TEST_CASE_FIXTURE(SearchPage, "an edited row keeps its place and its box") {
    lvwSearchURLs.Select(2);
    Play(cmdEditSearch, {Enter(L"Zwei", L"http://zwei"), kOK});
    CHECK(Row(1) == L"One|http://one|True");
    CHECK(Row(2) == L"Zwei|http://zwei|False");
    CHECK(changes == 1);
    lvwSearchURLs.Select(1);
    Play(cmdEditSearch, {Enter(L"Eins", L"http://eins"), kOK});
    CHECK(Row(1) == L"Eins|http://eins|True");
    CHECK(lvwSearchURLs.Count() == 2);
    CHECK(changes == 2);
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
    CHECK(lvwSearchURLs.Count() == 2);
    CHECK(Row(2) == L"New|http://new|False");
    enter(L"0.0");
    CHECK(lvwSearchURLs.Count() == 3);
    CHECK(Row(3) == L"New|http://new|True");
}

TEST_CASE_FIXTURE(SearchPage, "a row with empty texts is edited with empty texts") {
    AddRow(L"", L"", false);
    lvwSearchURLs.Select(3);
    Play(cmdEditSearch, {[](HWND dialog) {
                             CHECK(TextIn(dialog, kName).empty());
                             CHECK(TextIn(dialog, kAddress).empty());
                         },
                         kCancel});
}

TEST_CASE_FIXTURE(SearchPage, "a cancelled edit leaves the row as it is and yet marks a change") {
    lvwSearchURLs.Select(2);
    Play(cmdEditSearch, {Enter(L"Zwei", L"http://zwei"), kCancel});
    CHECK(Row(2) == L"Two|http://two|False");
    CHECK(changes == 1);
}

TEST_CASE_FIXTURE(SearchPage, "a cancelled addition adds nothing and yet marks a change") {
    Play(cmdAddSearch, {Enter(L"Three", L"http://three"), kCancel});
    CHECK(lvwSearchURLs.Count() == 2);
    CHECK(changes == 1);
}

TEST_CASE_FIXTURE(SearchPage, "Edit and Remove Search without a selected row do nothing at all") {
    Click(cmdEditSearch);
    Click(cmdRemoveSearch);
    CHECK(lvwSearchURLs.Count() == 2);
    CHECK(changes == 0);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(SearchPage, "every row can be removed") {
    for (int left = 1; left >= 0; --left) {
        lvwSearchURLs.Select(1);
        Click(cmdRemoveSearch);
        CHECK(lvwSearchURLs.Count() == left);
    }
    CHECK(changes == 2);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(SearchPage, "ticking and clearing an engine's box marks a change") {
    lvwSearchURLs.Select(2);
    CHECK(changes == 0);
    SendMessageW(lvwSearchURLs.Hwnd(), WM_KEYDOWN, VK_SPACE, 1);
    CHECK(lvwSearchURLs.Checked(2));
    CHECK(changes == 1);
    SendMessageW(lvwSearchURLs.Hwnd(), WM_KEYDOWN, VK_SPACE, 1);
    CHECK_FALSE(lvwSearchURLs.Checked(2));
    CHECK(changes == 2);
}

TEST_CASE_FIXTURE(SearchPage,
                  "Enter presses OK in the dialog of an engine, Esc and the close box cancel it") {
    SUBCASE("Enter") {
        Play(cmdAddSearch, {Enter(L"Three", L"http://three"), [](HWND) { PostKey(VK_RETURN); }});
        CHECK(lvwSearchURLs.Count() == 3);
    }
    SUBCASE("Esc") {
        Play(cmdAddSearch, {[](HWND) { PostKey(VK_ESCAPE); }});
        CHECK(lvwSearchURLs.Count() == 2);
    }
    SUBCASE("close box") {
        Play(cmdAddSearch, {[](HWND dialog) { PostMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0); }});
        CHECK(lvwSearchURLs.Count() == 2);
    }
    CHECK(changes == 1);
}

TEST_CASE_FIXTURE(SearchPage, "the tab key passes the index by") {
    Play(cmdAddSearch, {[](HWND) { PostKey(VK_TAB); },
                        [](HWND) {
                            CHECK(FocusedId() == kAddress);
                            PostKey(VK_TAB);
                        },
                        [](HWND) {
                            CHECK(FocusedId() == IDOK);
                            PostKey(VK_TAB);
                        },
                        [](HWND) { CHECK(FocusedId() == IDCANCEL); }, kCancel});
}

TEST_CASE_FIXTURE(SearchPage, "texts of thousands of characters are kept whole through an edit") {
    const std::wstring name(3000, L'n');
    const std::wstring address = L"http://" + std::wstring(5000, L'a');
    AddRow(name.c_str(), address.c_str(), false);
    lvwSearchURLs.Select(3);
    Play(cmdEditSearch, {kOK});
    CHECK((Row(3) == name + L'|' + address + L"|False"));
}
