// What every page and dialog owes to those who do not see it, or use no mouse.
#include <doctest.h>

#include <commctrl.h>

#include <algorithm>
#include <map>

#include "app/resource.h"
#include "tests/accessibility/surfaces.h"
#include "tests/support/other_process.h"
#include "tests/support/shown_text.h"
#include "version.h"

namespace {

bool IsTabStop(HWND control) {
    return (StyleOf(control) & WS_TABSTOP) != 0;
}

// Windows takes the name of such a control from the one before, whether or not that is shown.
bool IsNamedByLabel(Role role) {
    return role == Role::TextBox || role == Role::ListBox || role == Role::ListView || role == Role::Combo;
}

bool NeedsTabStop(Role role) {
    return IsNamedByLabel(role) || role == Role::Button || role == Role::CheckBox || role == Role::Link ||
           role == Role::Tabs;
}

wchar_t AccessKeyOf(HWND control) {
    const std::wstring text = ShownText(control);
    const size_t mark = text.find(L'&');
    return mark == std::wstring::npos ? L'\0' : static_cast<wchar_t>(towupper(text[mark + 1]));
}

// The controls from the first one on, as step leads from one to the next, until it comes round.
template <class Step>
std::vector<HWND> Round(HWND first, Step step) {
    std::vector<HWND> visited{first};
    for (HWND next = step(first); next != first && visited.size() < 50; next = step(next))
        visited.push_back(next);
    return visited;
}

void CheckControl(HWND control) {
    const Role role = RoleOf(control);
    const DWORD style = StyleOf(control);
    if (IsNamedByLabel(role)) {
        const HWND label = GetWindow(control, GW_HWNDPREV);
        REQUIRE(label != nullptr);
        CHECK(RoleOf(label) == Role::Text);
        CHECK_FALSE(CaptionOf(label).empty());
    } else if (role != Role::Spin && role != Role::Tabs) {
        CHECK_FALSE(CaptionOf(control).empty());
    }
    if (NeedsTabStop(role)) CHECK(IsTabStop(control));

    if (role == Role::Spin) {
        const auto box = reinterpret_cast<HWND>(SendMessageW(control, UDM_GETBUDDY, 0, 0));
        CHECK(box == GetWindow(control, GW_HWNDPREV));
        CHECK(RoleOf(box) == Role::TextBox);
        CHECK((style & UDS_ARROWKEYS) != 0);
    } else if (role == Role::Button) {
        CHECK(((style & BS_TYPEMASK) == BS_DEFPUSHBUTTON) == (GetDlgCtrlID(control) == IDOK));
    } else if (role == Role::Picture) {
        // The link beside it does the same.
        CHECK(GetDlgCtrlID(control) == IDC_IMGLOGO);
    } else if (role == Role::ListView) {
        CHECK((style & (LVS_TYPEMASK | LVS_NOCOLUMNHEADER)) == LVS_REPORT);
        CHECK((ListView_GetExtendedListViewStyle(control) & LVS_EX_CHECKBOXES) != 0);
    } else if (role == Role::Combo) {
        CHECK((style & (CBS_DROPDOWNLIST | CBS_SORT)) == CBS_DROPDOWNLIST);
        for (WPARAM item = 0; item < ComboItems(control).size(); ++item)
            CHECK(SendMessageW(control, CB_GETITEMDATA, item, 0) == 0);
    } else if (role == Role::Tabs) {
        CHECK((style & TCS_MULTILINE) == 0);
    }
}

}  // namespace

TEST_CASE(
    "a screen reader finds a name for every control, none is within the mouse's reach alone, OK of a dialog "
    "is its default button, lists show headings and a box to tick, and a choice takes no typed text") {
    ForEachSurface([](const Surface& surface) {
        for (const HWND control : surface.controls) {
            CAPTURE(Describe(surface, control));
            CheckControl(control);
        }
    });
}

TEST_CASE("every page and dialog says what it is to say, in the order in which it is read") {
    const std::wstring frame = L"|&OK|&Cancel|&Apply";
    const Rows wanted{
        L"Settings|Configuration Manager Startup|Startup (always available)"
        L"|Show in tray only when IE is running|Manual (Load from IE toolbar)|Popup Notice|Play Sound"
        L"|Sound &File|&Test Sound|PC Speaker Beep|Advanced|Hot Key to Pause Sentrel"
        L"|Alt|Ctrl|Shift|F6|F7|F8|F9|F10|Speed|1 to 10 (fastest)|Pause Button|(seconds)" +
            frame,
        L"Exclude|Exclude Address          (www.example.com)|Add &Url|&Remove Url" + frame,
        L"Log|Closed Windows|&Refresh List|Add To Exclude &List|&Clear List" + frame,
        L"Banners|Banner Sizes to Remove|Name|Width|Height|Add &New Size|Re&move Size" + frame,
        L"Search|Search URLS|Engine Name|Engine URL|Add &Search|&Edit Search|Rem&ove Search" + frame,
        L"About|Calvane|Visit:|http://"
        L"www.calvane.example|Version " CALVANE_VERSION L"\n\u00a9 2026 Calvane. All rights reserved." +
            frame,
        L"Add Web Site URL|OK|Web Site Address to Exclude|Cancel",
        L"New Banner Height and Width|Adding a size will hide images and tables of this size.|Height:|Width:"
        L"|OK|Cancel",
        L"Add Search Address|Name:|Address:|OK|Cancel"};
    Rows said;
    ForEachSurface([&](const Surface& surface) {
        std::wstring& texts = said.emplace_back(surface.name);
        for (const HWND control : surface.controls) {
            for (const Rows& items : {ComboItems(control), Headings(control)}) {
                for (const std::wstring& item : items)
                    texts += L'|' + item;
            }
            const std::wstring caption = CaptionOf(control);
            if (!IsNamedByLabel(RoleOf(control)) && !caption.empty()) texts += L'|' + caption;
        }
    });
    CHECK(said == wanted);
}

TEST_CASE("no access key occurs twice on a page or dialog but for the two that the captions force") {
    Rows shared;
    ForEachSurface([&](const Surface& surface) {
        std::map<wchar_t, Rows> captions;
        for (const HWND control : surface.controls) {
            if (RoleOf(control) == Role::TextBox || RoleOf(control) == Role::Link) continue;
            if (const wchar_t key = AccessKeyOf(control)) captions[key].push_back(ShownText(control));
        }
        for (const auto& [key, ofKey] : captions) {
            if (ofKey.size() == 1) continue;
            shared.push_back(surface.name + L' ' + key);
            shared.insert(shared.end(), ofKey.begin(), ofKey.end());
        }
    });
    CHECK(shared == Rows{L"Log C", L"&Clear List", L"&Cancel", L"Search O", L"Rem&ove Search", L"&OK"});
}

TEST_CASE(
    "the tab key follows the order in which the controls are read; it stops at one option button, and the "
    "arrows go round all of them, and no further") {
    ForEachSurface([](const Surface& surface) {
        CAPTURE(surface.name);
        std::vector<HWND> stops;
        std::vector<HWND> options;
        for (const HWND control : surface.controls) {
            if (IsTabStop(control) && IsWindowEnabled(control)) stops.push_back(control);
            if (RoleOf(control) == Role::OptionButton) options.push_back(control);
        }
        CHECK(Round(GetNextDlgTabItem(surface.window, nullptr, FALSE), [&](HWND control) {
                  return GetNextDlgTabItem(surface.window, control, FALSE);
              }) == stops);
        if (options.empty()) return;
        CHECK(std::ranges::count_if(options, IsTabStop) == 1);
        CHECK(Round(options.front(), [](HWND control) {
                  return GetNextDlgGroupItem(GetParent(control), control, FALSE);
              }) == options);
    });
}
