#include "tests/hardening/image.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "store/server_directory.h"
#include "tests/support/test_folder.h"

Image::Image(const std::wstring& path) : m_bytes(BytesOf(path)) {
    if (At<IMAGE_DOS_HEADER>(0).e_magic != IMAGE_DOS_SIGNATURE ||
        NtHeaders().Signature != IMAGE_NT_SIGNATURE || Header().Magic != IMAGE_NT_OPTIONAL_HDR32_MAGIC) {
        throw std::runtime_error("not a 32-bit program");
    }
}

template <class Item>
const Item& Image::At(size_t offset) const {
    if (offset + sizeof(Item) > m_bytes.size()) throw std::runtime_error("the program's file is cut off");
    return *reinterpret_cast<const Item*>(m_bytes.data() + offset);
}

const IMAGE_NT_HEADERS32& Image::NtHeaders() const {
    return At<IMAGE_NT_HEADERS32>(static_cast<size_t>(At<IMAGE_DOS_HEADER>(0).e_lfanew));
}

const IMAGE_OPTIONAL_HEADER32& Image::Header() const {
    return NtHeaders().OptionalHeader;
}

WORD Image::Characteristics() const {
    return NtHeaders().FileHeader.Characteristics;
}

std::vector<IMAGE_SECTION_HEADER> Image::Sections() const {
    const IMAGE_SECTION_HEADER* const first = IMAGE_FIRST_SECTION(&NtHeaders());
    return {first, first + NtHeaders().FileHeader.NumberOfSections};
}

size_t Image::OffsetOf(DWORD address) const {
    for (const IMAGE_SECTION_HEADER& section : Sections()) {
        if (address >= section.VirtualAddress && address < section.VirtualAddress + section.SizeOfRawData) {
            return address - section.VirtualAddress + section.PointerToRawData;
        }
    }
    throw std::runtime_error("an address lies outside the program's sections");
}

std::vector<std::string> Image::Libraries() const {
    std::vector<std::string> names;
    for (size_t offset = OffsetOf(Header().DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
         At<IMAGE_IMPORT_DESCRIPTOR>(offset).Name != 0; offset += sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
        std::string name = m_bytes.c_str() + OffsetOf(At<IMAGE_IMPORT_DESCRIPTOR>(offset).Name);
        std::ranges::transform(name, name.begin(),
                               [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        names.push_back(name);
    }
    return names;
}

std::vector<std::string> Image::Functions() const {
    std::vector<std::string> names;
    for (size_t offset = OffsetOf(Header().DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
         At<IMAGE_IMPORT_DESCRIPTOR>(offset).Name != 0; offset += sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
        for (size_t thunk = OffsetOf(At<IMAGE_IMPORT_DESCRIPTOR>(offset).OriginalFirstThunk);
             At<DWORD>(thunk) != 0; thunk += sizeof(DWORD)) {
            if (IMAGE_SNAP_BY_ORDINAL32(At<DWORD>(thunk))) continue;
            names.emplace_back(m_bytes.c_str() + OffsetOf(At<DWORD>(thunk)) +
                               offsetof(IMAGE_IMPORT_BY_NAME, Name));
        }
    }
    return names;
}

size_t Image::RelocationCount() const {
    const IMAGE_DATA_DIRECTORY& directory = Header().DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC];
    size_t count = 0;
    for (DWORD done = 0; done < directory.Size;) {
        const auto& block = At<IMAGE_BASE_RELOCATION>(OffsetOf(directory.VirtualAddress + done));
        if (block.SizeOfBlock < sizeof(block)) throw std::runtime_error("a block of relocations has no end");
        count += (block.SizeOfBlock - sizeof(block)) / sizeof(WORD);
        done += block.SizeOfBlock;
    }
    return count;
}

std::string Image::Code(DWORD& address) const {
    for (const IMAGE_SECTION_HEADER& section : Sections()) {
        if ((section.Characteristics & IMAGE_SCN_MEM_EXECUTE) == 0) continue;
        address = section.VirtualAddress;
        return m_bytes.substr(section.PointerToRawData, section.SizeOfRawData);
    }
    throw std::runtime_error("the program has no code");
}

DWORD Image::AddressOf(const std::string& text) const {
    const size_t found = m_bytes.find(text);
    for (const IMAGE_SECTION_HEADER& section : Sections()) {
        if (found >= section.PointerToRawData && found < section.PointerToRawData + section.SizeOfRawData) {
            return static_cast<DWORD>(found - section.PointerToRawData + section.VirtualAddress);
        }
    }
    return 0;
}

std::wstring ManagerPath() {
    std::wstring path = ServerDirectory();
    path.resize(path.find_last_of(L'\\') + 1);
    return path + L"SentrelConfig.exe";
}
