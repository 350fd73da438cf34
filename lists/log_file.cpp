#include "lists/log_file.h"

#include "platform/automation_error.h"

LogFile::LogFile(const std::wstring& path)
    : m_file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                         nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {
    if (!m_file) ThrowLastError();
    // A pipe or a device may keep its reader waiting, and with it the window.
    if (GetFileType(m_file.Get()) != FILE_TYPE_DISK) ThrowIfWin32Failed(ERROR_NOT_SUPPORTED);
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(m_file.Get(), &size)) ThrowLastError();
    m_size = static_cast<std::uint64_t>(size.QuadPart);
}

void LogFile::Read(std::uint64_t offset, char* buffer, std::size_t count) const {
    LARGE_INTEGER position{};
    position.QuadPart = static_cast<LONGLONG>(offset);
    if (!SetFilePointerEx(m_file.Get(), position, nullptr, FILE_BEGIN)) ThrowLastError();
    while (count != 0) {
        DWORD done = 0;
        if (!ReadFile(m_file.Get(), buffer, static_cast<DWORD>(count), &done, nullptr)) ThrowLastError();
        if (done == 0) ThrowIfWin32Failed(ERROR_HANDLE_EOF);
        buffer += done;
        count -= done;
    }
}
