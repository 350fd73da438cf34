#include "lists/frm_add_search.h"

#include "platform/controls/placement.h"
#include "lists/message.h"
#include "platform/com/variant.h"

frmAddSearch::frmAddSearch() : Dialog(IDD_ADD_SEARCH) {
    m_cmdOK.Click = [this] { cmdOK_Click(); };
    m_cmdCancel.Click = [this] { cmdCancel_Click(); };
}

bool frmAddSearch::OnInit() {
    CentreOnOwner(Hwnd());
    if (m_sName) m_txtName.Text(*m_sName);
    if (m_sURL) m_txtURL.Text(*m_sURL);
    if (m_sIndex) m_txtIndex.Text(*m_sIndex);
    return true;
}

void frmAddSearch::cmdOK_Click() {
    if (m_txtURL.Text().empty()) {
        ShowMessage(Hwnd(), L"You need an URL.", 0);
        m_txtURL.SetFocus();
        return;
    }
    if (m_txtName.Text().empty()) {
        ShowMessage(Hwnd(), L"You need a Name.", 0);
        m_txtName.SetFocus();
        return;
    }
    if (ToDouble(Variant(m_txtIndex.Text())) != 0) {
        ModSearcher();
    } else {
        AddSearcher();
    }
    Close();
}

void frmAddSearch::cmdCancel_Click() {
    Close();
}

// The texts come first: memory that runs out must not leave half a row.
void frmAddSearch::AddSearcher() {
    const std::wstring name = m_txtName.Text();
    const std::wstring address = m_txtURL.Text();
    const int position = m_lstRef->Add(name);
    m_lstRef->Checked(position, true);
    m_lstRef->SubItem(position, 1, address);
}

void frmAddSearch::ModSearcher() {
    const short position = ToShort(Variant(m_txtIndex.Text()));
    const std::wstring name = m_txtName.Text();
    const std::wstring address = m_txtURL.Text();
    m_lstRef->Text(position, name);
    m_lstRef->SubItem(position, 1, address);
}
