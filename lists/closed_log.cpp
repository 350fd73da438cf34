#include "lists/closed_log.h"

#include <algorithm>
#include <new>
#include <utility>

#include "lists/is_in_list.h"
#include "lists/log_file.h"
#include "lists/newest_lines.h"
#include "lists/site_of_address.h"
#include "platform/automation_error.h"
#include "lists/message.h"
#include "platform/text.h"

namespace {

constexpr size_t kMaxEntries = 25;
constexpr UINT kAgainInterval = 100;  // milliseconds

// Whether different lines of this kind are different texts in every ANSI code page, and none ends early.
bool IsPlain(std::string_view line) {
    return std::all_of(line.begin(), line.end(),
                       [](char byte) { return static_cast<signed char>(byte) > 0; });
}

}  // namespace

ClosedLog::ClosedLog(LogControls& controls, ListBox& lstExclude, std::function<std::wstring()> logFile,
                     Event markChanged)
    : m_controls(controls),
      m_lstExclude(lstExclude),
      m_logFile(std::move(logFile)),
      m_markChanged(std::move(markChanged)),
      m_tmAgain(kAgainInterval) {
    m_controls.cmdRefreshLog.Click = [this] { cmdRefreshLog_Click(); };
    m_controls.cmdAddTo.Click = [this] { cmdAddTo_Click(); };
    m_controls.cmdClearList.Click = [this] { cmdClearList_Click(); };
    m_tmAgain.Tick = [this] { ResumeNext([this] { ReadClosedLog(); }); };
}

void ClosedLog::ReadClosedLog() {
    m_tmAgain.Stop();
    const Generation::Mark reading = m_readings.Begin();
    const RedrawPause pause(m_controls.lstClosedWnd);
    m_controls.lstClosedWnd.Clear();
    const ::LogFile log(LogFile());
    if (!reading.IsCurrent()) return;
    try {
        bool arePlain = true;
        ReadNewestLines(
            log.Size(),
            [&](std::uint64_t offset, char* buffer, size_t count) { log.Read(offset, buffer, count); },
            [&](std::string_view line) {
                arePlain = arePlain && IsPlain(line);
                return AddEntry(line, arePlain);
            },
            kMaxEntries, kLogBlockSize);
    } catch (const std::bad_alloc&) {
        throw AutomationError(E_OUTOFMEMORY);
    }
}

std::wstring ClosedLog::LogFile() {
    try {
        return m_logFile();
    } catch (const AutomationError& error) {
        if (error.Code() == RPC_E_CANTCALLOUT_ININPUTSYNCCALL)
            m_tmAgain.Start(m_controls.lstClosedWnd.Hwnd());
        throw;
    }
}

// Different bytes can stand for the same text, so that the rows are asked too. A row ends where its text has
// a NUL: what a log holds behind one is neither shown nor compared. Asking 25 rows takes longer than reading
// the log: where all lines are plain, there is nothing to ask.
bool ClosedLog::AddEntry(std::string_view line, bool arePlain) {
    const std::wstring text = FromAnsi(line.substr(0, line.find('\0')));
    if (!arePlain && FindClosedEntry(text) != -1) return false;
    m_controls.lstClosedWnd.AddItem(text);
    return true;
}

short ClosedLog::FindClosedEntry(const std::wstring& text) const {
    const int count = m_controls.lstClosedWnd.ListCount();
    std::wstring row;
    for (int i = 0; i < count; ++i) {
        if (m_controls.lstClosedWnd.Length(i) != text.size()) continue;
        m_controls.lstClosedWnd.List(i, text.size(), row);
        if (row == text) return static_cast<short>(i);
    }
    return -1;
}

void ClosedLog::cmdRefreshLog_Click() {
    ReadClosedLog();
}

void ClosedLog::cmdAddTo_Click() {
    const int selected = m_controls.lstClosedWnd.ListIndex();
    if (selected == -1) return;
    const std::wstring site = SiteOfAddress(m_controls.lstClosedWnd.List(selected));
    if (IsInList(site, m_lstExclude)) {
        ShowMessage(GetAncestor(m_controls.cmdAddTo.Hwnd(), GA_ROOT),
                    L"This is a duplicate entry and cannot be added.", MB_ICONINFORMATION);
        return;
    }
    m_lstExclude.AddItem(site);
    m_markChanged();
}

// The button is disabled for good: neither the list nor the log is ever cleared.
void ClosedLog::cmdClearList_Click() {
    m_markChanged();
}
