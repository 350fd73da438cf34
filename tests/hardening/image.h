// A program's file, mapped as Windows' loader maps it, without running any of it.
#pragma once

#include <windows.h>

#include <cctype>
#include <set>
#include <span>
#include <stdexcept>
#include <string>

#include "store/server_directory.h"
#include "tests/support/import_patch.h"

class Image {
public:
    explicit Image(const std::wstring& path)
        : m_module(LoadLibraryExW(path.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES)) {
        if (m_module == nullptr) throw std::runtime_error("not a program of this system");
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
    std::set<std::string> Libraries() const {
        return Imports([](std::string library, const char*) {
            for (char& character : library)
                character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
            return library;
        });
    }
    std::set<std::string> Functions() const {
        return Imports([](const std::string&, const char* function) { return std::string(function); });
    }

private:
    template <class Choice>
    std::set<std::string> Imports(Choice choice) const {
        std::set<std::string> names;
        FindImport(m_module, [&](const char* library, const char* function, void**) {
            names.insert(choice(library, function));
            return false;
        });
        return names;
    }

    const HMODULE m_module;
};

// The built manager.
inline std::wstring ManagerPath() {
    const std::wstring folder = ServerDirectory();
    return folder.substr(0, folder.find_last_of(L'\\') + 1) + L"SentrelConfig.exe";
}
