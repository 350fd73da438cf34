// The dialog that adds an address to the exclude list.
#pragma once

#include <array>

#include "lists/resource.h"
#include "platform/controls/button.h"
#include "platform/controls/dialog.h"
#include "platform/controls/list_box.h"
#include "platform/controls/text_box.h"

class frmAddUrl final : public Dialog {
public:
    frmAddUrl();
    ~frmAddUrl() override { Form_Terminate(); }

    // The list that is searched for duplicates and receives the address as its last row. To be set before the
    // dialog is shown; stays the caller's.
    void ListReference(ListBox& lstRef) noexcept { m_lstRef = &lstRef; }

    void cmdOK_Click();
    void cmdCancel_Click();
    void Form_Resize();
    void Form_Terminate() noexcept { m_lstRef = nullptr; }

protected:
    ControlTable Controls() override { return m_controls; }
    bool OnInit() override;

private:
    Button m_cmdOK{L"cmdOK", IDOK};
    TextBox m_txtURL{L"txtURL", IDC_TXTURL};
    Button m_cmdCancel{L"cmdCancel", IDCANCEL};
    const std::array<Control*, 3> m_controls{&m_cmdOK, &m_txtURL, &m_cmdCancel};

    ListBox* m_lstRef = nullptr;
};
