// What the three dialogs of the lists have in common: how they open, stand, take keys and end. That nothing
// in them is cut off is the scaling's subject.
#include <doctest.h>

#include "tests/lists/list_pages.h"

namespace {

using IdTexts = std::vector<std::pair<int, std::wstring>>;

struct DialogCase {
    const wchar_t* caption;
    IdTexts texts;          // as it opens
    std::vector<int> tabs;  // the controls in tab order, from the one with the focus on
    IdTexts entry;          // what OK accepts
};

// Runs body(page, button, dialog) for the button of each page that opens a dialog to add a row.
template <class Body>
void ForEachDialog(Body body) {
    {
        INFO("an address to exclude");
        ExcludePage page;
        body(page, page.cmdAddURL,
             DialogCase{L"Add Web Site URL",
                        {{IDC_LABEL1, L"Web Site Address to Exclude"}, {IDC_TXTURL, L"http://"}},
                        {IDC_TXTURL, IDCANCEL, IDOK},
                        {}});
    }
    {
        INFO("a banner size");
        BannerPage page;
        body(page, page.cmdAddSize,
             DialogCase{L"New Banner Height and Width",
                        {{IDC_LABEL1, L"Adding a size will hide images and tables of this size."},
                         {IDC_LBLLABELS_0, L"Height:"},
                         {IDC_TXTHEIGHT, L""},
                         {IDC_LBLLABELS_1, L"Width:"},
                         {IDC_TXTWIDTH, L""}},
                        {IDC_TXTHEIGHT, IDC_TXTWIDTH, IDOK, IDCANCEL},
                        {{IDC_TXTHEIGHT, L"5"}, {IDC_TXTWIDTH, L"6"}}});
    }
    {
        INFO("a search engine");
        SearchPage page;
        body(page, page.cmdAddSearch,
             DialogCase{L"Add Search Address",
                        {{IDC_LBLLABELS_0, L"Name:"},
                         {IDC_TXTNAME, L""},
                         {IDC_LBLLABELS_1, L"Address:"},
                         {IDC_TXTURL, L"http://"},
                         {IDC_TXTINDEX, L"0"}},
                        {IDC_TXTNAME, IDC_TXTURL, IDOK, IDCANCEL},
                        {{IDC_TXTNAME, L"Three"}}});
    }
}

void Fill(HWND dialog, const IdTexts& texts) {
    for (const auto& [id, text] : texts)
        TypeText(dialog, id, text);
}

}  // namespace

TEST_CASE("each dialog opens with its texts and the focus in its first box, before a change is marked") {
    ForEachDialog([](auto& page, const Control& button, const DialogCase& dialogCase) {
        page.Play(button, {[&](HWND dialog) {
                               CHECK(page.changes == 0);
                               wchar_t caption[64]{};
                               GetWindowTextW(dialog, caption, 64);
                               CHECK(std::wstring(caption) == dialogCase.caption);
                               for (const auto& [id, text] : dialogCase.texts)
                                   CHECK(TextIn(dialog, id) == text);
                               CHECK(TextIn(dialog, IDOK) == L"OK");
                               CHECK(TextIn(dialog, IDCANCEL) == L"Cancel");
                               CHECK(FocusedId() == dialogCase.tabs.front());
                               CHECK(GetWindow(dialog, GW_OWNER) == page.window.Hwnd());
                               CHECK_FALSE(IsWindowEnabled(page.window.Hwnd()));
                           },
                           kCancel});
        CHECK(IsWindowEnabled(page.window.Hwnd()));
    });
}

TEST_CASE("Enter presses OK; Esc, the close box and Cancel add nothing; each of them marks a change") {
    const std::pair<bool, DialogScript::Step> endings[] = {
        {true, [](HWND) { PostKey(VK_RETURN); }},
        {false, [](HWND) { PostKey(VK_ESCAPE); }},
        {false, [](HWND dialog) { PostMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0); }},
        {false, kCancel}};
    for (const auto& [adds, end] : endings) {
        CAPTURE(adds);
        ForEachDialog([&](auto& page, const Control& button, const DialogCase& dialogCase) {
            const int before = page.RowCount();
            page.Play(button, {[&](HWND dialog) { Fill(dialog, dialogCase.entry); }, end});
            CHECK(page.RowCount() == before + (adds ? 1 : 0));
            CHECK(page.changes == 1);
            CHECK(page.recorder.messages.empty());
            // The next one starts afresh.
            page.Play(button, {[&](HWND dialog) {
                                   for (const auto& [id, text] : dialogCase.texts)
                                       CHECK(TextIn(dialog, id) == text);
                               },
                               kCancel});
        });
    }
}

TEST_CASE("the tab key goes from box to box, to the buttons and round") {
    ForEachDialog([](auto& page, const Control& button, const DialogCase& dialogCase) {
        std::vector<DialogScript::Step> steps;
        for (const int id : dialogCase.tabs) {
            steps.push_back([id](HWND) {
                CHECK(FocusedId() == id);
                PostKey(VK_TAB);
            });
        }
        steps.push_back([&](HWND) { CHECK(FocusedId() == dialogCase.tabs.front()); });
        steps.push_back(kCancel);
        page.Play(button, steps);
    });
}

TEST_CASE("each dialog stands in the middle of its window, of fixed size") {
    ForEachDialog([](auto& page, const Control& button, const DialogCase&) {
        const HWND owner = page.window.Hwnd();
        SetWindowPos(owner, nullptr, 300, 200, 480, 420, SWP_NOZORDER | SWP_NOACTIVATE);
        page.Play(button,
                  {[&](HWND dialog) {
                       RECT bounds{};
                       RECT middle{};
                       GetWindowRect(dialog, &bounds);
                       GetWindowRect(owner, &middle);
                       CHECK(std::abs((bounds.left + bounds.right) - (middle.left + middle.right)) <= 2);
                       CHECK(std::abs((bounds.top + bounds.bottom) - (middle.top + middle.bottom)) <= 2);
                       CHECK((GetWindowLongW(dialog, GWL_STYLE) & WS_THICKFRAME) == 0);
                   },
                   kCancel});
    });
}

TEST_CASE_FIXTURE(SearchPage, "a dialog stays on the screen when its window is at an edge") {
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    for (const POINT corner : {POINT{-400, work.bottom - 20}, POINT{work.right - 20, -300}}) {
        SetWindowPos(window.Hwnd(), nullptr, corner.x, corner.y, 480, 420, SWP_NOZORDER | SWP_NOACTIVATE);
        Play(cmdAddSearch, {[&](HWND dialog) {
                                RECT bounds{};
                                GetWindowRect(dialog, &bounds);
                                CHECK(bounds.left >= work.left);
                                CHECK(bounds.top >= work.top);
                                CHECK(bounds.right <= work.right);
                                CHECK(bounds.bottom <= work.bottom);
                            },
                            kCancel});
    }
}
