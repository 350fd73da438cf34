// Libraries that somebody put into the manager's folder.
#include <doctest.h>

#include <windows.h>
#include <tlhelp32.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "platform/handle.h"
#include "platform/text.h"
#include "tests/hardening/image.h"
#include "tests/support/manager.h"
#include "tests/support/message_pump.h"
#include "tests/support/program.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"
#include "tests/support/wine.h"

namespace {

// What the manager and the parts of Windows that it uses load sooner or later.
constexpr wchar_t kLoadedSometime[] =
    L"winmm.dll comctl32.dll uxtheme.dll version.dll propsys.dll dwmapi.dll msimg32.dll msacm32.dll "
    L"msacm32.drv wdmaud.drv mmdevapi.dll audioses.dll avrt.dll devobj.dll ksuser.dll midimap.dll "
    L"winmmbase.dll winspool.drv mpr.dll netapi32.dll userenv.dll profapi.dll secur32.dll "
    L"sspicli.dll cryptbase.dll cryptsp.dll bcrypt.dll rsaenh.dll ntmarta.dll apphelp.dll "
    L"windowscodecs.dll oleacc.dll olepro32.dll linkinfo.dll ntshrui.dll cscapi.dll edputil.dll "
    L"explorerframe.dll duser.dll dui70.dll wintypes.dll coremessaging.dll coreuicomponents.dll "
    L"textinputframework.dll textshaping.dll urlmon.dll wininet.dll iertutil.dll xmllite.dll "
    L"scrrun.dll usp10.dll dnsapi.dll iphlpapi.dll wtsapi32.dll winsta.dll wldp.dll dbghelp.dll "
    L"rpcrtremote.dll";

// Windows has no library of this name.
constexpr wchar_t kOnlyHere[] = L"only here.dll";

// What the manager imports, and what that imports in turn, Windows takes from the system's folder whatever
// lies beside the program. Wine does not: none of it is planted there, but for comctl32.dll, to which the
// manager's manifest leads.
std::vector<std::wstring> LibrariesToPlant() {
    for (const std::string& imported : Image(ProgramPath()).libraries)
        LoadLibraryA(imported.c_str());
    // Wine's user32.dll loads these before the first instruction of a program.
    for (const char* const ofThemes : {"uxtheme.dll", "msimg32.dll"})
        LoadLibraryA(ofThemes);
    std::vector<std::wstring> names;
    std::wistringstream words(kLoadedSometime);
    for (std::wstring name; words >> name;) {
        const bool isImported = name != L"comctl32.dll" && GetModuleHandleW(name.c_str()) != nullptr;
        if (!RunsUnderWine() || !isImported) names.push_back(name);
    }
    return names;
}

// A folder with a copy of the manager, registered from there meanwhile, and the planted libraries.
struct PlantedFolder {
    PlantedFolder() {
        const auto copy = [&](const std::wstring& file, const std::wstring& name) {
            REQUIRE(CopyFileW(file.c_str(), folder.Path(name).c_str(), TRUE));
        };
        for (const std::wstring name : {L"SentrelConfig.exe", L"Arc.wav"})
            copy(ProgramPath(name), name);
        for (const std::wstring& library : libraries)
            copy(ServerDirectory() + L"\\planted.dll", library);
        copy(ServerDirectory() + L"\\planted.dll", kOnlyHere);
        REQUIRE(RunProgram(program.c_str(), L"/RegServer") == 0);
    }
    ~PlantedFolder() { CHECK(RunProgram(L"SentrelConfig.exe", L"/RegServer") == 0); }

    std::vector<std::wstring> Loaded() const {
        std::vector<std::wstring> names;
        for (const std::wstring& library : libraries) {
            if (FileExists(folder.Path(library) + L".loaded")) names.push_back(library);
        }
        return names;
    }

    const TestFolder folder;
    const std::vector<std::wstring> libraries = LibrariesToPlant();
    const std::wstring program = folder.Path(L"SentrelConfig.exe");
};

DWORD ProcessOf(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process;
}

std::vector<std::wstring> ModulesOf(HWND window) {
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, ProcessOf(window)));
    std::vector<std::wstring> paths;
    MODULEENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Module32FirstW(snapshot.Get(), &entry); more;
         more = Module32NextW(snapshot.Get(), &entry))
        paths.push_back(UpperCase(entry.szExePath));
    return paths;
}

}  // namespace

TEST_CASE_FIXTURE(PlantedFolder,
                  "the manager loads nothing from its own folder, whatever it does, and all but itself from "
                  "Windows' folder") {
    {
        Manager manager;
        manager.Instance(formShow);
        if (SendMessageW(manager.Control(L"chkPlaySound"), BM_GETCHECK, 0, 0) != BST_CHECKED)
            manager.Click(L"chkPlaySound");
        manager.Click(L"cmdTestSound");
        CHECK(PumpUntil([&] {
            return std::ranges::any_of(ModulesOf(manager.Window()), [](const std::wstring& path) {
                return path.ends_with(L"\\WINMM.DLL");
            });
        }));
        manager.Click(L"cmdRefreshLog");
        PostMessageW(manager.Control(L"cmdSoundFile"), BM_CLICK, 0, 0);
        HWND dialog = nullptr;
        CHECK(PumpUntil([&] {
            dialog = FindWindowW(nullptr, L"Select a Sound File");
            return dialog != nullptr && IsWindowVisible(dialog);
        }));
        CHECK(ProcessOf(dialog) == ProcessOf(manager.Window()));
        PumpFor(500);  // what the dialog loads once it is there
        wchar_t windows[MAX_PATH]{};
        GetWindowsDirectoryW(windows, MAX_PATH);
        for (const std::wstring& path : ModulesOf(manager.Window())) {
            CAPTURE(path);
            CHECK((path == UpperCase(program) || path.starts_with(UpperCase(windows) + L'\\')));
        }
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        CHECK(PumpUntil([&] { return !IsWindow(dialog); }));

        const FileHandle process(OpenProcess(PROCESS_ALL_ACCESS, FALSE, ProcessOf(manager.Window())));
        CHECK_FALSE(LoadLibraryInto(process.Get(), kOnlyHere));
        CHECK(LoadLibraryInto(process.Get(), folder.Path(kOnlyHere)));
    }
    CHECK(Loaded() == std::vector<std::wstring>{});
    // Those that somebody does load tell of it, but for some that Wine replaces by its own.
    for (const std::wstring& library : libraries)
        FreeLibrary(LoadLibraryW(folder.Path(library).c_str()));
    CHECK_FALSE(Loaded().empty());
}
