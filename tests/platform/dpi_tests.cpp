// Resolutions, with and without the functions that newer Windows has for them.
#include "platform/dpi.h"

#include <doctest.h>

#include <set>
#include <string>
#include <string_view>
#include <tuple>

#include "tests/support/import_fake.h"
#include "tests/support/shown_text.h"

namespace {

HWND SomeWindow() {
    return reinterpret_cast<HWND>(0x1234);
}

UINT WINAPI TwiceForSomeWindow(HWND window) {
    return window == SomeWindow() ? 192 : 96;
}

std::tuple<HWND, int, int> behavior;

BOOL WINAPI NoteBehavior(HWND dialog, int mask, int values) {
    behavior = {dialog, mask, values};
    return TRUE;
}

template <class Function>
FARPROC Address(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

}  // namespace

TEST_CASE(
    "where Windows has no function for a resolution, the font and the metrics are the system's, scaled, and "
    "the frame is the system's; a font that Windows does not tell is left alone") {
    std::set<std::string> missing;
    const ImportFake<"GetProcAddress", decltype(&GetProcAddress)> functions{
        "kernel32.dll", [&](HMODULE, LPCSTR name) -> FARPROC {
            missing.insert(name);
            return nullptr;
        }};
    const int twice = 2 * DpiOf(nullptr);
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    REQUIRE(SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0));
    LOGFONTW font{};
    CHECK(MessageFont(twice, font));
    CHECK(font.lfHeight == 2 * metrics.lfMessageFont.lfHeight);
    CHECK(std::wstring(font.lfFaceName) == metrics.lfMessageFont.lfFaceName);
    CHECK(SystemMetric(SM_CXSMICON, twice) == 2 * GetSystemMetrics(SM_CXSMICON));

    RECT frame{10, 20, 30, 40};
    RECT expected = frame;
    AdjustWindowRectEx(&expected, WS_CAPTION, FALSE, WS_EX_CLIENTEDGE);
    AddFrame(frame, WS_CAPTION, WS_EX_CLIENTEDGE, twice);
    CHECK(EqualRect(&frame, &expected));

    const ImportFake<"SystemParametersInfoW", decltype(&SystemParametersInfoW)> parameters{
        "user32.dll", [](UINT, UINT, PVOID, UINT) { return FALSE; }};
    CHECK_FALSE(MessageFont(twice / 2, font));
    CHECK(font.lfHeight == 2 * metrics.lfMessageFont.lfHeight);
    CHECK(missing == std::set<std::string>{"AdjustWindowRectExForDpi", "GetDpiForWindow",
                                           "GetSystemMetricsForDpi", "SystemParametersInfoForDpi"});
}

TEST_CASE("no window, which has no resolution, counts as one of the system's") {
    const HDC screen = GetDC(nullptr);
    CHECK(DpiOf(nullptr) == GetDeviceCaps(screen, LOGPIXELSY));
    ReleaseDC(nullptr, screen);
}

TEST_CASE("icons of the notification area have the resolution of the taskbar") {
    const ImportFake<"FindWindowW", decltype(&FindWindowW)> windows{
        "user32.dll", [](LPCWSTR name, LPCWSTR title) {
            return std::wstring_view(name) == L"Shell_TrayWnd" && title == nullptr ? SomeWindow() : nullptr;
        }};
    const ImportFake<"GetProcAddress", decltype(&GetProcAddress)> functions{
        "kernel32.dll", [](HMODULE, LPCSTR) { return Address(TwiceForSomeWindow); }};
    CHECK(TaskbarDpi() == 192);
}

TEST_CASE("where Windows scales dialogs, it is told to leave all of this one to the program") {
    const ImportFake<"GetProcAddress", decltype(&GetProcAddress)> functions{
        "kernel32.dll", [](HMODULE, LPCSTR name) {
            return std::string_view(name) == "SetDialogDpiChangeBehavior" ? Address(NoteBehavior) : nullptr;
        }};
    ScaleByItself(SomeWindow());
    constexpr int kDisableAll = 1;
    CHECK(behavior == std::tuple(SomeWindow(), kDisableAll, kDisableAll));
}
