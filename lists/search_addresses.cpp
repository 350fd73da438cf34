#include "lists/search_addresses.h"

#include <utility>

#include "lists/frm_add_search.h"
#include "platform/com/variant.h"

void SetupSearchColumns(ListView& list) {
    SetupColumns(list, kSearchLayout);
}

SearchAddresses::SearchAddresses(SearchControls& controls, Event markChanged)
    : m_controls(controls), m_markChanged(std::move(markChanged)) {
    m_controls.lvwSearchURLs.ItemCheck = [this] { lvwSearchURLs_ItemCheck(); };
    m_controls.cmdAddSearch.Click = [this] { cmdAddSearch_Click(); };
    m_controls.cmdEditSearch.Click = [this] { cmdEditSearch_Click(); };
    m_controls.cmdRemoveSearch.Click = [this] { cmdRemoveSearch_Click(); };
}

void SearchAddresses::cmdAddSearch_Click() {
    frmAddSearch dialog;
    dialog.ListReference(m_controls.lvwSearchURLs);
    dialog.ShowModal(GetAncestor(m_controls.cmdAddSearch.Hwnd(), GA_ROOT));
    // A cancelled dialog counts as a change too.
    m_markChanged();
}

void SearchAddresses::cmdEditSearch_Click() {
    const int position = m_controls.lvwSearchURLs.Selected();
    if (position == 0) return;
    frmAddSearch dialog;
    dialog.ListReference(m_controls.lvwSearchURLs);
    dialog.SearchName(m_controls.lvwSearchURLs.Text(position));
    dialog.SearchURL(m_controls.lvwSearchURLs.SubItem(position, 1));
    dialog.SearchIndex(TextOf(static_cast<long>(position)));
    dialog.ShowModal(GetAncestor(m_controls.cmdEditSearch.Hwnd(), GA_ROOT));
    m_markChanged();
}

void SearchAddresses::cmdRemoveSearch_Click() {
    const int position = m_controls.lvwSearchURLs.Selected();
    if (position == 0) return;
    m_controls.lvwSearchURLs.Remove(position);
    m_markChanged();
}

void SearchAddresses::lvwSearchURLs_ItemCheck() {
    m_markChanged();
}
