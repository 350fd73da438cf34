#include "tests/support/test_folder.h"

#include <doctest.h>

#include <stdexcept>

#include "platform/handle.h"
#include "store/server_directory.h"

namespace {

FileHandle Open(const std::wstring& path, DWORD access, DWORD disposition) {
    FileHandle file(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) throw std::runtime_error("a test file cannot be opened");
    return file;
}

void WriteAll(HANDLE file, std::string_view bytes) {
    DWORD done = 0;
    if (!WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr) ||
        done != bytes.size()) {
        throw std::runtime_error("a test file cannot be written");
    }
}

// Takes paths of any length.
bool RemoveTree(const std::wstring& path) {
    WIN32_FIND_DATAW entry{};
    const HANDLE search = FindFirstFileW((path + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) return false;
    do {
        const std::wstring name = entry.cFileName;
        if (name == L"." || name == L"..") continue;
        const std::wstring child = path + L'\\' + name;
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            RemoveTree(child);
        } else {
            DeleteFileW(child.c_str());
        }
    } while (FindNextFileW(search, &entry));
    FindClose(search);
    return RemoveDirectoryW(path.c_str()) != FALSE;
}

}  // namespace

TestFolder::TestFolder() {
    static int s_count = 0;
    wchar_t temporary[MAX_PATH + 1]{};
    GetTempPathW(MAX_PATH + 1, temporary);
    m_path = temporary + (L"calvane" + std::to_wstring(GetCurrentProcessId()) + L'_' +
                          std::to_wstring(GetTickCount()) + L'_' + std::to_wstring(++s_count));
    if (!CreateDirectoryW(m_path.c_str(), nullptr)) throw std::runtime_error("a test folder cannot be made");
}

TestFolder::~TestFolder() {
    CHECK_MESSAGE(RemoveTree(L"\\\\?\\" + m_path), "a test left its folder behind");
}

std::wstring TestFolder::Write(const std::wstring& name, std::string_view bytes) const {
    const std::wstring path = Path(name);
    WriteAll(Open(path, GENERIC_WRITE, CREATE_ALWAYS).Get(), bytes);
    return path;
}

std::wstring DataFile(const std::wstring& path) {
    return ServerDirectory() + L"\\data\\" + path;
}

bool FileExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string BytesOf(const std::wstring& path) {
    const FileHandle file = Open(path, GENERIC_READ, OPEN_EXISTING);
    std::string bytes(GetFileSize(file.Get(), nullptr), '\0');
    DWORD done = 0;
    if (!bytes.empty() &&
        !ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr)) {
        throw std::runtime_error("a test file cannot be read");
    }
    return bytes;
}

void Append(const std::wstring& path, std::string_view bytes) {
    WriteAll(Open(path, FILE_APPEND_DATA, OPEN_ALWAYS).Get(), bytes);
}
