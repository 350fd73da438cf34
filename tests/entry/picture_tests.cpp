// The pictures that the window holds for the tray icon.
#include <doctest.h>

#include <set>
#include <string>

#include "tray/picture_box.h"
#include "tests/entry/inside.h"

namespace {

constexpr LONG kSide = 16;

// The colours of an icon, which must have the side of a tray picture.
std::string ColoursOf(HICON icon) {
    ICONINFO info{};
    REQUIRE(GetIconInfo(icon, &info));
    CHECK(info.fIcon);
    BITMAP bitmap{};
    GetObjectW(info.hbmColor, sizeof(bitmap), &bitmap);
    CHECK(bitmap.bmWidth == kSide);
    CHECK(bitmap.bmHeight == kSide);
    std::string colours(static_cast<size_t>(bitmap.bmWidthBytes * bitmap.bmHeight), '\0');
    CHECK(GetBitmapBits(info.hbmColor, static_cast<LONG>(colours.size()), colours.data()) ==
          static_cast<LONG>(colours.size()));
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    return colours;
}

}  // namespace

TEST_CASE_FIXTURE(InsideWithoutEngine,
                  "the resting picture and the three frames are icons of 16 pixels, and no two look alike") {
    REQUIRE(GetSystemMetrics(SM_CXSMICON) == kSide);
    Instance(FormHide);
    std::set<std::string> pictures;
    ComPtr<IDispatch> box;
    REQUIRE(g_frmConfig->get_picShellIcon(&box) == S_OK);
    pictures.insert(ColoursOf(IconOf(box.Get())));
    for (short frame = 0; frame < 3; ++frame) {
        CAPTURE(frame);
        REQUIRE(g_frmConfig->get_picTray(frame, box.ReleaseAndGetAddressOf()) == S_OK);
        pictures.insert(ColoursOf(IconOf(box.Get())));
    }
    CHECK(pictures.size() == 4);
}
