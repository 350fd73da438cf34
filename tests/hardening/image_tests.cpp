// What the built manager shows of its own protection and version, and what it asks Windows for.
#include <doctest.h>

#include <windows.h>

#include <cstdio>
#include <set>
#include <vector>

#include "platform/com/bstr.h"
#include "platform/com/com_ptr.h"
#include "platform/text.h"
#include "tests/hardening/image.h"
#include "tests/support/test_folder.h"
#include "version.h"

namespace {

const Image& Manager() {
    static const Image image(ProgramPath());
    return image;
}

// A text in UTF-16, as the bytes of the file hold it.
std::string Wide(const std::string& text) {
    const std::wstring wide = FromAnsi(text);
    return {reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t)};
}

}  // namespace

TEST_CASE("the manager may be loaded at any address, can be moved there, and executes no data") {
    const IMAGE_OPTIONAL_HEADER32& header = Manager().Headers().OptionalHeader;
    CHECK((header.DllCharacteristics & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE) != 0);
    CHECK((header.DllCharacteristics & IMAGE_DLLCHARACTERISTICS_NX_COMPAT) != 0);
    CHECK((Manager().Headers().FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED) == 0);
    CHECK(header.DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size > 1000 * sizeof(WORD));

    constexpr DWORD kWritableCode = IMAGE_SCN_MEM_EXECUTE | IMAGE_SCN_MEM_WRITE;
    size_t executable = 0;
    for (const IMAGE_SECTION_HEADER& section : Manager().Sections()) {
        executable += (section.Characteristics & IMAGE_SCN_MEM_EXECUTE) != 0 ? 1 : 0;
        CHECK((section.Characteristics & kWritableCode) != kWritableCode);
    }
    CHECK(executable == 1);
}

TEST_CASE(
    "the manager imports from Windows' own libraries alone, and plainly only from those that Windows never "
    "takes from the program's folder; it starts no process, so that nobody inherits what it has open, but by "
    "the shell") {
    // All of them are always taken from the system's folder, comctl32.dll by the manifest and the rest by
    // Windows.
    const std::set<std::string> allowed{"ADVAPI32.DLL", "COMCTL32.DLL", "COMDLG32.DLL", "GDI32.DLL",
                                        "KERNEL32.DLL", "MSVCRT.DLL",   "OLE32.DLL",    "OLEAUT32.DLL",
                                        "SHELL32.DLL",  "USER32.DLL"};
    CHECK(Manager().libraries == allowed);
    for (const std::string function :
         {"CreateProcessA", "CreateProcessW", "CreateProcessAsUserA", "CreateProcessAsUserW", "WinExec",
          "system", "_wsystem", "_wspawnv", "_spawnv", "_popen", "_wpopen"}) {
        CAPTURE(function);
        CHECK_FALSE(Manager().functions.contains(function));
    }
    CHECK(Manager().functions.contains("ShellExecuteA"));
}

TEST_CASE(
    "the manager's file is small, does without the functions that write past a buffer, and tells nothing of "
    "the machine that built it" *
    doctest::skip(!IS_RELEASE)) {
    const std::string bytes = BytesOf(ProgramPath());
    CHECK(bytes.size() <= 480 * 1024);
    for (const std::string text : {"C:\\Users\\", ".cpp"}) {
        CAPTURE(text);
        CHECK(bytes.find(text) == std::string::npos);
        CHECK(bytes.find(Wide(text)) == std::string::npos);
    }
    CHECK(bytes.find(Wide("SentrelConfig")) != std::string::npos);
    CHECK(Manager().Headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_DEBUG].Size == 0);
    for (const std::string function : {"strcpy", "strcat", "wcscpy", "wcscat", "sprintf", "swprintf",
                                       "vsprintf", "gets", "lstrcpyA", "lstrcpyW", "lstrcatA", "lstrcatW"}) {
        CAPTURE(function);
        CHECK_FALSE(Manager().functions.contains(function));
    }
}

TEST_CASE("the manager runs with its user's rights and with the themed common controls") {
    const HMODULE module = Manager().module;
    const HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(1), RT_MANIFEST);
    REQUIRE(found != nullptr);
    const std::string manifest(static_cast<const char*>(LockResource(LoadResource(module, found))),
                               SizeofResource(module, found));
    for (const std::string text : {"<requestedExecutionLevel level=\"asInvoker\" uiAccess=\"false\"/>",
                                   "name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\"",
                                   "processorArchitecture=\"x86\""}) {
        CAPTURE(text);
        CHECK(manifest.find(text) != std::string::npos);
    }
}

// The version stands in one place, the project's build file.
TEST_CASE("the version resources of the manager, the loader and the installer tell the project's version") {
    WORD numbers[3]{};
    REQUIRE(std::sscanf(CALVANE_VERSION, "%hu.%hu.%hu", &numbers[0], &numbers[1], &numbers[2]) == 3);
    for (const std::wstring program :
         {L"SentrelConfig.exe", L"CalvaneConfigLoader.exe", L"CalvaneSetup.exe"}) {
        CAPTURE(ToAnsi(program));
        const std::wstring path = ProgramPath(program);
        std::vector<std::byte> resource(GetFileVersionInfoSizeW(path.c_str(), nullptr));
        REQUIRE(GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()));
        const auto find = [&](const std::wstring& what) {
            void* found = nullptr;
            UINT length = 0;
            REQUIRE(VerQueryValueW(resource.data(), what.c_str(), &found, &length));
            return found;
        };
        const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(find(L"\\"));
        for (const DWORD high : {fixed.dwFileVersionMS, fixed.dwProductVersionMS})
            CHECK(high == MAKELONG(numbers[1], numbers[0]));
        for (const DWORD low : {fixed.dwFileVersionLS, fixed.dwProductVersionLS})
            CHECK(low == MAKELONG(0, numbers[2]));
        for (const std::wstring text : {L"FileVersion", L"ProductVersion"})
            CHECK(ToAnsi(static_cast<const wchar_t*>(find(L"\\StringFileInfo\\040904B0\\" + text))) ==
                  CALVANE_VERSION);
    }
}

TEST_CASE("the type libraries' help strings end with the first two numbers of the version") {
    const std::string version = CALVANE_VERSION;
    const std::string shortVersion = ' ' + version.substr(0, version.rfind('.'));
    for (const auto& [library, help] : {std::pair{L"SentrelConfig.exe", "Calvane configuration manager"},
                                        {L"SentrelConfig.exe\\2", "Calvane configuration manager forms"}}) {
        ComPtr<ITypeLib> loaded;
        BstrHandle text;
        REQUIRE(LoadTypeLibEx(ProgramPath(library).c_str(), REGKIND_NONE, &loaded) == S_OK);
        REQUIRE(loaded->GetDocumentation(MEMBERID_NIL, nullptr, text.Put(), nullptr, nullptr) == S_OK);
        CHECK(ToAnsi(text.Get()) == help + shortVersion);
    }
}
