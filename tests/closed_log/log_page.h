// The Log page on a test window, with the exclude list that it sends sites to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "lists/closed_log.h"
#include "lists/exclude_list.h"
#include "tests/support/message_recorder.h"
#include "tests/support/test_folder.h"
#include "tests/support/test_window.h"

inline std::vector<std::wstring> RowsOf(const ListBox& list) {
    std::vector<std::wstring> rows;
    for (int i = 0; i < list.ListCount(); ++i)
        rows.push_back(list.List(i));
    return rows;
}

struct LogPage : LogControls, ExcludeControls {
    // Fills the log list with the lines of a file that holds these bytes.
    std::vector<std::wstring> Show(std::string_view bytes) {
        path = folder.Write(L"closed.log", bytes);
        log.ReadClosedLog();
        return RowsOf(lstClosedWnd);
    }

    TestFolder folder;
    std::wstring path = folder.Path(L"closed.log");
    std::function<void()> onPathAsked = [] {};
    int pathAsked = 0;
    int changes = 0;

    ClosedLog log{*this, lstExclude,
                  [this] {
                      ++pathAsked;
                      onPathAsked();
                      return path;
                  },
                  [this] { ++changes; }};
    TestWindow window{Join({LogControls::all, ExcludeControls::all})};
    MessageRecorder recorder;
};
