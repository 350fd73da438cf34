// The Log page on a test window, with the exclude list that it sends sites to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "lists/closed_log.h"
#include "tests/support/message_recorder.h"
#include "tests/support/test_folder.h"
#include "tests/support/test_window.h"

inline std::vector<std::wstring> RowsOf(const ListBox& list) {
    std::vector<std::wstring> rows;
    for (int i = 0; i < list.ListCount(); ++i)
        rows.push_back(list.List(i));
    return rows;
}

struct LogPage {
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

    ListBox lstClosedWnd{L"lstClosedWnd", 100};
    Button cmdRefreshLog{L"cmdRefreshLog", 101};
    Button cmdAddTo{L"cmdAddTo", 102};
    Button cmdClearList{L"cmdClearList", 103};
    ListBox lstExclude{L"lstExclude", 104};
    ClosedLog log{lstClosedWnd,
                  cmdRefreshLog,
                  cmdAddTo,
                  cmdClearList,
                  lstExclude,
                  [this] {
                      ++pathAsked;
                      onPathAsked();
                      return path;
                  },
                  [this] { ++changes; }};
    TestWindow window{{&lstClosedWnd, &cmdRefreshLog, &cmdAddTo, &cmdClearList, &lstExclude}};
    MessageRecorder recorder;
};
