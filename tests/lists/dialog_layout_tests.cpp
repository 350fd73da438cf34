// What the dialogs look like: centred on their owner, with nothing cut off, and with a label before each text
// box.
#include <doctest.h>

#include "tests/lists/banner_page.h"
#include "tests/lists/exclude_page.h"
#include "tests/lists/search_page.h"
#include "tests/support/shown_text.h"

namespace {

bool IsClass(HWND hwnd, const wchar_t* name) {
    wchar_t className[32]{};
    GetClassNameW(hwnd, className, 32);
    return lstrcmpiW(className, name) == 0;
}

void CheckLook(HWND dialog) {
    RECT client{};
    GetClientRect(dialog, &client);
    HWND previous = nullptr;
    for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        if (!IsWindowVisible(child)) continue;
        RECT bounds{};
        GetWindowRect(child, &bounds);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&bounds), 2);
        const std::wstring text = TextIn(dialog, GetDlgCtrlID(child));
        CAPTURE(text);
        RECT common{};
        CHECK((IntersectRect(&common, &bounds, &client) && EqualRect(&common, &bounds)));
        if (IsClass(child, L"Edit")) CHECK(IsClass(previous, L"Static"));
        if (IsClass(child, L"Static")) {
            const HDC dc = GetDC(child);
            const HGDIOBJ font =
                SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(child, WM_GETFONT, 0, 0)));
            SIZE size{};
            GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
            SelectObject(dc, font);
            ReleaseDC(child, dc);
            CHECK(size.cx <= bounds.right - bounds.left);
            CHECK(size.cy <= bounds.bottom - bounds.top);
        }
        previous = child;
    }
    CHECK((GetWindowLongW(dialog, GWL_STYLE) & WS_THICKFRAME) == 0);
    CHECK(SendMessageW(dialog, DM_GETDEFID, 0, 0) == MAKELRESULT(IDOK, DC_HASDEFID));
}

void CheckCentred(HWND dialog, HWND owner) {
    RECT bounds{};
    RECT ownerBounds{};
    GetWindowRect(dialog, &bounds);
    GetWindowRect(owner, &ownerBounds);
    CHECK(std::abs((bounds.left + bounds.right) - (ownerBounds.left + ownerBounds.right)) <= 2);
    CHECK(std::abs((bounds.top + bounds.bottom) - (ownerBounds.top + ownerBounds.bottom)) <= 2);
}

void PutInTheMiddle(HWND owner) {
    SetWindowPos(owner, nullptr, 300, 200, 480, 420, SWP_NOZORDER | SWP_NOACTIVATE);
}

DialogScript::Step Look(HWND owner) {
    return [owner](HWND dialog) {
        CheckLook(dialog);
        CheckCentred(dialog, owner);
        ClickButton(dialog, IDCANCEL);
    };
}

}  // namespace

TEST_CASE_FIXTURE(ExcludePage,
                  "the dialog of an address stands in the middle of its window, nothing cut off") {
    PutInTheMiddle(window.Hwnd());
    const DialogScript script({Look(window.Hwnd())});
    Click(cmdAddURL);
}

TEST_CASE_FIXTURE(BannerPage, "the dialog of a size stands in the middle of its window, nothing cut off") {
    PutInTheMiddle(window.Hwnd());
    const DialogScript script({Look(window.Hwnd())});
    Click(cmdAddSize);
}

TEST_CASE_FIXTURE(SearchPage, "the dialog of an engine stands in the middle of its window, nothing cut off") {
    PutInTheMiddle(window.Hwnd());
    const DialogScript script({Look(window.Hwnd())});
    Click(cmdAddSearch);
}

TEST_CASE_FIXTURE(SearchPage, "a dialog stays on the screen when its window is at the edge") {
    const int farLeft = -400;
    SetWindowPos(window.Hwnd(), nullptr, farLeft, GetSystemMetrics(SM_CYSCREEN) - 20, 480, 420,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    const DialogScript script({[](HWND dialog) {
        RECT bounds{};
        GetWindowRect(dialog, &bounds);
        RECT work{};
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
        CHECK(bounds.left >= work.left);
        CHECK(bounds.top >= work.top);
        CHECK(bounds.right <= work.right);
        CHECK(bounds.bottom <= work.bottom);
        ClickButton(dialog, IDCANCEL);
    }});
    Click(cmdAddSearch);
}
