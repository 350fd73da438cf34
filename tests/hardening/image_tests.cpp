// What the built manager shows of its own protection and version, and what it asks Windows for.
#include <doctest.h>

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>
#include <set>
#include <string_view>
#include <vector>

#include "platform/com/bstr.h"
#include "platform/com/own_type_library.h"
#include "platform/text.h"
#include "sentrel_config.h"
#include "tests/hardening/image.h"
#include "tests/support/test_folder.h"
#include "version.h"

namespace {

const Image& Manager() {
    static const Image image(ManagerPath());
    return image;
}

const std::string& Bytes() {
    static const std::string bytes = BytesOf(ManagerPath());
    return bytes;
}

// A text in UTF-16, as the bytes of the file hold it.
std::string Wide(const std::string& text) {
    const std::wstring wide = FromAnsi(text);
    return {reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t)};
}

std::string Manifest() {
    const HMODULE module = Manager().Module();
    const HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(1), RT_MANIFEST);
    REQUIRE(found != nullptr);
    return {static_cast<const char*>(LockResource(LoadResource(module, found))),
            SizeofResource(module, found)};
}

std::wstring Registered(const std::wstring& value) {
    const std::wstring key = L"CLSID\\" + GuidText(__uuidof(ConfigControl)) + L"\\LocalServer32";
    wchar_t text[1024]{};
    DWORD size = sizeof(text);
    REQUIRE(RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), value.c_str(), RRF_RT_REG_SZ, nullptr, text,
                         &size) == ERROR_SUCCESS);
    return text;
}

// The version resource of a file; empty when it has none.
std::vector<std::byte> VersionResource(const std::wstring& path) {
    std::vector<std::byte> resource(GetFileVersionInfoSizeW(path.c_str(), nullptr));
    const auto size = static_cast<DWORD>(resource.size());
    if (size != 0 && !GetFileVersionInfoW(path.c_str(), 0, size, resource.data())) resource.clear();
    return resource;
}

std::string Text(const std::vector<std::byte>& resource, const std::wstring& name) {
    void* text = nullptr;
    UINT length = 0;
    const std::wstring path = L"\\StringFileInfo\\040904B0\\" + name;
    if (!VerQueryValueW(resource.data(), path.c_str(), &text, &length)) return "(none)";
    return ToAnsi(static_cast<const wchar_t*>(text));
}

// "1.2.3.0" for 1, 2, 3, 0.
std::string Dotted(DWORD high, DWORD low) {
    const WORD numbers[] = {HIWORD(high), LOWORD(high), HIWORD(low), LOWORD(low)};
    std::string text;
    for (const WORD number : numbers)
        text += (text.empty() ? "" : ".") + std::to_string(number);
    return text;
}

}  // namespace

TEST_CASE("the manager may be loaded at any address, can be moved there, and executes no data") {
    const IMAGE_OPTIONAL_HEADER32& header = Manager().Headers().OptionalHeader;
    CHECK((header.DllCharacteristics & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE) != 0);
    CHECK((header.DllCharacteristics & IMAGE_DLLCHARACTERISTICS_NX_COMPAT) != 0);
    CHECK((Manager().Headers().FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED) == 0);
    CHECK(header.DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size > 1000 * sizeof(WORD));
}

TEST_CASE("no section of the manager is both writable and executable") {
    size_t executable = 0;
    for (const IMAGE_SECTION_HEADER& section : Manager().Sections()) {
        const bool executes = (section.Characteristics & IMAGE_SCN_MEM_EXECUTE) != 0;
        executable += executes ? 1 : 0;
        CHECK_FALSE((executes && (section.Characteristics & IMAGE_SCN_MEM_WRITE) != 0));
    }
    CHECK(executable == 1);
}

// The handler of a smashed stack is found by the message that it prints: it is the function that is called
// and lies closest before the place where the message's address is used.
TEST_CASE("the manager's functions check their stack before they return") {
    std::string_view code;
    DWORD message = 0;
    for (const IMAGE_SECTION_HEADER& section : Manager().Sections()) {
        const std::string_view bytes(Manager().Base() + section.VirtualAddress, section.Misc.VirtualSize);
        const size_t found = bytes.find("*** stack smashing detected ***");
        if (found != std::string_view::npos) message = section.VirtualAddress + found;
        if ((section.Characteristics & IMAGE_SCN_MEM_EXECUTE) != 0) code = bytes;
    }
    REQUIRE(message != 0);
    const auto wordAt = [&](size_t offset) {
        DWORD word = 0;
        std::memcpy(&word, code.data() + offset, sizeof(word));
        return word;
    };

    std::map<DWORD, int> calls;  // by the offset of the function
    size_t use = 0;
    for (size_t i = 0; i + 5 <= code.size(); ++i) {
        if (wordAt(i) == Manager().Headers().OptionalHeader.ImageBase + message) use = i;
        if (static_cast<BYTE>(code[i]) != 0xE8) continue;
        const DWORD target = static_cast<DWORD>(i) + 5 + wordAt(i + 1);
        if (target < code.size()) ++calls[target];
    }
    REQUIRE(use != 0);
    int checks = 0;
    for (const auto& [target, count] : calls) {
        if (target < use && use - target < 256) checks = std::max(checks, count);
    }
    CHECK(checks > 100);
}

TEST_CASE(
    "the manager imports from Windows' own libraries alone, and plainly only from those that Windows never "
    "takes from the program's folder") {
    // All of them are always taken from the system's folder, comctl32.dll by the manifest and the rest by
    // Windows.
    const std::set<std::string> allowed{"ADVAPI32.DLL", "COMCTL32.DLL", "COMDLG32.DLL", "GDI32.DLL",
                                        "KERNEL32.DLL", "MSVCRT.DLL",   "OLE32.DLL",    "OLEAUT32.DLL",
                                        "SHELL32.DLL",  "USER32.DLL"};
    CHECK(Manager().libraries == allowed);
}

TEST_CASE("the manager starts no process, so that nobody inherits what it has open, but by the shell") {
    for (const char* const function :
         {"CreateProcessA", "CreateProcessW", "CreateProcessAsUserA", "CreateProcessAsUserW", "WinExec",
          "system", "_wsystem", "_wspawnv", "_spawnv", "_popen", "_wpopen"}) {
        CAPTURE(function);
        CHECK_FALSE(Manager().functions.contains(function));
    }
    CHECK(Manager().functions.contains("ShellExecuteA"));
}

TEST_CASE("the manager does without the functions that write past a buffer" * doctest::skip(!IS_RELEASE)) {
    for (const char* const function : {"strcpy", "strcat", "wcscpy", "wcscat", "sprintf", "swprintf",
                                       "vsprintf", "gets", "lstrcpyA", "lstrcpyW", "lstrcatA", "lstrcatW"}) {
        CAPTURE(function);
        CHECK_FALSE(Manager().functions.contains(function));
    }
}

TEST_CASE("the manager's file tells nothing of the machine that built it" * doctest::skip(!IS_RELEASE)) {
    for (const std::string text : {"C:\\Users\\", ".cpp"}) {
        CAPTURE(text);
        CHECK(Bytes().find(text) == std::string::npos);
        CHECK(Bytes().find(Wide(text)) == std::string::npos);
    }
    CHECK(Bytes().find(Wide("SentrelConfig")) != std::string::npos);
    CHECK(Manager().Headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_DEBUG].Size == 0);
}

TEST_CASE("the manager's file is small" * doctest::skip(!IS_RELEASE)) {
    CHECK(Bytes().size() <= 480 * 1024);
}

TEST_CASE("the manager runs with its user's rights and with the themed common controls") {
    const std::string manifest = Manifest();
    CHECK(manifest.find("<requestedExecutionLevel level=\"asInvoker\" uiAccess=\"false\"/>") !=
          std::string::npos);
    CHECK(manifest.find("name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\"") !=
          std::string::npos);
    CHECK(manifest.find("processorArchitecture=\"x86\"") != std::string::npos);
}

TEST_CASE("the registered command line is quoted, and the program is named beside it as it stands") {
    CHECK(Registered(L"") == L'"' + Registered(L"ServerExecutable") + L'"');
    CHECK(CompareStringOrdinal(Registered(L"ServerExecutable").c_str(), -1, ManagerPath().c_str(), -1,
                               TRUE) == CSTR_EQUAL);
}

// The version stands in one place, the project's build file.
TEST_CASE("the version resources of the manager, the loader and the installer tell the project's version") {
    for (const wchar_t* const program :
         {L"SentrelConfig.exe", L"CalvaneConfigLoader.exe", L"CalvaneSetup.exe"}) {
        CAPTURE(ToAnsi(program));
        const std::vector<std::byte> resource = VersionResource(ProgramPath(program));
        REQUIRE_FALSE(resource.empty());
        void* found = nullptr;
        UINT length = 0;
        REQUIRE(VerQueryValueW(resource.data(), L"\\", &found, &length));
        const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(found);
        CHECK(Dotted(fixed.dwFileVersionMS, fixed.dwFileVersionLS) == CALVANE_VERSION ".0");
        CHECK(Dotted(fixed.dwProductVersionMS, fixed.dwProductVersionLS) == CALVANE_VERSION ".0");
        CHECK(Text(resource, L"FileVersion") == CALVANE_VERSION);
        CHECK(Text(resource, L"ProductVersion") == CALVANE_VERSION);
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
