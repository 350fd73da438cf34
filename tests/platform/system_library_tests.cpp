// Libraries that are loaded when they are needed.
#include "platform/system_library.h"

#include <doctest.h>

#include <string>
#include <vector>

#include "platform/text.h"
#include "tests/support/import_fake.h"
#include "tests/support/shown_text.h"

using Loads = std::vector<std::pair<std::wstring, DWORD>>;  // the names and their flags

TEST_CASE(
    "a library comes from the system's folder, on Windows 7 too, which does not know the search flag, and "
    "one that is missing is looked for nowhere else") {
    wchar_t folder[MAX_PATH]{};
    GetSystemDirectoryW(folder, MAX_PATH);
    const std::wstring path = std::wstring(folder) + L"\\winmm.dll";
    const auto loaded = [] {
        wchar_t found[MAX_PATH]{};
        GetModuleFileNameW(LoadSystemLibrary(L"winmm.dll"), found, MAX_PATH);
        return UpperCase(found);
    };
    CHECK(loaded() == UpperCase(path));

    DWORD error = ERROR_INVALID_PARAMETER;
    Loads loads;
    const ImportFake<"LoadLibraryExW", decltype(&LoadLibraryExW)> load{
        "kernel32.dll", [&](LPCWSTR name, HANDLE file, DWORD flags) -> HMODULE {
            loads.emplace_back(name, flags);
            if (loads.size() > 1) return load.Original(name, file, flags);
            SetLastError(error);
            return nullptr;
        }};
    const Loads::value_type first{L"winmm.dll", LOAD_LIBRARY_SEARCH_SYSTEM32};
    CHECK(loaded() == UpperCase(path));
    CHECK(loads == Loads{first, {path, LOAD_WITH_ALTERED_SEARCH_PATH}});
    {
        const ImportFake<"GetSystemDirectoryW", decltype(&GetSystemDirectoryW)> fails{
            "kernel32.dll", [](LPWSTR, UINT) { return 0u; }};
        loads.clear();
        CHECK(LoadSystemLibrary(L"winmm.dll") == nullptr);
        CHECK(loads == Loads{first});
    }
    loads.clear();
    error = ERROR_MOD_NOT_FOUND;
    CHECK(LoadSystemLibrary(L"winmm.dll") == nullptr);
    CHECK(loads == Loads{first});
}

TEST_CASE("a function that is not there, or whose library is not, is null") {
    using Function = void WINAPI();
    CHECK((FunctionOf<Function>(nullptr, "sndPlaySoundA") == nullptr));
    CHECK((FunctionOf<Function>(GetModuleHandleW(L"kernel32.dll"), "no such function") == nullptr));
    CHECK((FunctionOf<Function>(GetModuleHandleW(L"kernel32.dll"), "GetTickCount") != nullptr));
}
