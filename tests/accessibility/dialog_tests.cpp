// What every page and dialog owes to those who do not see it, or use no mouse.
#include <doctest.h>

#include <commctrl.h>

#include <algorithm>
#include <map>

#include "app/resource.h"
#include "lists/resource.h"
#include "tests/accessibility/surfaces.h"
#include "tests/support/shown_text.h"
#include "tests/support/other_process.h"

namespace {

bool IsNamedByLabel(HWND control) {
    const Role role = RoleOf(control);
    return role == Role::TextBox || role == Role::ListBox || role == Role::ListView || role == Role::Combo;
}

bool IsTabStop(HWND control) {
    return (StyleOf(control) & WS_TABSTOP) != 0;
}

wchar_t AccessKeyOf(HWND control) {
    const std::wstring text = ShownText(control);
    const size_t mark = text.find(L'&');
    return mark == std::wstring::npos ? L'\0' : static_cast<wchar_t>(towupper(text[mark + 1]));
}

std::vector<HWND> ByTabKey(const Surface& surface) {
    std::vector<HWND> visited;
    const HWND first = GetNextDlgTabItem(surface.window, nullptr, FALSE);
    HWND next = first;
    do {
        visited.push_back(next);
        next = GetNextDlgTabItem(surface.window, next, FALSE);
    } while (next != first && visited.size() < 50);
    return visited;
}

}  // namespace

TEST_CASE("a screen reader finds a name for every control") {
    int labels = 0;
    ForEachSurface([&](const Surface& surface) {
        for (size_t i = 0; i < surface.controls.size(); ++i) {
            const HWND control = surface.controls[i];
            CAPTURE(Describe(surface, control));
            if (IsNamedByLabel(control)) {
                // Windows takes the name from the control before, whether or not it is shown.
                const HWND label = GetWindow(control, GW_HWNDPREV);
                REQUIRE(label != nullptr);
                CHECK(RoleOf(label) == Role::Text);
                CHECK_FALSE(CaptionOf(label).empty());
                ++labels;
            } else if (RoleOf(control) == Role::Spin) {
                const auto box = reinterpret_cast<HWND>(SendMessageW(control, UDM_GETBUDDY, 0, 0));
                CHECK(box == GetWindow(control, GW_HWNDPREV));
                CHECK(RoleOf(box) == Role::TextBox);
            } else if (RoleOf(control) != Role::Tabs) {
                CHECK_FALSE(CaptionOf(control).empty());
            }
        }
    });
    CHECK(labels == 3 + 1 + 1 + 1 + 1 + 1 + 2 + 2);
}

TEST_CASE("no access key occurs twice on a page or dialog but for the two that the captions force") {
    Rows shared;
    int keys = 0;
    ForEachSurface([&](const Surface& surface) {
        std::map<wchar_t, std::vector<HWND>> controls;
        for (const HWND control : surface.controls) {
            if (RoleOf(control) == Role::TextBox || RoleOf(control) == Role::Link) continue;
            if (const wchar_t key = AccessKeyOf(control)) controls[key].push_back(control);
        }
        for (const auto& [key, ofKey] : controls) {
            ++keys;
            if (ofKey.size() == 1) continue;
            std::wstring text = surface.name + L' ' + key + L':';
            for (const HWND control : ofKey)
                text += L' ' + ShownText(control);
            shared.push_back(text);
        }
    });
    CHECK(keys > 6 * 3);
    CHECK(shared == Rows{L"Log C: &Clear List &Cancel", L"Search O: Rem&ove Search &OK"});
}

TEST_CASE("the tab key follows the order in which the controls are read") {
    ForEachSurface([](const Surface& surface) {
        CAPTURE(surface.name);
        std::vector<HWND> expected;
        for (const HWND control : surface.controls) {
            if (IsTabStop(control) && IsWindowEnabled(control)) expected.push_back(control);
        }
        CHECK(ByTabKey(surface) == expected);
    });
}

TEST_CASE("nothing is within the mouse's reach alone") {
    std::vector<int> byMouse;
    ForEachSurface([&](const Surface& surface) {
        std::vector<HWND> groups;
        for (const HWND control : surface.controls) {
            CAPTURE(Describe(surface, control));
            switch (RoleOf(control)) {
                case Role::Text:
                case Role::Frame:
                    break;
                case Role::Picture:
                    byMouse.push_back(GetDlgCtrlID(control));
                    break;
                case Role::Spin: {
                    const auto box = reinterpret_cast<HWND>(SendMessageW(control, UDM_GETBUDDY, 0, 0));
                    CHECK((StyleOf(control) & UDS_ARROWKEYS) != 0);
                    CHECK(IsTabStop(box));
                    break;
                }
                case Role::OptionButton:
                    groups.push_back(control);
                    break;
                default:
                    CHECK(IsTabStop(control));
            }
        }
        if (groups.empty()) return;
        // One of them is where the tab key stops; the arrows go round the others, and no further.
        CHECK(std::count_if(groups.begin(), groups.end(), IsTabStop) == 1);
        std::vector<HWND> round;
        for (HWND next = groups.front(); round.size() <= groups.size();) {
            round.push_back(next);
            next = GetNextDlgGroupItem(GetParent(next), next, FALSE);
            if (next == groups.front()) break;
        }
        CHECK(round == groups);
    });
    // The link beside the picture does the same.
    CHECK(byMouse == std::vector<int>{IDC_IMGLOGO});
}

TEST_CASE(
    "a dialog of the lists has a fixed size, a default and a cancel button, the window only the latter") {
    ForEachSurface([](const Surface& surface) {
        CAPTURE(surface.name);
        const HWND cancel = GetDlgItem(surface.window, IDCANCEL);
        REQUIRE(cancel != nullptr);
        CHECK(RoleOf(cancel) == Role::Button);
        CHECK(IsWindowEnabled(cancel));
        const bool isDialog = GetDlgItem(surface.window, IDC_TAB) == nullptr;
        int defaults = 0;
        for (const HWND control : surface.controls) {
            if (RoleOf(control) == Role::Button && (StyleOf(control) & BS_TYPEMASK) == BS_DEFPUSHBUTTON) {
                CHECK(GetDlgCtrlID(control) == IDOK);
                ++defaults;
            }
        }
        CHECK(defaults == (isDialog ? 1 : 0));
        const LRESULT defaultId = SendMessageW(surface.window, DM_GETDEFID, 0, 0);
        if (!isDialog) {
            // Enter is told to the window as this number, which none of its buttons has.
            CHECK(GetDlgItem(surface.window, LOWORD(defaultId)) == nullptr);
            return;
        }
        CHECK((StyleOf(surface.window) & WS_THICKFRAME) == 0);
        CHECK(HIWORD(defaultId) == DC_HASDEFID);
        CHECK(LOWORD(defaultId) == IDOK);
    });
}

TEST_CASE(
    "lists of several columns show their headings and a box to tick, and a choice takes no typed text") {
    int lists = 0;
    ForEachSurface([&](const Surface& surface) {
        for (const HWND control : surface.controls) {
            const Role role = RoleOf(control);
            const DWORD style = StyleOf(control);
            if (role == Role::ListView) {
                CHECK((style & (LVS_TYPEMASK | LVS_NOCOLUMNHEADER)) == LVS_REPORT);
                CHECK((ListView_GetExtendedListViewStyle(control) & LVS_EX_CHECKBOXES) != 0);
                ++lists;
            } else if (role == Role::Combo) {
                CHECK((style & (CBS_DROPDOWNLIST | CBS_SORT)) == CBS_DROPDOWNLIST);
                for (WPARAM item = 0; item < ComboItems(control).size(); ++item)
                    CHECK(SendMessageW(control, CB_GETITEMDATA, item, 0) == 0);
            } else if (role == Role::Tabs) {
                CHECK((style & TCS_MULTILINE) == 0);
            }
        }
    });
    CHECK(lists == 2);
}
