// The system's dialog for choosing a file to open.
#pragma once

#include <windows.h>

#include <string>
#include <utility>

class CommonDialog {
public:
    void DialogTitle(std::wstring title) { m_dialogTitle = std::move(title); }

    // Pairs of description and pattern, all separated by bars: "Text|*.txt|All|*.*".
    void Filter(std::wstring filter) { m_filter = std::move(filter); }

    // Whether ShowOpen throws when the user cancels.
    void CancelError(bool cancelError) noexcept { m_cancelError = cancelError; }

    // Before ShowOpen the file that the dialog starts with, after it the full path of the chosen one. It
    // stays as it was when none is chosen.
    const std::wstring& FileName() const noexcept { return m_fileName; }
    void FileName(std::wstring fileName) { m_fileName = std::move(fileName); }

    // Waits for the user. Throws AutomationError when the dialog cannot be shown, and, with CancelError,
    // number 32755 when it is cancelled. A start file that the dialog does not accept is left out.
    void ShowOpen(HWND owner);

private:
    std::wstring m_dialogTitle;
    std::wstring m_filter;
    std::wstring m_fileName;
    bool m_cancelError = false;
};
