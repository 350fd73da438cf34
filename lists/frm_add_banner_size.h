// The dialog that adds a banner size.
#pragma once

#include <array>

#include "lists/resource.h"
#include "platform/controls/button.h"
#include "platform/controls/dialog.h"
#include "platform/controls/list_view.h"
#include "platform/controls/text_box.h"

class frmAddBannerSize final : public Dialog {
public:
    frmAddBannerSize();

    // Both are to be set before the dialog is shown. lstRef receives the new row and stays the caller's;
    // nBanCnt is the number in its name.
    void ListReference(ListView& lstRef) noexcept { m_lstRef = &lstRef; }
    void BannerCount(const short& nBanCnt) noexcept { m_nBanCnt = nBanCnt; }

    // Appends the row that the text boxes describe.
    void AddBannerSizer();

    void cmdOK_Click();
    void cmdCancel_Click();
    void txtHeight_Change();
    void txtWidth_KeyUp();

protected:
    ControlTable Controls() override { return m_controls; }
    bool OnInit() override;

private:
    TextBox m_txtHeight{L"txtHeight", IDC_TXTHEIGHT};
    TextBox m_txtWidth{L"txtWidth", IDC_TXTWIDTH};
    Button m_cmdOK{L"cmdOK", IDOK};
    Button m_cmdCancel{L"cmdCancel", IDCANCEL};
    const std::array<Control*, 4> m_controls{&m_txtHeight, &m_txtWidth, &m_cmdOK, &m_cmdCancel};

    ListView* m_lstRef = nullptr;
    short m_nBanCnt = 0;
};
