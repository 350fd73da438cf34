#include "lists/log_file.h"

#include "platform/automation_error.h"

namespace {

[[noreturn]] void ThrowLastError() {
    throw AutomationError(HRESULT_FROM_WIN32(GetLastError()));
}

}  // namespace

LogFile::LogFile(const std::wstring& path)
    : m_file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                         nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {
    LARGE_INTEGER size{};
    if (!m_file || !GetFileSizeEx(m_file.Get(), &size)) ThrowLastError();
    m_size = static_cast<std::uint64_t>(size.QuadPart);
}

void LogFile::Read(std::uint64_t offset, char* buffer, std::size_t count) const {
    while (count != 0) {
        OVERLAPPED position{};
        position.Offset = static_cast<DWORD>(offset);
        position.OffsetHigh = static_cast<DWORD>(offset >> 32);
        DWORD done = 0;
        if (!ReadFile(m_file.Get(), buffer, static_cast<DWORD>(count), &done, &position)) ThrowLastError();
        if (done == 0) throw AutomationError(HRESULT_FROM_WIN32(ERROR_HANDLE_EOF));
        offset += done;
        buffer += done;
        count -= done;
    }
}
