// The dialog that adds or edits a search engine.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "lists/resource.h"
#include "platform/controls/button.h"
#include "platform/controls/dialog.h"
#include "platform/controls/list_view.h"
#include "platform/controls/text_box.h"

class frmAddSearch final : public Dialog {
public:
    frmAddSearch();

    // To be set before the dialog is shown. lstRef is the list to change and stays the caller's. The texts
    // replace the initial ones of the text boxes; sIndex is the position of the row to edit, "0" for a new
    // row.
    void ListReference(ListView& lstRef) noexcept { m_lstRef = &lstRef; }
    void SearchName(const std::wstring& sName) { m_sName = sName; }
    void SearchURL(const std::wstring& sURL) { m_sURL = sURL; }
    void SearchIndex(const std::wstring& sIndex) { m_sIndex = sIndex; }

    // Appends the row that the text boxes describe, or changes the row that txtIndex names.
    void AddSearcher();
    void ModSearcher();

    void cmdOK_Click();
    void cmdCancel_Click();

protected:
    ControlTable Controls() override { return m_controls; }
    bool OnInit() override;

private:
    TextBox m_txtName{L"txtName", IDC_TXTNAME};
    TextBox m_txtURL{L"txtURL", IDC_TXTURL};
    TextBox m_txtIndex{L"txtIndex", IDC_TXTINDEX};
    Button m_cmdOK{L"cmdOK", IDOK};
    Button m_cmdCancel{L"cmdCancel", IDCANCEL};
    const std::array<Control*, 5> m_controls{&m_txtName, &m_txtURL, &m_txtIndex, &m_cmdOK, &m_cmdCancel};

    ListView* m_lstRef = nullptr;
    std::optional<std::wstring> m_sName;
    std::optional<std::wstring> m_sURL;
    std::optional<std::wstring> m_sIndex;
};
