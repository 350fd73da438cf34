#include "tests/tray_icon/shell_calls.h"

#include <cstring>

namespace {

ShellCalls* current = nullptr;

}  // namespace

DWORD ShellCall::Number(size_t offset) const {
    DWORD number = 0;
    std::memcpy(&number, record.data() + offset, sizeof(number));
    return number;
}

ShellCalls::ShellCalls() : m_patch("shell32.dll", "Shell_NotifyIconA", &Fake) {
    current = this;
}

ShellCalls::~ShellCalls() {
    current = nullptr;
}

std::vector<DWORD> ShellCalls::Actions() const {
    std::vector<DWORD> actions;
    for (const ShellCall& call : calls)
        actions.push_back(call.action);
    return actions;
}

BOOL WINAPI ShellCalls::Fake(DWORD action, NOTIFYICONDATAA* data) {
    current->calls.push_back(
        {action, std::string(reinterpret_cast<const char*>(data), data->cbSize), GetTickCount()});
    return current->result ? current->result(action) : TRUE;
}
