// Where dialogs appear, and what their controls do with keys, the focus and the user's choice.
#include <doctest.h>

#include <windows.h>

#include <string>

#include "platform/controls/access_keys.h"
#include "platform/controls/button.h"
#include "platform/controls/combo_box.h"
#include "platform/controls/placement.h"
#include "platform/controls/tab_strip.h"
#include "tests/support/test_window.h"

namespace {

// A hidden window without a frame: it gets exactly the place that it asks for.
struct Window {
    Window(RECT bounds, HWND owner)
        : hwnd(CreateWindowExW(WS_EX_TOOLWINDOW, L"STATIC", L"", WS_POPUP, bounds.left, bounds.top,
                               bounds.right - bounds.left, bounds.bottom - bounds.top, owner, nullptr,
                               nullptr, nullptr)) {}
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    ~Window() { DestroyWindow(hwnd); }

    const HWND hwnd;
};

struct Buttons {
    ~Buttons() { DestroyWindow(dialog); }

    HWND Add(const wchar_t* caption, const wchar_t* windowClass = L"BUTTON", DWORD style = WS_VISIBLE) const {
        return CreateWindowExW(0, windowClass, caption, WS_CHILD | WS_TABSTOP | style, 0, 0, 50, 20, dialog,
                               nullptr, nullptr, nullptr);
    }

    const HWND dialog = CreateWindowExW(0, L"#32770", L"", WS_POPUP | WS_VISIBLE, 0, 0, 300, 100, nullptr,
                                        nullptr, nullptr, nullptr);
};

}  // namespace

TEST_CASE("a dialog stands in the middle of its owner, but on the screen, or shows its upper left corner") {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromPoint({}, MONITOR_DEFAULTTOPRIMARY), &monitor);
    const RECT work = monitor.rcWork;
    const LONG x = (work.left + work.right) / 2;
    const LONG y = (work.top + work.bottom) / 2;
    const SIZE tooLarge{work.right - work.left + 50, work.bottom - work.top + 50};
    struct Row {
        std::string what;
        RECT owner;
        LONG RECT::*edge;  // of the dialog
        LONG place;
        SIZE size{200, 120};
    };
    const Row rows[] = {
        {"across the middle", {300, 200, 700, 500}, &RECT::left, 400},
        {"down the middle", {300, 200, 700, 500}, &RECT::top, 290},
        {"the left edge", {work.left, y - 20, work.left + 40, y + 20}, &RECT::left, work.left},
        {"the right edge", {work.right - 40, y - 20, work.right, y + 20}, &RECT::right, work.right},
        {"the upper edge", {x - 20, work.top, x + 20, work.top + 40}, &RECT::top, work.top},
        {"the lower edge", {x - 20, work.bottom - 40, x + 20, work.bottom}, &RECT::bottom, work.bottom},
        {"too wide", {300, 200, 400, 300}, &RECT::left, work.left, tooLarge},
        {"too high", {300, 200, 400, 300}, &RECT::top, work.top, tooLarge},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        const Window owner(row.owner, nullptr);
        const Window dialog({0, 0, row.size.cx, row.size.cy}, owner.hwnd);
        CentreOnOwner(dialog.hwnd);
        RECT bounds{};
        GetWindowRect(dialog.hwnd, &bounds);
        CHECK(bounds.*row.edge == row.place);
        CHECK(bounds.right - bounds.left == row.size.cx);
        CHECK(bounds.bottom - bounds.top == row.size.cy);
    }
}

TEST_CASE_FIXTURE(Buttons, "the focus goes round the buttons that share an access key, whatever its case") {
    const HWND first = Add(L"&Clear");
    Add(L"&OK");
    const HWND second = Add(L"Dis&card");
    const HWND third = Add(L"This && that: &Close");
    SetFocus(second);
    for (const HWND next : {third, first, second, third}) {
        CHECK(FocusNextOfAccessKey(dialog, next == first ? L'C' : L'c'));
        CHECK(GetFocus() == next);
    }
}

TEST_CASE_FIXTURE(Buttons, "an access key of one button, or of none, is left to the dialog manager") {
    const HWND other = Add(L"&Other");
    Add(L"&Clear");
    Add(L"&Cancel", L"BUTTON", 0);
    Add(L"&Close", L"BUTTON", WS_VISIBLE | WS_DISABLED);
    Add(L"&Copy", L"EDIT");
    Add(L"R&&&D");
    Add(L"R&&c");
    Add(L"none&");
    SetFocus(other);
    for (const wchar_t key : {L'c', L'o', L'd', L'&', L'x'}) {
        CAPTURE(key);
        CHECK_FALSE(FocusNextOfAccessKey(dialog, key));
        CHECK(GetFocus() == other);
    }
}

TEST_CASE("a control that is disabled gives the focus to the next one, and only then") {
    Button apply(L"apply", 100);
    Button cancel(L"cancel", 101);
    TestWindow window({&apply, &cancel});
    ShowWindow(window.Hwnd(), SW_SHOW);
    SetFocus(apply.Hwnd());
    REQUIRE(GetFocus() == apply.Hwnd());
    apply.Enabled(true);
    cancel.Enabled(false);
    CHECK(GetFocus() == apply.Hwnd());
    cancel.Enabled(true);
    apply.Enabled(false);
    CHECK(GetFocus() == cancel.Hwnd());
}

TEST_CASE("the controls of a dialog that has gone have no window") {
    Button apply(L"apply", 100);
    { TestWindow window({&apply}); }
    CHECK(apply.Hwnd() == nullptr);
}

TEST_CASE("a combo box raises its click for a choice, and not for being focused, opened or closed") {
    ComboBox box(L"box", 100);
    TestWindow window({&box});
    int clicks = 0;
    box.Click = [&] { ++clicks; };
    const auto notify = [&](int code) {
        SendMessageW(window.Hwnd(), WM_COMMAND, MAKEWPARAM(box.Id(), code),
                     reinterpret_cast<LPARAM>(box.Hwnd()));
    };
    for (const int code : {CBN_SETFOCUS, CBN_DROPDOWN, CBN_SELENDOK, CBN_SELENDCANCEL, CBN_CLOSEUP,
                           CBN_KILLFOCUS, CBN_DBLCLK, CBN_EDITCHANGE, CBN_EDITUPDATE}) {
        CAPTURE(code);
        notify(code);
        CHECK(clicks == 0);
    }
    notify(CBN_SELCHANGE);
    CHECK(clicks == 1);
}

TEST_CASE("a notification is its control's, and nobody's where number or window is another's") {
    TabStrip tab(L"tab", 100);
    TestWindow window({&tab});
    int changes = 0;
    tab.Change = [&] { ++changes; };
    const auto notify = [&](HWND from, int id) {
        const NMHDR header{from, static_cast<UINT_PTR>(id), static_cast<UINT>(TCN_SELCHANGE)};
        SendMessageW(window.Hwnd(), WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
    };
    notify(window.Hwnd(), tab.Id());
    notify(tab.Hwnd(), tab.Id() + 1);
    CHECK(changes == 0);
    notify(tab.Hwnd(), tab.Id());
    CHECK(changes == 1);
}
