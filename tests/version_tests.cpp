// The version stands in one place, CMakeLists.txt; here is whether the programs and the type library tell the
// same.
#include <doctest.h>

#include <windows.h>
#include <oleauto.h>

#include <cstddef>
#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "platform/com/com_ptr.h"
#include "platform/text.h"
#include "store/server_directory.h"
#include "version.h"

namespace {

// The programs lie in the folder above the tests.
std::wstring ProgramPath(const std::wstring& name) {
    const std::wstring folder = ServerDirectory();
    return folder.substr(0, folder.find_last_of(L'\\') + 1) + name;
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

// Of a type library in a program: the file, or the file, a backslash and the resource's number.
std::string HelpString(const std::wstring& library) {
    ComPtr<ITypeLib> loaded;
    ThrowIfFailed(LoadTypeLibEx(ProgramPath(library).c_str(), REGKIND_NONE, &loaded));
    BSTR help = nullptr;
    ThrowIfFailed(loaded->GetDocumentation(MEMBERID_NIL, nullptr, &help, nullptr, nullptr));
    std::string text = ToAnsi(std::wstring_view(help, SysStringLen(help)));
    SysFreeString(help);
    return text;
}

}  // namespace

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
    const std::string shortVersion = version.substr(0, version.rfind('.'));
    CHECK(HelpString(L"SentrelConfig.exe") == "Calvane configuration manager " + shortVersion);
    CHECK(HelpString(L"SentrelConfig.exe\\2") == "Calvane configuration manager forms " + shortVersion);
}
