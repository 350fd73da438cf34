#include "bench/support/log_files.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "lists/newest_lines.h"
#include "platform/handle.h"

namespace {

constexpr size_t kWriteSize = 1 << 20;

FileHandle Open(const std::wstring& path) {
    FileHandle file(CreateFileW(path.c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) throw std::runtime_error("a log cannot be opened");
    return file;
}

std::uint64_t SizeOf(const FileHandle& file) {
    LARGE_INTEGER size{};
    GetFileSizeEx(file.Get(), &size);
    return static_cast<std::uint64_t>(size.QuadPart);
}

void Write(const FileHandle& file, const std::string& bytes) {
    DWORD done = 0;
    if (!WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr) ||
        done != bytes.size()) {
        throw std::runtime_error("a log cannot be written");
    }
}

// Returns how many bytes came.
size_t Read(const FileHandle& file, char* buffer, size_t count) {
    DWORD done = 0;
    if (!ReadFile(file.Get(), buffer, static_cast<DWORD>(count), &done, nullptr)) {
        throw std::runtime_error("a log cannot be read");
    }
    return done;
}

}  // namespace

void WriteLog(const std::wstring& path, std::uint64_t bytes, const std::function<std::string(size_t n)>& line,
              std::uint64_t filler) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) throw std::runtime_error("a log cannot be made");
    std::string block;
    if (filler != 0) {
        LARGE_INTEGER start{};
        start.QuadPart = static_cast<LONGLONG>(filler);
        SetFilePointerEx(file.Get(), start, nullptr, FILE_BEGIN);
        block = "\r\n";
    }
    std::uint64_t written = 0;
    for (size_t n = 0; written < bytes; ++n) {
        const std::string next = line(n) + "\r\n";
        written += next.size();
        block += next;
        if (block.size() >= kWriteSize || written >= bytes) {
            Write(file, block);
            block.clear();
        }
    }
}

void ReadThrough(const std::wstring& path) {
    const FileHandle file = Open(path);
    std::vector<char> buffer(kLogBlockSize);
    while (Read(file, buffer.data(), buffer.size()) != 0)
        continue;
}

void ReadLastBlock(const std::wstring& path) {
    const FileHandle file = Open(path);
    std::vector<char> buffer(kLogBlockSize);
    const std::uint64_t size = SizeOf(file);
    LARGE_INTEGER start{};
    start.QuadPart = static_cast<LONGLONG>(size - std::min<std::uint64_t>(size, buffer.size()));
    SetFilePointerEx(file.Get(), start, nullptr, FILE_BEGIN);
    if (Read(file, buffer.data(), buffer.size()) != std::min<std::uint64_t>(size, buffer.size())) {
        throw std::runtime_error("a log has become shorter");
    }
}

std::string Contents(const std::wstring& path) {
    const FileHandle file = Open(path);
    std::string bytes(static_cast<size_t>(SizeOf(file)), '\0');
    size_t done = 0;
    while (done < bytes.size())
        done += Read(file, bytes.data() + done, std::min<size_t>(bytes.size() - done, kLogBlockSize));
    return bytes;
}
