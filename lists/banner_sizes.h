// The Banners page: the image sizes that the engine hides.
#pragma once

#include "platform/controls/button.h"
#include "platform/controls/control.h"
#include "platform/controls/list_view.h"

// Empties the list and shares its width out to its three columns.
void SetupBannerColumns(ListView& list);

class BannerSizes {
public:
    // The controls outlive this object. markChanged: notes an unsaved change, unless settings are being
    // loaded.
    BannerSizes(ListView& lvwBanners, Button& cmdAddSize, Button& cmdRemoveSize, Event markChanged);
    BannerSizes(const BannerSizes&) = delete;
    BannerSizes& operator=(const BannerSizes&) = delete;

    void cmdAddSize_Click();
    void cmdRemoveSize_Click();
    void lvwBanners_ItemCheck();

private:
    ListView& m_lvwBanners;
    Button& m_cmdAddSize;
    Button& m_cmdRemoveSize;
    const Event m_markChanged;
};
