#include "platform/controls/common_dialog.h"

#include <commdlg.h>
#include <cderr.h>

#include <algorithm>

#include "platform/automation_error.h"

namespace {

constexpr size_t kPathCapacity = 32768;  // the longest path that Windows knows, with its NUL

}  // namespace

void CommonDialog::ShowOpen(HWND owner) {
    // The dialog wants NULs for bars, and an empty string, here the one that c_str adds, behind the last
    // pattern.
    std::wstring filter = m_filter + L'|';
    std::replace(filter.begin(), filter.end(), L'|', L'\0');

    std::wstring file = m_fileName.size() < kPathCapacity ? m_fileName : std::wstring();
    file.resize(kPathCapacity, L'\0');

    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = m_filter.empty() ? nullptr : filter.c_str();
    dialog.nFilterIndex = 1;
    dialog.lpstrFile = file.data();
    dialog.nMaxFile = static_cast<DWORD>(file.size());
    dialog.lpstrTitle = m_dialogTitle.empty() ? nullptr : m_dialogTitle.c_str();
    dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;

    bool chosen = GetOpenFileNameW(&dialog) != FALSE;
    if (!chosen && CommDlgExtendedError() == FNERR_INVALIDFILENAME) {
        file[0] = L'\0';
        chosen = GetOpenFileNameW(&dialog) != FALSE;
    }
    if (chosen) {
        m_fileName.assign(file, 0, file.find(L'\0'));
    } else if (CommDlgExtendedError() != 0) {
        throw AutomationError(E_FAIL);
    } else if (m_cancelError) {
        RaiseError(ErrorNumber::CancelSelected);
    }
}
