// The list pages on test windows, each with what a user does on it.
#pragma once

#include <doctest.h>

#include <functional>
#include <string>
#include <vector>

#include "lists/banner_sizes.h"
#include "lists/closed_log.h"
#include "lists/exclude_list.h"
#include "lists/frm_add_search.h"
#include "lists/message.h"
#include "lists/search_addresses.h"
#include "options/commands.h"
#include "tests/support/dialog_script.h"
#include "tests/support/message_recorder.h"
#include "tests/support/other_process.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"
#include "tests/support/test_window.h"

using Texts = std::vector<std::wstring>;

inline const DialogScript::Step kOK = [](HWND dialog) { ClickButton(dialog, IDOK); };
inline const DialogScript::Step kCancel = [](HWND dialog) { ClickButton(dialog, IDCANCEL); };

inline Texts RowsOf(const ListBox& list) {
    return ListBoxRows(list.Hwnd());
}

// What all of them have: a count of the changes that they mark and the messages that they show.
struct ListPage {
    static void Click(const Control& button) { SendMessageW(button.Hwnd(), BM_CLICK, 0, 0); }

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
        CHECK(recorder.messages[0].title == kApplicationTitle);
        CHECK(recorder.messages[0].type == (MB_OK | icon));
        CHECK(recorder.messages[0].owner == owner);
    }

    int changes = 0;
    const Event markChanged = [this] { ++changes; };
    MessageRecorder recorder;
};

struct ExcludePage : ListPage, ExcludeControls, CommandControls {
    Texts Rows() const { return RowsOf(lstExclude); }
    int RowCount() const { return lstExclude.ListCount(); }

    ExcludeList page{*this, [this] { cmdApply.Enabled(true); }, markChanged};
    TestWindow window{Join({ExcludeControls::all, CommandControls::all})};
};

// With the four default rows.
struct BannerPage : ListPage, BannerControls {
    BannerPage() {
        SetUp();
        AddRow(L"Full Banner", L"468", L"60", true);
        AddRow(L"Half Banner", L"234", L"60", false);
        AddRow(L"Quarter Banner", L"120", L"60", false);
        AddRow(L"Button", L"88", L"31", false);
    }

    void AddRow(const std::wstring& name, const std::wstring& width, const std::wstring& height, bool use) {
        const int row = lvwBanners.Add(lvwBanners.Count() + 1, name);
        lvwBanners.SubItem(row, 1, width);
        lvwBanners.SubItem(row, 2, height);
        lvwBanners.Checked(row, use);
    }

    // "name|width|height|x", the x only where it is checked.
    std::wstring Row(int position) const {
        return ListViewRows(lvwBanners.Hwnd()).at(static_cast<size_t>(position) - 1);
    }
    int RowCount() const { return lvwBanners.Count(); }

    // Enters a size that must be accepted.
    void AddSize(const std::wstring& height, const std::wstring& width) {
        Play(cmdAddSize, {[=](HWND dialog) {
                 TypeText(dialog, IDC_TXTHEIGHT, height);
                 TypeText(dialog, IDC_TXTWIDTH, width);
                 ClickButton(dialog, IDOK);
             }});
    }

    BannerSizes page{*this, markChanged};
    TestWindow window{Join({all})};
};

// With two rows: the first in use, the second not.
struct SearchPage : ListPage, SearchControls {
    SearchPage() {
        SetUp();
        AddRow(L"One", L"http://one", true);
        AddRow(L"Two", L"http://two", false);
    }

    void AddRow(const std::wstring& name, const std::wstring& address, bool use) {
        const int row = lvwSearchURLs.Add(lvwSearchURLs.Count() + 1, name);
        lvwSearchURLs.SubItem(row, 1, address);
        lvwSearchURLs.Checked(row, use);
    }

    // "name|address|x", likewise.
    std::wstring Row(int position) const {
        return ListViewRows(lvwSearchURLs.Hwnd()).at(static_cast<size_t>(position) - 1);
    }
    int RowCount() const { return lvwSearchURLs.Count(); }

    SearchAddresses page{*this, markChanged};
    TestWindow window{Join({all})};
};

// With the exclude list that it sends sites to, and a folder for its file.
struct LogPage : ListPage, LogControls, ExcludeControls {
    // Fills the log list with the lines of a file that holds these bytes.
    Texts Show(std::string_view bytes) {
        path = folder.Write(L"closed.log", bytes);
        log.ReadClosedLog();
        return RowsOf(lstClosedWnd);
    }

    TestFolder folder;
    std::wstring path = folder.Path(L"closed.log");
    std::function<void()> onPathAsked = [] {};
    int pathAsked = 0;
    ClosedLog log{*this, lstExclude,
                  [this] {
                      ++pathAsked;
                      onPathAsked();
                      return path;
                  },
                  markChanged};
    TestWindow window{Join({LogControls::all, ExcludeControls::all})};
};
