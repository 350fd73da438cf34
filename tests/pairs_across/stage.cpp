#include "tests/pairs_across/stage.h"

#include <fstream>
#include <utility>

#include "platform/text.h"

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

Log::Log() {
    wchar_t folder[MAX_PATH] = L"";
    GetTempPathW(MAX_PATH, folder);
    m_path = std::wstring(folder) + L"pairs_across.log";
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += "http://site" + std::to_string(i % 3 == 0 ? i / 2 : i) + ".example/page\r\n";
    for (const std::string& line : PlainNewestLines(text, kLogRows))
        m_newest.push_back(FromAnsi(line));
    std::ofstream(ToAnsi(m_path), std::ios::binary) << text;
}

std::vector<HWND> Stage::Windows() const {
    std::pair<DWORD, std::vector<HWND>> found{process, {}};
    EnumWindows(TakeConfigWindow, reinterpret_cast<LPARAM>(&found));
    return found.second;
}
