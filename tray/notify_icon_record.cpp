#include "tray/notify_icon_record.h"

#include <shellapi.h>

#include <algorithm>
#include <string>

#include "platform/text.h"

namespace {

constexpr UINT kIconId = 1;

}  // namespace

NotifyIconRecord MakeNotifyIconRecord(HWND hwnd, UINT callbackMessage, HICON icon,
                                      std::wstring_view toolTip) {
    NotifyIconRecord record{};
    record.cbSize = sizeof(record);
    record.hWnd = hwnd;
    record.uID = kIconId;
    record.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    record.uCallbackMessage = callbackMessage;
    record.hIcon = icon;

    std::string tip = ToAnsi(toolTip);
    tip.push_back('\0');
    tip.resize(sizeof(record.szTip), ' ');
    std::copy(tip.begin(), tip.end(), record.szTip);
    return record;
}

// The structure that Windows' headers declare is a later, longer form; the shell reads cbSize bytes of it.
// One that looks for the end of a tip without a terminator finds it behind them.
bool NotifyShell(DWORD action, const NotifyIconRecord& record) {
    struct {
        NotifyIconRecord record;
        char terminator;
    } copy{record, '\0'};
    return Shell_NotifyIconA(action, reinterpret_cast<NOTIFYICONDATAA*>(&copy)) != FALSE;
}
