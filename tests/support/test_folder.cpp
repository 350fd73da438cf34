#include "tests/support/test_folder.h"

#include <doctest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "store/server_directory.h"

namespace {

void Put(const std::wstring& path, std::string_view bytes, std::ios::openmode mode) {
    std::ofstream file(std::filesystem::path(path), std::ios::binary | mode);
    if (!(file << bytes).flush()) throw std::runtime_error("a test file cannot be written");
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
    Put(path, bytes, std::ios::trunc);
    return path;
}

std::wstring DataFile(const std::wstring& path) {
    return ServerDirectory() + L"\\data\\" + path;
}

bool FileExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string BytesOf(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file) throw std::runtime_error("a test file cannot be read");
    return {std::istreambuf_iterator<char>(file), {}};
}

void Append(const std::wstring& path, std::string_view bytes) {
    Put(path, bytes, std::ios::app);
}
