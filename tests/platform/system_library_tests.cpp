// Libraries that are loaded when they are needed.
#include "platform/system_library.h"

#include <doctest.h>

#include <string>
#include <vector>

#include "platform/text.h"
#include "tests/support/import_fake.h"

namespace {

struct Load {
    std::wstring name;
    DWORD flags;
    bool operator==(const Load&) const = default;
};

// A Windows that refuses the search flag, or has no library at all.
struct Loader {
    const DWORD error;
    std::vector<Load> loads{};

    const ImportFake<"LoadLibraryExW", decltype(&LoadLibraryExW)> load{
        "kernel32.dll", [this](LPCWSTR name, HANDLE file, DWORD flags) -> HMODULE {
            loads.push_back({name, flags});
            if (error == ERROR_INVALID_PARAMETER && (flags & LOAD_LIBRARY_SEARCH_SYSTEM32) == 0)
                return load.Original(name, file, flags);
            SetLastError(error);
            return nullptr;
        }};
};

std::wstring SystemPath() {
    wchar_t folder[MAX_PATH]{};
    GetSystemDirectoryW(folder, MAX_PATH);
    return std::wstring(folder) + L"\\winmm.dll";
}

void CheckLoaded() {
    wchar_t path[MAX_PATH]{};
    GetModuleFileNameW(LoadSystemLibrary(L"winmm.dll"), path, MAX_PATH);
    CHECK(UpperCase(path) == UpperCase(SystemPath()));
}

}  // namespace

TEST_CASE("a library comes from the system's folder, on Windows 7 too, which does not know the search flag") {
    CheckLoaded();
    Loader windows7{ERROR_INVALID_PARAMETER};
    CheckLoaded();
    CHECK(windows7.loads == std::vector<Load>{{L"winmm.dll", LOAD_LIBRARY_SEARCH_SYSTEM32},
                                              {SystemPath(), LOAD_WITH_ALTERED_SEARCH_PATH}});
}

TEST_CASE("a library that is missing is not looked for anywhere else") {
    Loader bare{ERROR_MOD_NOT_FOUND};
    CHECK(LoadSystemLibrary(L"winmm.dll") == nullptr);
    CHECK(bare.loads.size() == 1);
}

TEST_CASE("a function that is not there, or whose library is not, is null") {
    using Function = void WINAPI();
    CHECK((FunctionOf<Function>(nullptr, "sndPlaySoundA") == nullptr));
    CHECK((FunctionOf<Function>(GetModuleHandleW(L"kernel32.dll"), "no such function") == nullptr));
    CHECK((FunctionOf<Function>(GetModuleHandleW(L"kernel32.dll"), "GetTickCount") != nullptr));
}
