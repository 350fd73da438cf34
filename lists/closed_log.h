// The Log page: the newest entries of the engine's log of closed windows.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/controls/button.h"
#include "platform/controls/control.h"
#include "platform/controls/list_box.h"

class ClosedLog {
public:
    // The controls outlive this object. logFile: returns the path of the log, asked at every reading; throws
    // AutomationError when the engine cannot tell. markChanged: notes an unsaved change, unless settings are
    // being loaded.
    ClosedLog(ListBox& lstClosedWnd, Button& cmdRefreshLog, Button& cmdAddTo, Button& cmdClearList,
              ListBox& lstExclude, std::function<std::wstring()> logFile, Event markChanged);
    ClosedLog(const ClosedLog&) = delete;
    ClosedLog& operator=(const ClosedLog&) = delete;

    // Fills the list with the 25 newest distinct lines of the log, newest first. A missing log is created
    // empty. Throws AutomationError when the path is not to be had or the log cannot be read: the list then
    // holds the lines that were read before.
    void ReadClosedLog();

    // The first row that equals text exactly; -1 when none does.
    short FindClosedEntry(const std::wstring& text) const;

    void cmdRefreshLog_Click();
    void cmdAddTo_Click();
    void cmdClearList_Click();

private:
    // arePlain: no two of the lines so far can be the same text. Returns whether the line became a row.
    bool AddEntry(std::string_view line, bool arePlain);

    ListBox& m_lstClosedWnd;
    Button& m_cmdAddTo;
    ListBox& m_lstExclude;
    const std::function<std::wstring()> m_logFile;
    const Event m_markChanged;
};
