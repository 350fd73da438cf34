// Every control of the window: what it is, what it says, where it lies, and how it starts.
#include <doctest.h>

#include <commctrl.h>

#include <map>

#include "tests/support/shown_text.h"
#include "tests/window/other_process.h"
#include "tests/window/test_manager.h"

namespace {

enum class Kind {
    Button,
    CheckBox,
    OptionButton,
    Frame,
    Label,
    Link,
    Image,
    TextBox,
    Spin,
    Combo,
    ListBox,
    ListView,
    Tabs
};

constexpr int kEveryPage = -1;

struct Place {
    const wchar_t* name;
    Kind kind;
    int page;
    const wchar_t* frame;    // the frame that it lies in
    const wchar_t* caption;  // exact, for those that have a fixed one
};

constexpr Place kControls[] = {
    {L"tab", Kind::Tabs, kEveryPage, nullptr, nullptr},
    {L"cmdOK", Kind::Button, kEveryPage, nullptr, L"&OK"},
    {L"cmdApply", Kind::Button, kEveryPage, nullptr, L"&Apply"},
    {L"cmdCancel", Kind::Button, kEveryPage, nullptr, L"&Cancel"},

    {L"fraGeneral", Kind::Frame, 0, nullptr, L"Configuration Manager Startup"},
    {L"optStartup", Kind::OptionButton, 0, L"fraGeneral", L"Startup (always available)"},
    {L"optLoadWithKiller", Kind::OptionButton, 0, L"fraGeneral", L"Show in tray only when IE is running"},
    {L"optLoadFromMenu", Kind::OptionButton, 0, L"fraGeneral", L"Manual (Load from IE toolbar)"},
    {L"fraNotice", Kind::Frame, 0, nullptr, L"Popup Notice"},
    {L"chkPlaySound", Kind::CheckBox, 0, L"fraNotice", L"Play Sound"},
    {L"cmdSoundFile", Kind::Button, 0, L"fraNotice", L"Sound &File"},
    {L"cmdTestSound", Kind::Button, 0, L"fraNotice", L"&Test Sound"},
    {L"chkBeep", Kind::CheckBox, 0, L"fraNotice", L"PC Speaker Beep"},
    {L"fraAdvanced", Kind::Frame, 0, nullptr, L"Advanced"},
    {L"cboPauseKey", Kind::Combo, 0, L"fraAdvanced", nullptr},
    {L"lblPauseKey", Kind::Label, 0, L"fraAdvanced", L"Hot Key to Pause Sentrel"},
    {L"txtSpeed", Kind::TextBox, 0, L"fraAdvanced", nullptr},
    {L"udbSpeed", Kind::Spin, 0, L"fraAdvanced", nullptr},
    {L"Label1", Kind::Label, 0, L"fraAdvanced", L"Speed"},
    {L"Label4", Kind::Label, 0, L"fraAdvanced", L"1 to 10 (fastest)"},
    {L"txtPause", Kind::TextBox, 0, L"fraAdvanced", nullptr},
    {L"udbPause", Kind::Spin, 0, L"fraAdvanced", nullptr},
    {L"Label3", Kind::Label, 0, L"fraAdvanced", L"Pause Button"},
    {L"Label2", Kind::Label, 0, L"fraAdvanced", L"(seconds)"},

    {L"Label5", Kind::Label, 1, nullptr, nullptr},
    {L"lstExclude", Kind::ListBox, 1, nullptr, nullptr},
    {L"cmdAddURL", Kind::Button, 1, nullptr, L"Add &Url"},
    {L"cmdRemoveURL", Kind::Button, 1, nullptr, L"&Remove Url"},

    {L"Label6", Kind::Label, 2, nullptr, L"Closed Windows"},
    {L"lstClosedWnd", Kind::ListBox, 2, nullptr, nullptr},
    {L"cmdRefreshLog", Kind::Button, 2, nullptr, L"&Refresh List"},
    {L"cmdAddTo", Kind::Button, 2, nullptr, L"Add To Exclude &List"},
    {L"cmdClearList", Kind::Button, 2, nullptr, L"&Clear List"},

    {L"Label7", Kind::Label, 3, nullptr, L"Banner Sizes to Remove"},
    {L"lvwBanners", Kind::ListView, 3, nullptr, nullptr},
    {L"cmdAddSize", Kind::Button, 3, nullptr, L"Add &New Size"},
    {L"cmdRemoveSize", Kind::Button, 3, nullptr, L"Re&move Size"},

    {L"Label8", Kind::Label, 4, nullptr, L"Search URLS"},
    {L"lvwSearchURLs", Kind::ListView, 4, nullptr, nullptr},
    {L"cmdAddSearch", Kind::Button, 4, nullptr, L"Add &Search"},
    {L"cmdEditSearch", Kind::Button, 4, nullptr, L"&Edit Search"},
    {L"cmdRemoveSearch", Kind::Button, 4, nullptr, L"Rem&ove Search"},

    {L"Label11", Kind::Label, 5, nullptr, L"Visit:"},
    {L"lblNavSite", Kind::Link, 5, nullptr, nullptr},
    {L"imgLogo", Kind::Image, 5, nullptr, nullptr},
    {L"lblAbout", Kind::Label, 5, nullptr, nullptr},
};

constexpr int kPages = 6;

LONG StyleOf(HWND window) {
    return GetWindowLongW(window, GWL_STYLE);
}

bool Is(HWND window, Kind kind) {
    const std::wstring name = ClassOf(window);
    const LONG type = StyleOf(window) & BS_TYPEMASK;
    switch (kind) {
        case Kind::Button:
            return name == L"Button" && (type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON);
        case Kind::CheckBox:
            return name == L"Button" && type == BS_AUTOCHECKBOX;
        case Kind::OptionButton:
            return name == L"Button" && type == BS_AUTORADIOBUTTON;
        case Kind::Frame:
            return name == L"Button" && type == BS_GROUPBOX;
        case Kind::Label:
            return name == L"Static" && (StyleOf(window) & SS_TYPEMASK) <= SS_RIGHT;
        case Kind::Link:
            return name == L"SysLink";
        case Kind::Image:
            return name == L"Static" && (StyleOf(window) & SS_NOTIFY) != 0;
        case Kind::TextBox:
            return name == L"Edit";
        case Kind::Spin:
            return name == L"msctls_updown32";
        case Kind::Combo:
            return name == L"ComboBox" && (StyleOf(window) & 3) == CBS_DROPDOWNLIST;
        case Kind::ListBox:
            return name == L"ListBox";
        case Kind::ListView:
            return name == L"SysListView32" && (StyleOf(window) & LVS_TYPEMASK) == LVS_REPORT;
        case Kind::Tabs:
            return name == L"SysTabControl32";
    }
    return false;
}

RECT BoundsOf(HWND window) {
    RECT bounds{};
    GetWindowRect(window, &bounds);
    return bounds;
}

bool Contains(const RECT& outer, const RECT& inner) {
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

std::map<std::wstring, HWND> WindowsOf(Manager& manager) {
    std::map<std::wstring, HWND> windows;
    for (const Place& place : kControls)
        windows[place.name] = manager.Control(place.name);
    return windows;
}

bool IsEnabled(Manager& manager, const wchar_t* name) {
    return IsWindowEnabled(manager.Control(name)) != FALSE;
}

}  // namespace

TEST_CASE("every control is of its kind, says exactly what it should, and starts as it should") {
    TestManager manager;
    CHECK(ShownText(manager.Window()) == L"Calvane");
    for (const Place& place : kControls) {
        CAPTURE(std::wstring(place.name));
        const HWND control = manager.Control(place.name);
        REQUIRE(IsWindow(control));
        CHECK(Is(control, place.kind));
        if (place.caption != nullptr) CHECK(ShownText(control) == place.caption);
    }

    const std::wstring example = ShownText(manager.Control(L"Label5"));
    CHECK(example.starts_with(L"Exclude Address  "));
    const size_t bracket = example.find_first_not_of(L' ', 15);
    REQUIRE(bracket != std::wstring::npos);
    CHECK(example[bracket] == L'(');
    CHECK(example.back() == L')');
    CHECK(example.find(L'.', bracket) != std::wstring::npos);
    CHECK(ShownText(manager.Control(L"lblNavSite")).find(L"http://") != std::wstring::npos);
    CHECK(ShownText(manager.Control(L"lblAbout")).find(L"2026") != std::wstring::npos);

    CHECK(Headings(manager.Control(L"lvwBanners")) == Rows{L"Name", L"Width", L"Height"});
    CHECK(Headings(manager.Control(L"lvwSearchURLs")) == Rows{L"Engine Name", L"Engine URL"});
    const LRESULT images = SendMessageW(manager.Control(L"lvwBanners"), LVM_GETIMAGELIST, LVSIL_SMALL, 0);
    CHECK(images != 0);
    CHECK(SendMessageW(manager.Control(L"lvwSearchURLs"), LVM_GETIMAGELIST, LVSIL_SMALL, 0) == images);
    for (const wchar_t* const name : {L"lvwBanners", L"lvwSearchURLs"}) {
        const HWND list = manager.Control(name);
        CHECK((SendMessageW(list, LVM_GETEXTENDEDLISTVIEWSTYLE, 0, 0) & LVS_EX_CHECKBOXES) != 0);
        CHECK((StyleOf(list) & LVS_NOCOLUMNHEADER) == 0);
    }

    const HWND keys = manager.Control(L"cboPauseKey");
    CHECK(ComboItems(keys) == Rows{L"Alt", L"Ctrl", L"Shift", L"F6", L"F7", L"F8", L"F9", L"F10"});
    CHECK((StyleOf(keys) & CBS_SORT) == 0);
    for (WPARAM item = 0; item < 8; ++item)
        CHECK(SendMessageW(keys, CB_GETITEMDATA, item, 0) == 0);

    CHECK(RangeOf(manager.Control(L"udbSpeed")) == SpinRange{1, 10, 1});
    CHECK(RangeOf(manager.Control(L"udbPause")) == SpinRange{1, 30, 1});

    for (const Place& place : kControls) {
        CAPTURE(std::wstring(place.name));
        const std::wstring name = place.name;
        const bool isOff = name == L"cmdApply" || name == L"cmdRemoveURL" || name == L"cmdClearList";
        CHECK(IsEnabled(manager, place.name) == !isOff);
    }
    CHECK(ListBoxRows(manager.Control(L"lstExclude")).empty());
    CHECK(ListBoxRows(manager.Control(L"lstClosedWnd")).empty());
}

TEST_CASE("six tabs lie in one row, and each shows its own controls and no others; frames hold theirs") {
    TestManager manager;
    manager.Instance(formShow);
    const HWND tabs = manager.Control(L"tab");
    CHECK(SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0) == kPages);
    Rows captions;
    for (int tab = 0; tab < kPages; ++tab)
        captions.push_back(TabText(tabs, tab));
    CHECK(captions == Rows{L"Settings", L"Exclude", L"Log", L"Banners", L"Search", L"About"});
    CHECK(SendMessageW(tabs, TCM_GETROWCOUNT, 0, 0) == 1);
    CHECK((StyleOf(tabs) & TCS_MULTILINE) == 0);
    // A row that were too long for the window would have arrows to scroll it.
    CHECK_FALSE(IsWindowVisible(FindWindowExW(tabs, nullptr, L"msctls_updown32", nullptr)));

    const auto windows = WindowsOf(manager);
    for (int page = 0; page < kPages; ++page) {
        SendMessageW(tabs, TCM_SETCURFOCUS, static_cast<WPARAM>(page), 0);
        for (const Place& place : kControls) {
            CAPTURE(page);
            CAPTURE(std::wstring(place.name));
            const bool isShown = IsWindowVisible(windows.at(place.name)) != FALSE;
            CHECK(isShown == (place.page == page || place.page == kEveryPage));
        }
    }

    // How they lie on each other and in the window at any resolution, the scaling suite knows.
    for (const Place& place : kControls) {
        CAPTURE(std::wstring(place.name));
        if (place.frame != nullptr)
            CHECK(Contains(BoundsOf(windows.at(place.frame)), BoundsOf(windows.at(place.name))));
    }
}

TEST_CASE(
    "a spin control stops at its ends and marks each step as a change; typing marks none, and is short for "
    "the pause") {
    TestManager manager;
    struct Spin {
        const wchar_t* box;
        const wchar_t* first;
        const wchar_t* second;
        const wchar_t* last;
    };
    for (const Spin& spin : {Spin{L"txtSpeed", L"1", L"2", L"10"}, Spin{L"txtPause", L"1", L"2", L"30"}}) {
        CAPTURE(std::wstring(spin.box));
        const HWND box = manager.Control(spin.box);
        const auto press = [box](WPARAM key, int times) {
            for (int i = 0; i < times; ++i) {
                SendMessageW(box, WM_KEYDOWN, key, 1);
                SendMessageW(box, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
            }
        };
        press(VK_DOWN, 40);
        CHECK(ShownText(box) == spin.first);
        CHECK(IsEnabled(manager, L"cmdApply"));
        manager.Click(L"cmdApply");
        CHECK_FALSE(IsEnabled(manager, L"cmdApply"));
        press(VK_DOWN, 1);
        CHECK(ShownText(box) == spin.first);
        CHECK_FALSE(IsEnabled(manager, L"cmdApply"));
        press(VK_UP, 1);
        CHECK(ShownText(box) == spin.second);
        press(VK_UP, 40);
        CHECK(ShownText(box) == spin.last);
    }

    manager.Click(L"cmdApply");
    manager.Type(L"txtPause", L"12345");
    CHECK(manager.Text(L"txtPause") == L"123");
    manager.Type(L"txtSpeed", L"12345");
    CHECK(manager.Text(L"txtSpeed") == L"12345");
    CHECK_FALSE(IsEnabled(manager, L"cmdApply"));
}
