// Libraries that somebody put into the manager's folder.
#include <doctest.h>

#include <windows.h>
#include <tlhelp32.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "platform/handle.h"
#include "platform/text.h"
#include "tests/hardening/image.h"
#include "tests/support/manager.h"
#include "tests/support/message_pump.h"
#include "tests/support/program.h"
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

// What Windows takes from the system's folder whoever asks for it: the manager's imports among the libraries
// of its KnownDLLs list, and what those import plainly in turn. comctl32.dll is in neither, the manager's
// manifest leads to it.
void AddSystemLibrary(const std::string& name, std::set<std::string>& names) {
    wchar_t folder[MAX_PATH]{};
    GetSystemDirectoryW(folder, MAX_PATH);
    const std::wstring path = std::wstring(folder) + L'\\' + FromAnsi(name);
    if (name == "COMCTL32.DLL" || !FileExists(path) || !names.insert(name).second) return;
    for (const std::string& imported : Image(path).libraries)
        AddSystemLibrary(imported, names);
}

std::vector<std::wstring> LibrariesToPlant() {
    std::set<std::string> known;
    for (const std::string& name : Image(ProgramPath()).libraries)
        AddSystemLibrary(name, known);
    // Wine's user32.dll loads themes while it is being loaded itself, before the first instruction of the
    // program.
    if (RunsUnderWine()) known.insert({"UXTHEME.DLL", "MSIMG32.DLL"});
    std::vector<std::wstring> names;
    std::wistringstream words(kLoadedSometime);
    for (std::wstring name; words >> name;) {
        if (!known.contains(ToAnsi(UpperCase(name)))) names.push_back(name);
    }
    return names;
}

// A folder with a program and, beside it, the planted libraries.
struct PlantedFolder {
    PlantedFolder(const std::wstring& original, const wchar_t* name) : program(folder.Path(name)) {
        REQUIRE(CopyFileW(original.c_str(), program.c_str(), TRUE));
        for (const std::wstring& library : libraries)
            REQUIRE(CopyFileW((ServerDirectory() + L"\\planted.dll").c_str(), folder.Path(library).c_str(),
                              TRUE));
    }

    std::vector<std::wstring> Loaded() const {
        std::vector<std::wstring> names;
        for (const std::wstring& library : libraries) {
            if (FileExists(folder.Path(library) + L".loaded")) names.push_back(library);
        }
        return names;
    }

    const TestFolder folder;
    const std::vector<std::wstring> libraries = LibrariesToPlant();
    const std::wstring program;
};

// The manager is registered from another folder meanwhile.
struct RegisteredElsewhere {
    explicit RegisteredElsewhere(const std::wstring& program) {
        REQUIRE(RunProgram(program.c_str(), L"/RegServer") == 0);
    }
    ~RegisteredElsewhere() { CHECK(RunProgram(L"SentrelConfig.exe", L"/RegServer") == 0); }
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

// Windows' own folder is where everything lies but the program itself.
void CheckModules(Manager& manager, const PlantedFolder& planted) {
    wchar_t windows[MAX_PATH]{};
    GetWindowsDirectoryW(windows, MAX_PATH);
    const std::wstring system = UpperCase(windows) + L'\\';
    const std::wstring own = UpperCase(planted.program);
    const std::vector<std::wstring> modules = ModulesOf(manager.Window());
    CHECK(modules.size() > 10);
    CHECK(std::ranges::count(modules, own) == 1);
    for (const std::wstring& path : modules) {
        CAPTURE(ToAnsi(path));
        CHECK((path == own || path.starts_with(system)));
    }
}

}  // namespace

TEST_CASE("a program that takes no care loads each of the planted libraries") {
    const PlantedFolder planted(ServerDirectory() + L"\\unguarded.exe", L"unguarded.exe");
    std::wstring arguments;
    for (const std::wstring& library : planted.libraries)
        arguments += L' ' + library;
    CHECK(RunProgram(planted.program.c_str(), arguments) == 0);
    for (const wchar_t* const library : {L"winmm.dll", L"comctl32.dll", L"propsys.dll"})
        CHECK(FileExists(planted.folder.Path(library)));
    CHECK_FALSE(planted.Loaded().empty());
}

TEST_CASE("the manager loads nothing from its own folder, whatever it does") {
    const PlantedFolder planted(ProgramPath(), L"SentrelConfig.exe");
    REQUIRE(CopyFileW(ProgramPath(L"Arc.wav").c_str(), planted.folder.Path(L"Arc.wav").c_str(), TRUE));
    {
        const RegisteredElsewhere registered(planted.program);
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
        CheckModules(manager, planted);
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        CHECK(PumpUntil([&] { return !IsWindow(dialog); }));
    }
    for (const std::wstring& name : planted.Loaded())
        FAIL_CHECK(ToAnsi(name) << " was loaded");
}
