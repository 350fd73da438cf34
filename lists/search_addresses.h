// The Search page: the search engines and their addresses.
#pragma once

#include "platform/controls/button.h"
#include "platform/controls/control.h"
#include "platform/controls/list_view.h"

// Empties the list and shares its width out to its two columns.
void SetupSearchColumns(ListView& list);

class SearchAddresses {
public:
    // The controls outlive this object. markChanged: notes an unsaved change, unless settings are being
    // loaded.
    SearchAddresses(ListView& lvwSearchURLs, Button& cmdAddSearch, Button& cmdEditSearch,
                    Button& cmdRemoveSearch, Event markChanged);
    SearchAddresses(const SearchAddresses&) = delete;
    SearchAddresses& operator=(const SearchAddresses&) = delete;

    void cmdAddSearch_Click();
    void cmdEditSearch_Click();
    void cmdRemoveSearch_Click();
    void lvwSearchURLs_ItemCheck();

private:
    ListView& m_lvwSearchURLs;
    Button& m_cmdAddSearch;
    Button& m_cmdEditSearch;
    Button& m_cmdRemoveSearch;
    const Event m_markChanged;
};
