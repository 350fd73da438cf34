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
    list.Clear();
    // The rest is for the vertical scroll bar.
    const int width = list.Width();
    list.ColumnWidth(1, MulDiv(width, 50, 100));
    list.ColumnWidth(2, MulDiv(width, 24, 100));
    list.ColumnWidth(3, MulDiv(width, 24, 100));
}

BannerSizes::BannerSizes(ListView& lvwBanners, Button& cmdAddSize, Button& cmdRemoveSize, Event markChanged)
    : m_lvwBanners(lvwBanners),
      m_cmdAddSize(cmdAddSize),
      m_cmdRemoveSize(cmdRemoveSize),
      m_markChanged(std::move(markChanged)) {
    m_lvwBanners.ItemCheck = [this] { lvwBanners_ItemCheck(); };
    m_cmdAddSize.Click = [this] { cmdAddSize_Click(); };
    m_cmdRemoveSize.Click = [this] { cmdRemoveSize_Click(); };
}

void BannerSizes::cmdAddSize_Click() {
    frmAddBannerSize dialog;
    dialog.ListReference(m_lvwBanners);
    dialog.BannerCount(ToShort(Variant(static_cast<long>(m_lvwBanners.Count() - kDefaultSizes))));
    dialog.ShowModal(GetAncestor(m_cmdAddSize.Hwnd(), GA_ROOT));
    // A cancelled dialog counts as a change too.
    m_markChanged();
}

void BannerSizes::cmdRemoveSize_Click() {
    const int position = m_lvwBanners.Selected();
    if (position == 0) return;
    if (position <= kDefaultSizes) {
        ShowMessage(GetAncestor(m_cmdRemoveSize.Hwnd(), GA_ROOT), L"This default setting cannot be deleted.",
                    MB_ICONINFORMATION);
        return;
    }
    m_lvwBanners.Remove(position);
    m_markChanged();
}

void BannerSizes::lvwBanners_ItemCheck() {
    m_markChanged();
}
