#include "tests/pairs_across/stage.h"

#include <utility>

namespace {

BOOL CALLBACK TakeConfigWindow(HWND hwnd, LPARAM parameter) {
    auto& [process, windows] = *reinterpret_cast<std::pair<DWORD, std::vector<HWND>>*>(parameter);
    DWORD owner = 0;
    wchar_t name[16] = L"";
    GetWindowThreadProcessId(hwnd, &owner);
    GetClassNameW(hwnd, name, 16);
    if (owner == process && lstrcmpW(name, L"#32770") == 0 && GetWindow(hwnd, GW_OWNER) == nullptr)
        windows.push_back(hwnd);
    return TRUE;
}

}  // namespace

std::vector<HWND> Stage::Windows() const {
    std::pair<DWORD, std::vector<HWND>> found{process, {}};
    EnumWindows(TakeConfigWindow, reinterpret_cast<LPARAM>(&found));
    return found.second;
}
