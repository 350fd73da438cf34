// The Search page: the search engines and their addresses.
#pragma once

#include <array>

#include "lists/list_layout.h"
#include "lists/resource.h"
#include "platform/controls/button.h"
#include "platform/controls/label.h"
#include "platform/controls/list_view.h"
#include "store/settings_schema.h"

inline constexpr ListColumn kSearchColumns[] = {
    {L"Engine Name", 30, Schema::kName},
    {L"Engine URL", 68, Schema::kURL},
};
inline constexpr ListLayout kSearchLayout{L"lvwSearchURLs", Schema::kSearchKey, kSearchColumns};

struct SearchControls {
    // To be called when the windows of the controls have just been made.
    void SetUp() { AddColumns(lvwSearchURLs, kSearchLayout); }
    void Scale() { ScaleColumns(lvwSearchURLs, kSearchLayout); }

    Label Label8{L"Label8", IDC_LABEL8};
    ListView lvwSearchURLs{kSearchLayout.control, IDC_LVWSEARCHURLS};
    Button cmdAddSearch{L"cmdAddSearch", IDC_CMDADDSEARCH};
    Button cmdEditSearch{L"cmdEditSearch", IDC_CMDEDITSEARCH};
    Button cmdRemoveSearch{L"cmdRemoveSearch", IDC_CMDREMOVESEARCH};
    const std::array<Control*, 5> all{&Label8, &lvwSearchURLs, &cmdAddSearch, &cmdEditSearch,
                                      &cmdRemoveSearch};
};

// Empties the list and shares its width out to its columns.
void SetupSearchColumns(ListView& list);

class SearchAddresses {
public:
    // The controls outlive this object. markChanged: notes an unsaved change, unless settings are being
    // loaded.
    SearchAddresses(SearchControls& controls, Event markChanged);
    SearchAddresses(const SearchAddresses&) = delete;
    SearchAddresses& operator=(const SearchAddresses&) = delete;

    void cmdAddSearch_Click();
    void cmdEditSearch_Click();
    void cmdRemoveSearch_Click();
    void lvwSearchURLs_ItemCheck();

private:
    SearchControls& m_controls;
    const Event m_markChanged;
};
