#include "tests/accessibility/surfaces.h"

#include <commctrl.h>

#include <stdexcept>

#include "lists/frm_add_banner_size.h"
#include "lists/frm_add_search.h"
#include "lists/frm_add_url.h"
#include "platform/text.h"
#include "tests/entry/window_inside.h"
#include "tests/support/other_process.h"

namespace {

void Collect(HWND parent, std::vector<HWND>& controls) {
    for (HWND child = GetWindow(parent, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        if ((StyleOf(child) & WS_VISIBLE) == 0) continue;
        if (ClassOf(child) == L"#32770") {
            Collect(child, controls);
        } else {
            controls.push_back(child);
        }
    }
}

void Visit(const std::function<void(const Surface&)>& visit, HWND window, const std::wstring& name) {
    Surface surface{name, window, {}};
    Collect(window, surface.controls);
    visit(surface);
}

template <class Form>
void VisitDialog(const std::function<void(const Surface&)>& visit) {
    Form form;
    form.Create(nullptr);
    ShowWindow(form.Hwnd(), SW_SHOW);
    Visit(visit, form.Hwnd(), ShownText(form.Hwnd()));
}

}  // namespace

void ForEachSurface(const std::function<void(const Surface& surface)>& visit) {
    {
        InsideWithoutEngine inside;
        inside.Instance(formShow);
        const HWND tabs = GetDlgItem(Window(), IDC_TAB);
        for (int page = 0; page < TabCtrl_GetItemCount(tabs); ++page) {
            TabCtrl_SetCurFocus(tabs, page);
            Visit(visit, Window(), TabText(tabs, page));
        }
    }
    VisitDialog<frmAddUrl>(visit);
    VisitDialog<frmAddBannerSize>(visit);
    VisitDialog<frmAddSearch>(visit);
}

DWORD StyleOf(HWND control) {
    return static_cast<DWORD>(GetWindowLongW(control, GWL_STYLE));
}

RECT BoundsOf(HWND control) {
    RECT bounds{};
    GetWindowRect(control, &bounds);
    return bounds;
}

std::wstring CaptionOf(HWND control) {
    std::wstring text = ShownText(control);
    if (ClassOf(control) != WC_LINK) return text;
    for (const std::wstring_view mark : {L"<a>", L"</a>"}) {
        if (const size_t at = text.find(mark); at != std::wstring::npos) text.erase(at, mark.size());
    }
    return text;
}

Role RoleOf(HWND control) {
    const std::wstring name = ClassOf(control);
    const DWORD style = StyleOf(control);
    if (name == WC_STATICW) return (style & SS_NOTIFY) != 0 ? Role::Picture : Role::Text;
    if (name == WC_BUTTONW) {
        const DWORD type = style & BS_TYPEMASK;
        if (type == BS_GROUPBOX) return Role::Frame;
        if (type == BS_AUTOCHECKBOX) return Role::CheckBox;
        return type == BS_AUTORADIOBUTTON ? Role::OptionButton : Role::Button;
    }
    if (name == WC_EDITW) return Role::TextBox;
    if (name == WC_COMBOBOXW) return Role::Combo;
    if (name == WC_LISTBOXW) return Role::ListBox;
    if (name == WC_LISTVIEWW) return Role::ListView;
    if (name == WC_LINK) return Role::Link;
    if (name == UPDOWN_CLASSW) return Role::Spin;
    if (name == WC_TABCONTROLW) return Role::Tabs;
    throw std::runtime_error("a control of unknown kind: " + ToAnsi(name));
}

std::string NameOf(Role role) {
    constexpr const char* kNames[] = {"Text",     "Picture", "Button",  "CheckBox", "OptionButton",
                                      "Frame",    "Link",    "TextBox", "Spin",     "ListBox",
                                      "ListView", "Combo",   "Tabs"};
    return kNames[static_cast<int>(role)];
}

std::string Describe(const Surface& surface, HWND control) {
    return ToAnsi(surface.name) + ": " + NameOf(RoleOf(control)) + " " +
           std::to_string(GetDlgCtrlID(control)) + " \"" + ToAnsi(CaptionOf(control)) + '"';
}
