// The Search page on a test window, with two rows: the first in use, the second not.
#pragma once

#include <string>
#include <vector>

#include "lists/frm_add_search.h"
#include "lists/search_addresses.h"
#include "tests/support/dialog_script.h"
#include "tests/support/message_recorder.h"
#include "tests/support/test_window.h"

struct SearchPage : SearchControls {
    SearchPage() {
        SetUp();
        AddRow(L"One", L"http://one", true);
        AddRow(L"Two", L"http://two", false);
    }

    void AddRow(const wchar_t* name, const wchar_t* address, bool use) {
        const int row = lvwSearchURLs.Add(lvwSearchURLs.Count() + 1, name);
        lvwSearchURLs.SubItem(row, 1, address);
        lvwSearchURLs.Checked(row, use);
    }

    // "name|address|use"
    std::wstring Row(int position) const {
        return lvwSearchURLs.Text(position) + L'|' + lvwSearchURLs.SubItem(position, 1) +
               (lvwSearchURLs.Checked(position) ? L"|True" : L"|False");
    }

    void Play(const Control& button, std::vector<DialogScript::Step> steps) {
        const DialogScript script(std::move(steps));
        Click(button);
    }

    static void Click(const Control& button) { SendMessageW(button.Hwnd(), BM_CLICK, 0, 0); }

    int changes = 0;
    SearchAddresses page{*this, [this] { ++changes; }};
    TestWindow window{Join({all})};
    MessageRecorder recorder;
};
