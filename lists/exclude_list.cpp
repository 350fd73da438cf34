#include "lists/exclude_list.h"

#include <utility>

#include "lists/frm_add_url.h"
#include "platform/automation_error.h"

ExcludeList::ExcludeList(ExcludeControls& controls, Event enableApply, Event markChanged)
    : m_controls(controls), m_enableApply(std::move(enableApply)), m_markChanged(std::move(markChanged)) {
    m_controls.lstExclude.Click = [this] { lstExclude_Click(); };
    m_controls.cmdAddURL.Click = [this] { cmdAddURL_Click(); };
    m_controls.cmdRemoveURL.Click = [this] { cmdRemoveURL_Click(); };
}

void ExcludeList::cmdAddURL_Click() {
    frmAddUrl dialog;
    dialog.ListReference(m_controls.lstExclude);
    dialog.ShowModal(GetAncestor(m_controls.cmdAddURL.Hwnd(), GA_ROOT));
    // A cancelled dialog counts as a change too.
    m_markChanged();
}

void ExcludeList::cmdRemoveURL_Click() {
    const int removed = m_controls.lstExclude.ListIndex();
    if (removed != -1) {
        m_controls.lstExclude.RemoveItem(removed);
        const int count = m_controls.lstExclude.ListCount();
        if (count > 0) {
            // The row above the removed one is selected, not the one that moved up into its place.
            ResumeNext([&] { m_controls.lstExclude.ListIndex(removed == 0 ? 0 : removed - 1); });
        }
        // A removal counts even while settings are being loaded.
        m_enableApply();
    }
    if (m_controls.lstExclude.ListCount() == 0) m_controls.cmdRemoveURL.Enabled(false);
}

void ExcludeList::lstExclude_Click() {
    m_controls.cmdRemoveURL.Enabled(m_controls.lstExclude.ListIndex() != -1 &&
                                    m_controls.lstExclude.ListCount() > 0);
}
