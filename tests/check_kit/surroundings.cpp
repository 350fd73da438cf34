#include "tests/check_kit/surroundings.h"

#include <windows.h>

#include <iterator>

#include "platform/system_library.h"
#include "platform/text.h"
#include "tests/check_kit/own_programs.h"
#include "tests/support/wine.h"
#include "version.h"

namespace {

std::string Number(long number) {
    return std::to_string(number);
}

// GetVersionEx tells what the manifest asks for.
std::string WindowsVersion() {
    using GetVersion = LONG WINAPI(OSVERSIONINFOW*);
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    if (auto* const get = FunctionOf<GetVersion>(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion"))
        get(&version);
    return Number(static_cast<long>(version.dwMajorVersion)) + '.' +
           Number(static_cast<long>(version.dwMinorVersion)) + '.' +
           Number(static_cast<long>(version.dwBuildNumber)) + ' ' + ToAnsi(version.szCSDVersion);
}

std::string Bits() {
    BOOL isWow64 = FALSE;
    IsWow64Process(GetCurrentProcess(), &isWow64);
    return isWow64 ? "64 bits" : "32 bits";
}

std::string Scale() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return Number(MulDiv(100, dpi, 96)) + " % (" + Number(dpi) + " dpi)";
}

std::string Language() {
    wchar_t name[LOCALE_NAME_MAX_LENGTH]{};
    GetUserDefaultLocaleName(name, static_cast<int>(std::size(name)));
    return ToAnsi(name) + ", code page " + Number(static_cast<long>(GetACP()));
}

bool IsElevated() {
    HANDLE token = nullptr;
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
        GetTokenInformation(token, TokenElevation, &elevation, sizeof(elevation), &size);
        CloseHandle(token);
    }
    return elevation.TokenIsElevated != 0;
}

}  // namespace

std::string Surroundings() {
    std::string text = "Calvane: " CALVANE_VERSION "\nSystem: Windows " + WindowsVersion() + ", " + Bits();
    if (RunsUnderWine()) text += std::string(", as Wine ") + WineVersion() + " plays it";
    text += "\nRegistered: ";
    text +=
        RunsUnderWine() ? "for the machine, since Wine does not find a user's classes" : "for the user alone";
    text += "\nScale: " + Scale() + "\nScreen: " + Number(GetSystemMetrics(SM_CXSCREEN)) + " x " +
            Number(GetSystemMetrics(SM_CYSCREEN)) + ", monitors: " + Number(GetSystemMetrics(SM_CMONITORS)) +
            "\nLanguage: " + Language() + '\n';
    return text;
}

std::string Obstacle() {
    if (!RunsUnderWine() && IsElevated()) {
        return "It would register Calvane for everybody. Start it without \"Run as administrator\".";
    }
    const std::string running = ForeignProgram({L"SentrelConfig.exe", L"SentrelStandin.exe"});
    if (!running.empty()) return running + " runs. Exit Calvane by its icon's menu, then start this again.";
    return {};
}
