#include "platform/dpi.h"

#include "platform/system_library.h"

namespace {

// Null where the system lacks it.
template <class Function>
Function* FunctionOfUser(const char* name) {
    return FunctionOf<Function>(GetModuleHandleW(L"user32.dll"), name);
}

// The one that all monitors have on earlier systems.
int SystemDpi() noexcept {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi;
}

}  // namespace

int DpiOf(HWND window) noexcept {
    if (auto* const get = FunctionOfUser<UINT WINAPI(HWND)>("GetDpiForWindow")) {
        if (const UINT dpi = get(window); dpi != 0) return static_cast<int>(dpi);
    }
    return SystemDpi();
}

int TaskbarDpi() noexcept {
    return DpiOf(FindWindowW(L"Shell_TrayWnd", nullptr));
}

int SystemMetric(int index, int dpi) noexcept {
    if (auto* const get = FunctionOfUser<int WINAPI(int, UINT)>("GetSystemMetricsForDpi")) {
        return get(index, static_cast<UINT>(dpi));
    }
    return MulDiv(GetSystemMetrics(index), dpi, SystemDpi());
}

bool MessageFont(int dpi, LOGFONTW& font) noexcept {
    using Get = BOOL WINAPI(UINT, UINT, void*, UINT, UINT);

    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    auto* const get = FunctionOfUser<Get>("SystemParametersInfoForDpi");
    if (get != nullptr &&
        get(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0, static_cast<UINT>(dpi))) {
        font = metrics.lfMessageFont;
        return true;
    }
    if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0)) return false;
    font = metrics.lfMessageFont;
    font.lfHeight = MulDiv(font.lfHeight, dpi, SystemDpi());
    return true;
}

void AddFrame(RECT& bounds, DWORD style, DWORD exStyle, int dpi) noexcept {
    using Adjust = BOOL WINAPI(RECT*, DWORD, BOOL, DWORD, UINT);

    if (auto* const adjust = FunctionOfUser<Adjust>("AdjustWindowRectExForDpi")) {
        adjust(&bounds, style, FALSE, exStyle, static_cast<UINT>(dpi));
    } else {
        AdjustWindowRectEx(&bounds, style, FALSE, exStyle);
    }
}

void ScaleByItself(HWND dialog) noexcept {
    constexpr int kDisableAll = 1;  // DDC_DISABLE_ALL
    using Set = BOOL WINAPI(HWND, int, int);

    if (auto* const set = FunctionOfUser<Set>("SetDialogDpiChangeBehavior")) {
        set(dialog, kDisableAll, kDisableAll);
    }
}
