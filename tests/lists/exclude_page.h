// The Exclude page on a test window.
#pragma once

#include <string>
#include <vector>

#include "lists/exclude_list.h"
#include "options/commands.h"
#include "tests/support/message_recorder.h"
#include "tests/support/test_window.h"

struct ExcludePage : ExcludeControls, CommandControls {
    std::vector<std::wstring> Rows() const {
        std::vector<std::wstring> rows;
        for (int i = 0; i < lstExclude.ListCount(); ++i)
            rows.push_back(lstExclude.List(i));
        return rows;
    }
    void Fill(int count) {
        for (int i = 0; i < count; ++i)
            lstExclude.AddItem(L"row" + std::to_wstring(i));
    }
    static void Click(const Control& button) { SendMessageW(button.Hwnd(), BM_CLICK, 0, 0); }

    int changes = 0;
    ExcludeList page{*this, cmdApply, [this] { ++changes; }};
    TestWindow window{Join({ExcludeControls::all, CommandControls::all})};
    MessageRecorder recorder;
};
