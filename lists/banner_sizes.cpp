#include "lists/banner_sizes.h"

#include <utility>

#include "lists/frm_add_banner_size.h"
#include "lists/message.h"
#include "platform/com/variant.h"

namespace {

// The rows at these first positions are the defaults, whatever stands in them.
constexpr int kDefaultSizes = 4;

}  // namespace

void SetupBannerColumns(ListView& list) {
    SetupColumns(list, kBannerLayout);
}

BannerSizes::BannerSizes(BannerControls& controls, Event markChanged)
    : m_controls(controls), m_markChanged(std::move(markChanged)) {
    m_controls.lvwBanners.ItemCheck = [this] { lvwBanners_ItemCheck(); };
    m_controls.cmdAddSize.Click = [this] { cmdAddSize_Click(); };
    m_controls.cmdRemoveSize.Click = [this] { cmdRemoveSize_Click(); };
}

void BannerSizes::cmdAddSize_Click() {
    frmAddBannerSize dialog;
    dialog.ListReference(m_controls.lvwBanners);
    dialog.BannerCount(ToShort(Variant(static_cast<long>(m_controls.lvwBanners.Count() - kDefaultSizes))));
    dialog.ShowModal(GetAncestor(m_controls.cmdAddSize.Hwnd(), GA_ROOT));
    // A cancelled dialog counts as a change too.
    m_markChanged();
}

void BannerSizes::cmdRemoveSize_Click() {
    const int position = m_controls.lvwBanners.Selected();
    if (position == 0) return;
    if (position <= kDefaultSizes) {
        ShowMessage(GetAncestor(m_controls.cmdRemoveSize.Hwnd(), GA_ROOT),
                    L"This default setting cannot be deleted.", MB_ICONINFORMATION);
        return;
    }
    m_controls.lvwBanners.Remove(position);
    m_markChanged();
}

void BannerSizes::lvwBanners_ItemCheck() {
    m_markChanged();
}
