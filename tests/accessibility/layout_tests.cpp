// Every control of the window: what it is, what it says, on which page it is, and how it starts. Its place,
// and in which order the controls follow each other, the scaling suite knows.
#include <doctest.h>

#include <commctrl.h>

#include "tests/accessibility/surfaces.h"
#include "tests/entry/window_inside.h"
#include "tests/support/automation.h"
#include "tests/support/other_process.h"
#include "tests/support/shown_text.h"

namespace {

constexpr int kEveryPage = -1;

struct Place {
    const wchar_t* name;
    Role role;
    int page;
    const wchar_t* caption;  // exact, for those that have a fixed one
};

constexpr Place kControls[] = {
    {L"tab", Role::Tabs, kEveryPage, nullptr},
    {L"cmdOK", Role::Button, kEveryPage, L"&OK"},
    {L"cmdApply", Role::Button, kEveryPage, L"&Apply"},
    {L"cmdCancel", Role::Button, kEveryPage, L"&Cancel"},

    {L"fraGeneral", Role::Frame, 0, L"Configuration Manager Startup"},
    {L"optStartup", Role::OptionButton, 0, L"Startup (always available)"},
    {L"optLoadWithKiller", Role::OptionButton, 0, L"Show in tray only when IE is running"},
    {L"optLoadFromMenu", Role::OptionButton, 0, L"Manual (Load from IE toolbar)"},
    {L"fraNotice", Role::Frame, 0, L"Popup Notice"},
    {L"chkPlaySound", Role::CheckBox, 0, L"Play Sound"},
    {L"cmdSoundFile", Role::Button, 0, L"Sound &File"},
    {L"cmdTestSound", Role::Button, 0, L"&Test Sound"},
    {L"chkBeep", Role::CheckBox, 0, L"PC Speaker Beep"},
    {L"fraAdvanced", Role::Frame, 0, L"Advanced"},
    {L"cboPauseKey", Role::Combo, 0, nullptr},
    {L"lblPauseKey", Role::Text, 0, L"Hot Key to Pause Sentrel"},
    {L"txtSpeed", Role::TextBox, 0, nullptr},
    {L"udbSpeed", Role::Spin, 0, nullptr},
    {L"Label1", Role::Text, 0, L"Speed"},
    {L"Label4", Role::Text, 0, L"1 to 10 (fastest)"},
    {L"txtPause", Role::TextBox, 0, nullptr},
    {L"udbPause", Role::Spin, 0, nullptr},
    {L"Label3", Role::Text, 0, L"Pause Button"},
    {L"Label2", Role::Text, 0, L"(seconds)"},

    {L"Label5", Role::Text, 1, L"Exclude Address          (www.example.com)"},
    {L"lstExclude", Role::List, 1, nullptr},
    {L"cmdAddURL", Role::Button, 1, L"Add &Url"},
    {L"cmdRemoveURL", Role::Button, 1, L"&Remove Url"},

    {L"Label6", Role::Text, 2, L"Closed Windows"},
    {L"lstClosedWnd", Role::List, 2, nullptr},
    {L"cmdRefreshLog", Role::Button, 2, L"&Refresh List"},
    {L"cmdAddTo", Role::Button, 2, L"Add To Exclude &List"},
    {L"cmdClearList", Role::Button, 2, L"&Clear List"},

    {L"Label7", Role::Text, 3, L"Banner Sizes to Remove"},
    {L"lvwBanners", Role::List, 3, nullptr},
    {L"cmdAddSize", Role::Button, 3, L"Add &New Size"},
    {L"cmdRemoveSize", Role::Button, 3, L"Re&move Size"},

    {L"Label8", Role::Text, 4, L"Search URLS"},
    {L"lvwSearchURLs", Role::List, 4, nullptr},
    {L"cmdAddSearch", Role::Button, 4, L"Add &Search"},
    {L"cmdEditSearch", Role::Button, 4, L"&Edit Search"},
    {L"cmdRemoveSearch", Role::Button, 4, L"Rem&ove Search"},

    {L"Label11", Role::Text, 5, L"Visit:"},
    {L"lblNavSite", Role::Link, 5, nullptr},
    {L"imgLogo", Role::Picture, 5, nullptr},
    {L"lblAbout", Role::Text, 5, nullptr},
};

struct LoadedWindow : InsideWithoutEngine {
    LoadedWindow() { Instance(formShow); }

    static HWND Named(const wchar_t* name) {
        const Variant handle = Call(static_cast<_frmConfig*>(g_frmConfig.Get()), L"ControlHwnd", {name});
        return reinterpret_cast<HWND>(static_cast<LONG_PTR>(ToLong(handle)));
    }
};

}  // namespace

TEST_CASE_FIXTURE(LoadedWindow,
                  "every control is of its kind, says exactly what it should, and starts as it should") {
    CHECK(ShownText(Window()) == L"Calvane");
    for (const Place& place : kControls) {
        CAPTURE(std::wstring(place.name));
        const HWND hwnd = Named(place.name);
        CHECK(RoleOf(hwnd) == place.role);
        if (place.caption != nullptr) CHECK(ShownText(hwnd) == place.caption);
        const std::wstring name = place.name;
        const bool isOff = name == L"cmdApply" || name == L"cmdRemoveURL" || name == L"cmdClearList";
        CHECK((IsWindowEnabled(hwnd) != FALSE) == !isOff);
    }
    CHECK(ShownText(Named(L"lblNavSite")).find(L"http://") != std::wstring::npos);
    CHECK(ShownText(Named(L"lblAbout")).find(L"2026") != std::wstring::npos);

    CHECK(Headings(Named(L"lvwBanners")) == Rows{L"Name", L"Width", L"Height"});
    CHECK(Headings(Named(L"lvwSearchURLs")) == Rows{L"Engine Name", L"Engine URL"});
    const HIMAGELIST images = ListView_GetImageList(Named(L"lvwBanners"), LVSIL_SMALL);
    CHECK(images != nullptr);
    for (const HWND list : {Named(L"lvwBanners"), Named(L"lvwSearchURLs")}) {
        CHECK(ListView_GetImageList(list, LVSIL_SMALL) == images);
        CHECK((ListView_GetExtendedListViewStyle(list) & LVS_EX_CHECKBOXES) != 0);
        CHECK((StyleOf(list) & (LVS_TYPEMASK | LVS_NOCOLUMNHEADER)) == LVS_REPORT);
    }
    CHECK(ListBoxRows(Named(L"lstExclude")).empty());
    CHECK(ListBoxRows(Named(L"lstClosedWnd")).empty());

    const HWND keys = Named(L"cboPauseKey");
    CHECK(ComboItems(keys) == Rows{L"Alt", L"Ctrl", L"Shift", L"F6", L"F7", L"F8", L"F9", L"F10"});
    CHECK((StyleOf(keys) & (CBS_DROPDOWNLIST | CBS_SORT)) == CBS_DROPDOWNLIST);
    for (WPARAM item = 0; item < 8; ++item)
        CHECK(SendMessageW(keys, CB_GETITEMDATA, item, 0) == 0);
}

TEST_CASE_FIXTURE(LoadedWindow, "six tabs lie in one row, and each shows its own controls and no others") {
    const HWND tabs = Named(L"tab");
    Rows captions;
    for (int page = 0; page < TabCtrl_GetItemCount(tabs); ++page) {
        captions.push_back(TabText(tabs, page));
        TabCtrl_SetCurFocus(tabs, page);
        for (const Place& place : kControls) {
            CAPTURE(page);
            CAPTURE(std::wstring(place.name));
            const bool isShown = IsWindowVisible(Named(place.name)) != FALSE;
            CHECK(isShown == (place.page == page || place.page == kEveryPage));
        }
    }
    CHECK(captions == Rows{L"Settings", L"Exclude", L"Log", L"Banners", L"Search", L"About"});
    CHECK(TabCtrl_GetRowCount(tabs) == 1);
    CHECK((StyleOf(tabs) & TCS_MULTILINE) == 0);
    // A row that were too long for the window would have arrows to scroll it.
    CHECK_FALSE(IsWindowVisible(FindWindowExW(tabs, nullptr, UPDOWN_CLASSW, nullptr)));
}
