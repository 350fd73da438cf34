#include <doctest.h>

#include "lists/frm_add_url.h"
#include "lists/message.h"
#include "tests/lists/exclude_page.h"
#include "tests/support/dialog_script.h"
#include "tests/support/shown_text.h"

using Texts = std::vector<std::wstring>;

namespace {

constexpr int kAddress = IDC_ADD_URL_ADDRESS;

struct AddUrlPage : ExcludePage {
    // Opens the dialog as the user does and plays him in it.
    void Add(std::vector<DialogScript::Step> steps) {
        const DialogScript script(std::move(steps));
        Click(cmdAddURL);
    }
    // Enters an address that must be accepted.
    void AddAddress(const std::wstring& address) {
        Add({[=](HWND dialog) {
            TypeText(dialog, kAddress, address);
            ClickButton(dialog, IDOK);
        }});
    }
};

const DialogScript::Step kOK = [](HWND dialog) { ClickButton(dialog, IDOK); };
const DialogScript::Step kCancel = [](HWND dialog) { ClickButton(dialog, IDCANCEL); };

}  // namespace

TEST_CASE_FIXTURE(AddUrlPage, "the dialog opens with the caret behind http:// and the focus in the address") {
    Add({[this](HWND dialog) {
             wchar_t caption[64]{};
             GetWindowTextW(dialog, caption, 64);
             CHECK(std::wstring(caption) == L"Add Web Site URL");
             CHECK(TextIn(dialog, IDC_ADD_URL_LABEL) == L"Web Site Address to Exclude");
             CHECK(TextIn(dialog, IDOK) == L"OK");
             CHECK(TextIn(dialog, IDCANCEL) == L"Cancel");
             CHECK(changes == 0);
             CHECK(TextIn(dialog, kAddress) == L"http://");
             CHECK(SelectionIn(dialog, kAddress) == TextSelection{7, 7});
             CHECK(FocusedId() == kAddress);
         },
         kCancel});
}

TEST_CASE_FIXTURE(AddUrlPage, "what is typed into the fresh dialog follows http://") {
    Add({[](HWND dialog) { TypeKeys(dialog, kAddress, L"www.example.com"); }, kOK});
    CHECK(Rows() == Texts{L"http://www.example.com"});
}

TEST_CASE_FIXTURE(AddUrlPage, "OK appends the address exactly as typed as the last row and marks a change") {
    lstExclude.AddItem(L"zzz");
    AddAddress(L" HTTP://Www.Example.com/A b ");
    CHECK(Rows() == Texts{L"zzz", L" HTTP://Www.Example.com/A b "});
    CHECK(changes == 1);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(AddUrlPage, "OK on the untouched dialog adds http://, a second time it is a duplicate") {
    Add({kOK});
    CHECK(Rows() == Texts{L"http://"});
    Add({kOK, kCancel});
    CHECK(Rows() == Texts{L"http://"});
    CHECK(recorder.messages.size() == 1);
    CHECK(changes == 2);
}

TEST_CASE_FIXTURE(AddUrlPage, "an address of blanks is accepted") {
    AddAddress(L"  ");
    CHECK(Rows() == Texts{L"  "});
}

TEST_CASE_FIXTURE(AddUrlPage, "an empty address is refused, and the focus goes to the address") {
    Add({[this](HWND dialog) {
             TypeText(dialog, kAddress, L"");
             SetFocus(GetDlgItem(dialog, IDCANCEL));
             ClickButton(dialog, IDOK);
             REQUIRE(recorder.messages.size() == 1);
             CHECK(recorder.messages[0].text == L"Please enter the web site address to exclude.");
             CHECK(recorder.messages[0].title == kApplicationTitle);
             CHECK(recorder.messages[0].type == (MB_OK | MB_ICONINFORMATION));
             CHECK(recorder.messages[0].owner == dialog);
             CHECK(FocusedId() == kAddress);
             CHECK(IsWindow(dialog));
         },
         kCancel});
    CHECK(lstExclude.ListCount() == 0);
}

TEST_CASE_FIXTURE(AddUrlPage,
                  "a duplicate is refused, and what follows http:// is selected to be overtyped") {
    lstExclude.AddItem(L"http://other");
    lstExclude.AddItem(L"http://Example.com");
    Add({[this](HWND dialog) {
             TypeText(dialog, kAddress, L"http://eXAMPLE.COM");
             SetFocus(GetDlgItem(dialog, IDCANCEL));
             ClickButton(dialog, IDOK);
             REQUIRE(recorder.messages.size() == 1);
             CHECK(recorder.messages[0].text ==
                   L"The URL you entered already exists in the list, please enter another");
             CHECK(recorder.messages[0].title == kApplicationTitle);
             CHECK(recorder.messages[0].type == (MB_OK | MB_ICONINFORMATION));
             CHECK(recorder.messages[0].owner == dialog);
             CHECK(FocusedId() == kAddress);
             CHECK(TextIn(dialog, kAddress) == L"http://eXAMPLE.COM");
             CHECK(SelectionIn(dialog, kAddress) == TextSelection{7, 18});
             TypeKeys(dialog, kAddress, L"new");
         },
         kOK});
    CHECK(Rows() == Texts{L"http://other", L"http://Example.com", L"http://new"});
    CHECK(changes == 1);
}

TEST_CASE_FIXTURE(AddUrlPage, "the whole of a duplicate without http:// is selected") {
    for (const wchar_t* const address :
         {L"https://example.com", L"HTTP://example.com", L"example.com", L"a"}) {
        const std::wstring text = address;
        CAPTURE(text);
        lstExclude.Clear();
        lstExclude.AddItem(text);
        Add({[&](HWND dialog) {
                 TypeText(dialog, kAddress, text);
                 ClickButton(dialog, IDOK);
                 CHECK(SelectionIn(dialog, kAddress) == TextSelection{0, static_cast<DWORD>(text.size())});
             },
             kCancel});
    }
    CHECK(recorder.messages.size() == 4);
}

TEST_CASE_FIXTURE(AddUrlPage,
                  "http:// counts wherever it stands in a duplicate, and the selection starts at offset 7") {
    lstExclude.AddItem(L"x http://a");
    Add({[](HWND dialog) {
             TypeText(dialog, kAddress, L"x http://a");
             ClickButton(dialog, IDOK);
             CHECK(SelectionIn(dialog, kAddress) == TextSelection{7, 10});
         },
         kCancel});
}

TEST_CASE_FIXTURE(AddUrlPage, "addresses that differ in more than letter case are different") {
    AddAddress(L"http://example.com");
    AddAddress(L"http://example.com ");
    AddAddress(L"example.com");
    AddAddress(L"http://example.com/");
    CHECK(Rows() ==
          Texts{L"http://example.com", L"http://example.com ", L"example.com", L"http://example.com/"});
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(AddUrlPage, "Cancel adds nothing and yet marks a change") {
    Add({[](HWND dialog) { TypeText(dialog, kAddress, L"http://example.com"); }, kCancel});
    CHECK(lstExclude.ListCount() == 0);
    CHECK(changes == 1);
}

TEST_CASE_FIXTURE(AddUrlPage, "Esc and the close box cancel, Enter presses OK") {
    SUBCASE("Esc") {
        Add({[](HWND) { PostKey(VK_ESCAPE); }});
        CHECK(lstExclude.ListCount() == 0);
    }
    SUBCASE("close box") {
        Add({[](HWND dialog) { PostMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0); }});
        CHECK(lstExclude.ListCount() == 0);
    }
    SUBCASE("Enter") {
        Add({[](HWND) { PostKey(VK_RETURN); }});
        CHECK(Rows() == Texts{L"http://"});
    }
    CHECK(changes == 1);
}

TEST_CASE_FIXTURE(AddUrlPage, "the tab key goes from OK to the address, to Cancel and back to OK") {
    Add({[](HWND) { PostKey(VK_TAB); },
         [](HWND) {
             CHECK(FocusedId() == IDCANCEL);
             PostKey(VK_TAB);
         },
         [](HWND) {
             CHECK(FocusedId() == IDOK);
             PostKey(VK_TAB);
         },
         [](HWND) { CHECK(FocusedId() == kAddress); }, kCancel});
}

TEST_CASE_FIXTURE(AddUrlPage, "the dialog starts afresh every time") {
    AddAddress(L"http://one");
    Add({[](HWND dialog) { CHECK(TextIn(dialog, kAddress) == L"http://"); }, kCancel});
}

TEST_CASE_FIXTURE(AddUrlPage, "the window is disabled while the dialog is open") {
    Add({[this](HWND dialog) {
             CHECK(GetWindow(dialog, GW_OWNER) == window.Hwnd());
             CHECK_FALSE(IsWindowEnabled(window.Hwnd()));
         },
         kCancel});
    CHECK(IsWindowEnabled(window.Hwnd()));
}
