// The Exclude page on a test window.
#pragma once

#include <string>
#include <vector>

#include "lists/exclude_list.h"
#include "tests/support/message_recorder.h"
#include "tests/support/test_window.h"

struct ExcludePage {
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
    ListBox lstExclude{L"lstExclude", 100};
    Button cmdAddURL{L"cmdAddURL", 101};
    Button cmdRemoveURL{L"cmdRemoveURL", 102};
    Button cmdApply{L"cmdApply", 103};
    ExcludeList page{lstExclude, cmdAddURL, cmdRemoveURL, cmdApply, [this] { ++changes; }};
    TestWindow window{{&lstExclude, &cmdAddURL, &cmdRemoveURL, &cmdApply}};
    MessageRecorder recorder;
};
