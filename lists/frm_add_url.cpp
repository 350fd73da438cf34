#include "lists/frm_add_url.h"

#include <string>
#include <string_view>

#include "platform/controls/placement.h"
#include "lists/is_in_list.h"
#include "lists/message.h"

namespace {

constexpr std::wstring_view kScheme = L"http://";

}  // namespace

frmAddUrl::frmAddUrl() : Dialog(IDD_ADD_URL) {
    m_cmdOK.Click = [this] { cmdOK_Click(); };
    m_cmdCancel.Click = [this] { cmdCancel_Click(); };
}

bool frmAddUrl::OnInit() {
    CentreOnOwner(Hwnd());
    Form_Resize();
    return false;
}

void frmAddUrl::cmdOK_Click() {
    const std::wstring address = m_txtURL.Text();
    if (address.empty()) {
        ShowMessage(Hwnd(), L"Please enter the web site address to exclude.", MB_ICONINFORMATION);
        m_txtURL.SetFocus();
        return;
    }
    if (IsInList(address, *m_lstRef)) {
        ShowMessage(Hwnd(), L"The URL you entered already exists in the list, please enter another",
                    MB_ICONINFORMATION);
        m_txtURL.SetFocus();
        const bool hasScheme = address.find(kScheme) != std::wstring::npos;
        m_txtURL.Select(hasScheme ? static_cast<int>(kScheme.size()) : 0, static_cast<int>(address.size()));
        return;
    }
    m_lstRef->AddItem(address);
    Close();
}

void frmAddUrl::cmdCancel_Click() {
    Close();
}

void frmAddUrl::Form_Resize() {
    m_txtURL.Select(static_cast<int>(m_txtURL.Text().size()), 0);
    m_txtURL.SetFocus();
}
