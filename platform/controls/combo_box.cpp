#include "platform/controls/combo_box.h"

#include "platform/automation_error.h"

void ComboBox::Text(const std::wstring& text) {
    const LRESULT index =
        Send(CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(text.c_str()));
    if (index == CB_ERR) RaiseError(ErrorNumber::InvalidPropertyValue);
    if (index == Send(CB_GETCURSEL)) return;
    Send(CB_SETCURSEL, static_cast<WPARAM>(index));
    Raise(Click);
}

void ComboBox::OnCommand(WORD code) {
    if (code == CBN_SELCHANGE) Raise(Click);
    if (code == CBN_EDITCHANGE) Raise(Change);
}
