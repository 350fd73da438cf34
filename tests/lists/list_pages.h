// The pages with lists, each with what a user does on it.
#pragma once

#include <doctest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/dialog_script.h"
#include "tests/support/other_process.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"

using Texts = std::vector<std::wstring>;
using IdTexts = std::vector<std::pair<int, std::wstring>>;  // of boxes in a dialog

inline const DialogScript::Step kOK = [](HWND dialog) { ClickButton(dialog, IDOK); };
inline const DialogScript::Step kCancel = [](HWND dialog) { ClickButton(dialog, IDCANCEL); };

inline DialogScript::Step Enter(IdTexts texts) {
    return [texts = std::move(texts)](HWND dialog) {
        for (const auto& [id, text] : texts)
            TypeText(dialog, id, text);
    };
}

inline Texts RowsOf(const ListBox& list) {
    return ListBoxRows(list.Hwnd());
}

struct ListPage : SettingsWindow {
    // Opens a dialog as the user does and plays him in it.
    static void Play(const Control& button, std::vector<DialogScript::Step> steps) {
        const DialogScript script(std::move(steps));
        Click(button);
    }

    // That one message was shown, with the application's title and an OK button.
    void CheckMessage(const wchar_t* text, UINT icon, HWND owner) const {
        CHECK(recorder.messages.size() == 1);
        // No exception may leave a dialog's procedure.
        if (recorder.messages.size() != 1) return;
        CHECK(recorder.messages[0].text == text);
        CHECK(recorder.messages[0].title == L"Calvane");
        CHECK(recorder.messages[0].type == (MB_OK | icon));
        CHECK(recorder.messages[0].owner == owner);
    }

    // That OK refuses the texts in the dialog of a button with a message, after which a box has the focus.
    // look runs in the dialog, which stays open.
    void CheckRefused(
        const Control& opens, const IdTexts& texts, const wchar_t* message, UINT icon, int focus,
        const DialogScript::Step& look = [](HWND) {}) {
        recorder.messages.clear();
        Play(opens, {Enter(texts),
                     [&](HWND dialog) {
                         SetFocus(GetDlgItem(dialog, IDCANCEL));
                         ClickButton(dialog, IDOK);
                         CheckMessage(message, icon, dialog);
                         CHECK(FocusedId() == focus);
                         for (const auto& [id, text] : texts)
                             CHECK(TextIn(dialog, id) == text);
                         look(dialog);
                     },
                     kCancel});
    }
};

struct ExcludePage : ListPage {
    Texts Rows() const { return RowsOf(lstExclude); }
    int RowCount() const { return lstExclude.ListCount(); }
};

// A page with a list view.
template <auto list>
struct ListViewPage : ListPage {
    // As ListViewRows tells it.
    std::wstring Row(int position) const {
        return ListViewRows((this->*list).Hwnd()).at(static_cast<size_t>(position) - 1);
    }
    int RowCount() const { return (this->*list).Count(); }

    ListView& View() { return this->*list; }
};

// With the four default rows.
struct BannerPage : ListViewPage<&BannerControls::lvwBanners> {
    BannerPage() {
        for (const wchar_t* const row :
             {L"Full Banner|468|60|x", L"Half Banner|234|60", L"Quarter Banner|120|60", L"Button|88|31"})
            AddRow(lvwBanners, row);
    }

    // Enters a size that must be accepted.
    void AddSize(const std::wstring& height, const std::wstring& width) {
        Play(cmdAddSize, {Enter({{IDC_TXTHEIGHT, height}, {IDC_TXTWIDTH, width}}), kOK});
    }
};

// With two rows: the first in use, the second not.
struct SearchPage : ListViewPage<&SearchControls::lvwSearchURLs> {
    SearchPage() {
        AddRow(lvwSearchURLs, L"One|http://one|x");
        AddRow(lvwSearchURLs, L"Two|http://two");
    }
};

// With a folder for its file.
struct LogPage : ListPage {
    LogPage() {
        logFile = [this] {
            ++pathAsked;
            onPathAsked();
            return path;
        };
    }

    // Fills the log list with the lines of a file that holds these bytes.
    Texts Show(std::string_view bytes) {
        path = folder.Write(L"closed.log", bytes);
        closedLog.ReadClosedLog();
        return RowsOf(lstClosedWnd);
    }

    TestFolder folder;
    std::wstring path = folder.Path(L"closed.log");
    std::function<void()> onPathAsked = [] {};
    int pathAsked = 0;
};
