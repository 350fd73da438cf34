// A library for the manager's process: keeps a record of the icon and the menu. Every call goes on to
// Windows.
#include <windows.h>
#include <shellapi.h>

#include <algorithm>
#include <string>
#include <vector>

#include "app/resource.h"
#include "tests/engine/library/tray_record.h"
#include "tests/support/import_patch.h"

namespace {

TrayRecord* record = nullptr;
decltype(&Shell_NotifyIconA) notifyIcon = nullptr;
decltype(&TrackPopupMenuEx) trackPopupMenu = nullptr;

// The bytes of an icon's picture, and its width in pixels.
std::vector<BYTE> BytesOf(HICON icon, int& width) {
    ICONINFO info{};
    GetIconInfo(icon, &info);
    BITMAP bitmap{};
    GetObjectW(info.hbmColor, sizeof(bitmap), &bitmap);
    std::vector<BYTE> bytes(static_cast<size_t>(bitmap.bmWidthBytes * bitmap.bmHeight));
    GetBitmapBits(info.hbmColor, static_cast<LONG>(bytes.size()), bytes.data());
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    width = bitmap.bmWidth;
    return bytes;
}

int PictureOf(HICON shown) {
    int width = 0;
    const std::vector<BYTE> bytes = BytesOf(shown, width);
    for (const int resource : {IDI_TRAY_REST, IDI_TRAY_0, IDI_TRAY_1, IDI_TRAY_2}) {
        const auto icon = static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource),
                                                        IMAGE_ICON, width, width, LR_DEFAULTCOLOR));
        const bool isShown = BytesOf(icon, width) == bytes;
        DestroyIcon(icon);
        if (isShown) return resource;
    }
    return 0;
}

BOOL WINAPI NotifyIcon(DWORD action, NOTIFYICONDATAA* data) {
    ShellCall call;
    call.action = action;
    if ((data->uFlags & NIF_ICON) != 0) call.picture = PictureOf(data->hIcon);
    call.done = notifyIcon(action, data);
    if (record->calls < TrayRecord::kMaxCalls) {
        record->call[record->calls] = call;
        InterlockedIncrement(&record->calls);
    }
    return call.done;
}

std::wstring LineOf(HMENU menu, int position) {
    wchar_t caption[80] = L"";
    MENUITEMINFOW item{};
    item.cbSize = sizeof(item);
    item.fMask = MIIM_FTYPE | MIIM_STATE | MIIM_STRING;
    item.dwTypeData = caption;
    item.cch = static_cast<UINT>(std::size(caption));
    GetMenuItemInfoW(menu, static_cast<UINT>(position), TRUE, &item);
    std::wstring line = (item.fState & MFS_DEFAULT) != 0 ? L"*" : L"";
    if ((item.fType & MFT_SEPARATOR) != 0) return line + L"-\n";
    line += (item.fState & MFS_GRAYED) != 0 ? L'x' : L'+';
    return line + caption + L'\n';
}

BOOL WINAPI TrackMenu(HMENU menu, UINT flags, int x, int y, HWND owner, TPMPARAMS* exclude) {
    std::wstring lines;
    for (int i = 0; i < GetMenuItemCount(menu); ++i)
        lines += LineOf(menu, i);
    lines.resize(std::min(lines.size(), std::size(record->menu) - 1));
    std::copy_n(lines.c_str(), lines.size() + 1, record->menu);
    InterlockedIncrement(&record->menusShown);
    const BOOL chosen = trackPopupMenu(menu, flags, x, y, owner, exclude);
    record->chosen = static_cast<UINT>(chosen);
    InterlockedIncrement(&record->menusClosed);
    return chosen;
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    const HANDLE memory = OpenFileMappingW(FILE_MAP_WRITE, FALSE, kTrayRecordName);
    if (memory == nullptr) return FALSE;
    record = static_cast<TrayRecord*>(MapViewOfFile(memory, FILE_MAP_WRITE, 0, 0, sizeof(TrayRecord)));
    if (record == nullptr) return FALSE;
    // Both stay until the process ends.
    static const ImportPatch notify("shell32.dll", "Shell_NotifyIconA", &NotifyIcon);
    notifyIcon = notify.Original<decltype(notifyIcon)>();
    static const ImportPatch track("user32.dll", "TrackPopupMenuEx", &TrackMenu);
    trackPopupMenu = track.Original<decltype(trackPopupMenu)>();
    return TRUE;
}
