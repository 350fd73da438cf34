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
        : module(LoadLibraryExW(path.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES)) {
        if (module == nullptr) throw std::runtime_error("not a program of this system");
        FindImport(module, [this](const char* library, const char* function, void**) {
            libraries.insert(ToAnsi(UpperCase(FromAnsi(library))));
            functions.insert(function);
            return false;
        });
    }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    ~Image() { FreeLibrary(module); }

    const IMAGE_NT_HEADERS32& Headers() const {
        const auto* const base = reinterpret_cast<const char*>(module);
        const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
        return *reinterpret_cast<const IMAGE_NT_HEADERS32*>(base + dos->e_lfanew);
    }

    std::span<const IMAGE_SECTION_HEADER> Sections() const {
        return {IMAGE_FIRST_SECTION(&Headers()), Headers().FileHeader.NumberOfSections};
    }

    const HMODULE module;

    // Imported plainly: libraries in capital letters, functions by their names.
    std::set<std::string> libraries;
    std::set<std::string> functions;
};

// A program of the build lies in the folder above the tests.
inline std::wstring ProgramPath(const std::wstring& name = L"SentrelConfig.exe") {
    const std::wstring folder = ServerDirectory();
    return folder.substr(0, folder.find_last_of(L'\\') + 1) + name;
}
