// A program's file, mapped as Windows' loader maps it, without running any of it.
#pragma once

#include <windows.h>

#include <set>
#include <span>
#include <stdexcept>
#include <string>

#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/support/import_patch.h"

class Image {
public:
    explicit Image(const std::wstring& path)
        : m_module(LoadLibraryExW(path.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES)) {
        if (m_module == nullptr) throw std::runtime_error("not a program of this system");
        FindImport(m_module, [this](const char* library, const char* function, void**) {
            libraries.insert(ToAnsi(UpperCase(FromAnsi(library))));
            functions.insert(function);
            return false;
        });
    }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    ~Image() { FreeLibrary(m_module); }

    HMODULE Module() const noexcept { return m_module; }
    const char* Base() const noexcept { return reinterpret_cast<const char*>(m_module); }

    const IMAGE_NT_HEADERS32& Headers() const {
        const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(Base());
        return *reinterpret_cast<const IMAGE_NT_HEADERS32*>(Base() + dos->e_lfanew);
    }

    std::span<const IMAGE_SECTION_HEADER> Sections() const {
        return {IMAGE_FIRST_SECTION(&Headers()), Headers().FileHeader.NumberOfSections};
    }

    // Imported plainly: libraries in capital letters, functions by their names.
    std::set<std::string> libraries;
    std::set<std::string> functions;

private:
    const HMODULE m_module;
};

// A program of the build lies in the folder above the tests.
inline std::wstring ProgramPath(const std::wstring& name) {
    const std::wstring folder = ServerDirectory();
    return folder.substr(0, folder.find_last_of(L'\\') + 1) + name;
}

inline std::wstring ManagerPath() {
    return ProgramPath(L"SentrelConfig.exe");
}
