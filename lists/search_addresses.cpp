#include "lists/search_addresses.h"

#include <utility>

#include "lists/frm_add_search.h"
#include "platform/com/variant.h"

void SetupSearchColumns(ListView& list) {
    list.Clear();
    // The rest is for the vertical scroll bar.
    const int width = list.Width();
    list.ColumnWidth(1, MulDiv(width, 30, 100));
    list.ColumnWidth(2, MulDiv(width, 68, 100));
}

SearchAddresses::SearchAddresses(ListView& lvwSearchURLs, Button& cmdAddSearch, Button& cmdEditSearch,
                                 Button& cmdRemoveSearch, Event markChanged)
    : m_lvwSearchURLs(lvwSearchURLs),
      m_cmdAddSearch(cmdAddSearch),
      m_cmdEditSearch(cmdEditSearch),
      m_cmdRemoveSearch(cmdRemoveSearch),
      m_markChanged(std::move(markChanged)) {
    m_lvwSearchURLs.ItemCheck = [this] { lvwSearchURLs_ItemCheck(); };
    m_cmdAddSearch.Click = [this] { cmdAddSearch_Click(); };
    m_cmdEditSearch.Click = [this] { cmdEditSearch_Click(); };
    m_cmdRemoveSearch.Click = [this] { cmdRemoveSearch_Click(); };
}

void SearchAddresses::cmdAddSearch_Click() {
    frmAddSearch dialog;
    dialog.ListReference(m_lvwSearchURLs);
    dialog.ShowModal(GetAncestor(m_cmdAddSearch.Hwnd(), GA_ROOT));
    // A cancelled dialog counts as a change too.
    m_markChanged();
}

void SearchAddresses::cmdEditSearch_Click() {
    const int position = m_lvwSearchURLs.Selected();
    if (position == 0) return;
    frmAddSearch dialog;
    dialog.ListReference(m_lvwSearchURLs);
    dialog.SearchName(m_lvwSearchURLs.Text(position));
    dialog.SearchURL(m_lvwSearchURLs.SubItem(position, 1));
    dialog.SearchIndex(TextOf(static_cast<long>(position)));
    dialog.ShowModal(GetAncestor(m_cmdEditSearch.Hwnd(), GA_ROOT));
    m_markChanged();
}

void SearchAddresses::cmdRemoveSearch_Click() {
    const int position = m_lvwSearchURLs.Selected();
    if (position == 0) return;
    m_lvwSearchURLs.Remove(position);
    m_markChanged();
}

void SearchAddresses::lvwSearchURLs_ItemCheck() {
    m_markChanged();
}
