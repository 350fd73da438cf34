// The built manager's file, read as Windows' loader reads it.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// Addresses are relative to the image's base.
class Image {
public:
    // Throws std::runtime_error for what is not a 32-bit program.
    explicit Image(const std::wstring& path);

    const std::string& Bytes() const noexcept { return m_bytes; }
    const IMAGE_OPTIONAL_HEADER32& Header() const;
    WORD Characteristics() const;
    std::vector<IMAGE_SECTION_HEADER> Sections() const;
    std::vector<std::string> Libraries() const;  // imported plainly; in capital letters
    std::vector<std::string> Functions() const;  // imported by name
    size_t RelocationCount() const;

    // The section's code, and the address of its first byte.
    std::string Code(DWORD& address) const;
    // Where a text stands; 0 when nowhere.
    DWORD AddressOf(const std::string& text) const;

private:
    const IMAGE_NT_HEADERS32& NtHeaders() const;
    size_t OffsetOf(DWORD address) const;
    template <class Item>
    const Item& At(size_t offset) const;

    std::string m_bytes;
};

// The built manager.
std::wstring ManagerPath();
