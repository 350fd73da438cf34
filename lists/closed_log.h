// The Log page: the newest entries of the engine's log of closed windows.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>

#include "lists/resource.h"
#include "platform/controls/button.h"
#include "platform/controls/label.h"
#include "platform/controls/list_box.h"
#include "platform/generation.h"
#include "platform/timer.h"

struct LogControls {
    Label Label6{L"Label6", IDC_LABEL6};
    ListBox lstClosedWnd{L"lstClosedWnd", IDC_LSTCLOSEDWND};
    Button cmdRefreshLog{L"cmdRefreshLog", IDC_CMDREFRESHLOG};
    Button cmdAddTo{L"cmdAddTo", IDC_CMDADDTO};
    Button cmdClearList{L"cmdClearList", IDC_CMDCLEARLIST};
    const std::array<Control*, 5> all{&Label6, &lstClosedWnd, &cmdRefreshLog, &cmdAddTo, &cmdClearList};
};

class ClosedLog {
public:
    // The controls and the exclude list outlive this object. logFile: returns the path of the log, asked for
    // at every reading; throws AutomationError when the engine cannot tell. markChanged: notes an unsaved
    // change, unless settings are being loaded.
    ClosedLog(LogControls& controls, ListBox& lstExclude, std::function<std::wstring()> logFile,
              Event markChanged);
    ClosedLog(const ClosedLog&) = delete;
    ClosedLog& operator=(const ClosedLog&) = delete;

    // Fills the list with the 25 newest distinct lines of the log, newest first. A missing log is created
    // empty. A reading that comes in while the engine is asked for the path takes the place of the one under
    // way. Throws AutomationError when the path is not to be had or the log cannot be read: the list then
    // holds the lines that were read before. Where Windows lets no call out to the engine, since this thread
    // handles a message that another program has sent, the log is read again soon afterwards.
    void ReadClosedLog();

    // The first row that equals text exactly; -1 when none does.
    short FindClosedEntry(const std::wstring& text) const;

    void cmdRefreshLog_Click();
    void cmdAddTo_Click();
    void cmdClearList_Click();

private:
    std::wstring LogFile();

    // arePlain: no two of the lines so far can be the same text. Returns whether the line became a row.
    bool AddEntry(std::string_view line, bool arePlain);

    LogControls& m_controls;
    ListBox& m_lstExclude;
    const std::function<std::wstring()> m_logFile;
    const Event m_markChanged;
    Generation m_readings;
    Timer m_tmAgain;
};
