// The engine's log, opened for reading while the engine goes on writing it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/handle.h"

class LogFile {
public:
    // Creates an empty file where there is none. Throws AutomationError when the file cannot be opened, or is
    // no file on a disk but a pipe or a device.
    explicit LogFile(const std::wstring& path);

    // In bytes, at the time of opening: what is appended later is not seen.
    std::uint64_t Size() const noexcept { return m_size; }

    // Fills buffer with the count bytes from offset on. Throws AutomationError when it cannot, for
    // example because the file has become shorter.
    void Read(std::uint64_t offset, char* buffer, std::size_t count) const;

private:
    FileHandle m_file;
    std::uint64_t m_size = 0;
};
