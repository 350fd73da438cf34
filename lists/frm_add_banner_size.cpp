#include "lists/frm_add_banner_size.h"

#include <string>

#include "platform/controls/placement.h"
#include "lists/message.h"
#include "platform/com/variant.h"

namespace {

constexpr wchar_t kNamePrefix[] = L"User Banner ";

// Emptying reports a change again: an empty box is left alone.
void EmptyUnlessNumeric(TextBox& box) {
    const std::wstring text = box.Text();
    if (!text.empty() && !IsNumeric(text)) box.Text(L"");
}

}  // namespace

frmAddBannerSize::frmAddBannerSize() : Dialog(IDD_ADD_BANNER_SIZE) {
    m_txtHeight.Change = [this] { txtHeight_Change(); };
    m_txtWidth.KeyUp = [this] { txtWidth_KeyUp(); };
    m_cmdOK.Click = [this] { cmdOK_Click(); };
    m_cmdCancel.Click = [this] { cmdCancel_Click(); };
}

bool frmAddBannerSize::OnInit() {
    CentreOnOwner(Hwnd());
    return true;
}

// The bounds that the messages name are not enforced: of the heights 0 alone is refused, of the widths none.
void frmAddBannerSize::cmdOK_Click() {
    const auto refuse = [this](const wchar_t* message, TextBox& box) {
        ShowMessage(Hwnd(), message, 0);
        box.SetFocus();
    };
    const std::wstring height = m_txtHeight.Text();
    const std::wstring width = m_txtWidth.Text();
    if (!IsNumeric(height)) {
        refuse(L"Height must be a number.", m_txtHeight);
    } else if (!IsNumeric(width)) {
        refuse(L"Width must be a number.", m_txtWidth);
    } else if (ToDouble(Variant(height)) == 0) {
        refuse(L"Height must be a number between 1 and 999.", m_txtHeight);
    } else if (!IsNumeric(width)) {
        refuse(L"Width must be a number between 1 and 999.", m_txtWidth);
    } else {
        AddBannerSizer();
        Close();
    }
}

void frmAddBannerSize::cmdCancel_Click() {
    Close();
}

void frmAddBannerSize::txtHeight_Change() {
    EmptyUnlessNumeric(m_txtHeight);
}

void frmAddBannerSize::txtWidth_KeyUp() {
    EmptyUnlessNumeric(m_txtWidth);
}

// The texts come first: memory that runs out must not leave half a row.
void frmAddBannerSize::AddBannerSizer() {
    const std::wstring width = m_txtWidth.Text();
    const std::wstring height = m_txtHeight.Text();
    const int position = m_lstRef->Add(kNamePrefix + TextOf(static_cast<long>(m_nBanCnt)));
    m_lstRef->Checked(position, true);
    m_lstRef->SubItem(position, 1, width);
    m_lstRef->SubItem(position, 2, height);
}
