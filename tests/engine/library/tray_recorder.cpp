// A library for the manager's process: keeps a record of the icon and the menu. Every call goes on to
// Windows.
#include <windows.h>
#include <shellapi.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>

#include "tests/engine/library/tray_record.h"
#include "tests/engine_control/menu_items.h"
#include "tests/support/import_fake.h"

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    static TrayRecord* record = nullptr;
    const HANDLE memory = OpenFileMappingW(FILE_MAP_WRITE, FALSE, kTrayRecordName);
    if (memory == nullptr) return FALSE;
    record = static_cast<TrayRecord*>(MapViewOfFile(memory, FILE_MAP_WRITE, 0, 0, sizeof(TrayRecord)));
    if (record == nullptr) return FALSE;
    // Both stay until the process ends.
    static const ImportFake<"Shell_NotifyIconA", decltype(&Shell_NotifyIconA)> notify{
        "shell32.dll", [](DWORD action, NOTIFYICONDATAA* data) {
            const BOOL done = notify.Original(action, data);
            std::string event = action == NIM_ADD ? "add" : action == NIM_DELETE ? "delete" : "change";
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
            lstrcpyA(record->menu, EnabledItems(menu).c_str());
            InterlockedIncrement(&record->menusShown);
            const BOOL chosen = track.Original(menu, flags, x, y, owner, exclude);
            record->chosen = static_cast<UINT>(chosen);
            InterlockedIncrement(&record->menusClosed);
            return chosen;
        }};
    return TRUE;
}
