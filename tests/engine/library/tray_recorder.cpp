// A library for the manager's process: keeps a record of the icon and the menu. Every call goes on to
// Windows.
#include <windows.h>
#include <shellapi.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "app/resource.h"
#include "tests/engine/library/tray_record.h"
#include "tests/support/import_fake.h"

namespace {

TrayRecord* record = nullptr;

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

std::string PictureOf(HICON shown) {
    int width = 0;
    const std::vector<BYTE> bytes = BytesOf(shown, width);
    const std::pair<int, const char*> pictures[] = {
        {IDI_TRAY_REST, "rest"}, {IDI_TRAY_0, "frame 0"}, {IDI_TRAY_1, "frame 1"}, {IDI_TRAY_2, "frame 2"}};
    for (const auto& [resource, name] : pictures) {
        const auto icon = static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource),
                                                        IMAGE_ICON, width, width, LR_DEFAULTCOLOR));
        const bool isShown = BytesOf(icon, width) == bytes;
        DestroyIcon(icon);
        if (isShown) return name;
    }
    return "another";
}

std::wstring LineOf(HMENU menu, UINT position) {
    wchar_t caption[80] = L"";
    GetMenuStringW(menu, position, caption, static_cast<int>(std::size(caption)), MF_BYPOSITION);
    const UINT state = GetMenuState(menu, position, MF_BYPOSITION);
    const bool isDefault = GetMenuDefaultItem(menu, TRUE, GMDI_USEDISABLED) == position;
    const std::wstring line = isDefault ? L"*" : L"";
    if ((state & MF_SEPARATOR) != 0) return line + L"-\n";
    return line + ((state & MF_GRAYED) != 0 ? L'x' : L'+') + caption + L'\n';
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    const HANDLE memory = OpenFileMappingW(FILE_MAP_WRITE, FALSE, kTrayRecordName);
    if (memory == nullptr) return FALSE;
    record = static_cast<TrayRecord*>(MapViewOfFile(memory, FILE_MAP_WRITE, 0, 0, sizeof(TrayRecord)));
    if (record == nullptr) return FALSE;
    // Both stay until the process ends.
    static const ImportFake<"Shell_NotifyIconA", decltype(&Shell_NotifyIconA)> notify{
        "shell32.dll", [](DWORD action, NOTIFYICONDATAA* data) {
            std::string event = action == NIM_DELETE ? "delete" : PictureOf(data->hIcon);
            if (action == NIM_ADD) event.insert(0, "add ");
            const BOOL done = notify.Original(action, data);
            if (done == FALSE) event += " (refused)";
            if (record->story[0] != 0) event.insert(0, ", ");
            if (std::strlen(record->story) + event.size() < std::size(record->story))
                lstrcatA(record->story, event.c_str());
            if (done != FALSE && action == NIM_ADD) InterlockedIncrement(&record->added);
            if (done != FALSE && action == NIM_DELETE) InterlockedIncrement(&record->deleted);
            record->mostIcons = std::max(record->mostIcons, record->added - record->deleted);
            return done;
        }};
    static const ImportFake<"TrackPopupMenuEx", decltype(&TrackPopupMenuEx)> track{
        "user32.dll", [](HMENU menu, UINT flags, int x, int y, HWND owner, TPMPARAMS* exclude) {
            std::wstring lines;
            for (int i = 0; i < GetMenuItemCount(menu); ++i)
                lines += LineOf(menu, static_cast<UINT>(i));
            lstrcpynW(record->menu, lines.c_str(), static_cast<int>(std::size(record->menu)));
            InterlockedIncrement(&record->menusShown);
            const BOOL chosen = track.Original(menu, flags, x, y, owner, exclude);
            record->chosen = static_cast<UINT>(chosen);
            InterlockedIncrement(&record->menusClosed);
            return chosen;
        }};
    return TRUE;
}
