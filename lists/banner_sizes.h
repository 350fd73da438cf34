// The Banners page: the image sizes that the engine hides.
#pragma once

#include <array>

#include "lists/list_layout.h"
#include "lists/resource.h"
#include "platform/controls/button.h"
#include "platform/controls/label.h"
#include "platform/controls/list_view.h"
#include "store/settings_schema.h"

inline constexpr ListColumn kBannerColumns[] = {
    {L"Name", 50, Schema::kName},
    {L"Width", 24, Schema::kWidth},
    {L"Height", 24, Schema::kHeight},
};
inline constexpr ListLayout kBannerLayout{L"lvwBanners", Schema::kBannersKey, kBannerColumns};

struct BannerControls {
    // To be called when the windows of the controls have just been made.
    void SetUp() { AddColumns(lvwBanners, kBannerLayout); }
    void Scale() { ScaleColumns(lvwBanners, kBannerLayout); }

    Label Label7{L"Label7", IDC_LABEL7};
    ListView lvwBanners{kBannerLayout.control, IDC_LVWBANNERS};
    Button cmdAddSize{L"cmdAddSize", IDC_CMDADDSIZE};
    Button cmdRemoveSize{L"cmdRemoveSize", IDC_CMDREMOVESIZE};
    const std::array<Control*, 4> all{&Label7, &lvwBanners, &cmdAddSize, &cmdRemoveSize};
};

// Empties the list and shares its width out to its columns.
void SetupBannerColumns(ListView& list);

class BannerSizes {
public:
    // The controls outlive this object. markChanged: notes an unsaved change, unless settings are being
    // loaded.
    BannerSizes(BannerControls& controls, Event markChanged);
    BannerSizes(const BannerSizes&) = delete;
    BannerSizes& operator=(const BannerSizes&) = delete;

    void cmdAddSize_Click();
    void cmdRemoveSize_Click();
    void lvwBanners_ItemCheck();

private:
    BannerControls& m_controls;
    const Event m_markChanged;
};
