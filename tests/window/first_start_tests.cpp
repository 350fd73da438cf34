// The first start on an empty store, and on one that somebody else has begun.
#include <doctest.h>

#include <commctrl.h>

#include "tests/support/shown_text.h"
#include "tests/window/other_process.h"
#include "tests/window/stores.h"

namespace {

bool HasKey(const wchar_t* key) {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, key, 0, KEY_READ, &opened) != ERROR_SUCCESS) return false;
    RegCloseKey(opened);
    return true;
}

}  // namespace

TEST_CASE("the first start on an empty store writes the defaults, and nothing else, before it shows them") {
    DeleteSettings();
    CHECK_FALSE(HasKey(L"Software\\Calvane"));
    TestManager manager(true);
    manager.Instance(FormHide);

    CHECK(SettingCount(L"Settings") == 12);
    CHECK(SettingCount(L"Banners") == 16);
    CHECK(SettingCount(L"Search") == 18);
    CHECK_FALSE(HasKey(L"Software\\Calvane\\Exclude"));
    CHECK(Setting(L"Settings", L"First Time") == L"True");
    CHECK(Setting(L"Settings", L"SoundFile").ends_with(L"\\Arc.wav"));
    CHECK(Setting(L"Search", L"1URL") == Setting(L"Search", L"1Url"));

    CHECK(IsChecked(manager, L"chkPlaySound"));
    CHECK_FALSE(IsChecked(manager, L"chkBeep"));
    CHECK(manager.Text(L"txtPause") == L"5");
    CHECK(manager.Text(L"txtSpeed") == L"6");
    CHECK(IsChecked(manager, L"optLoadWithKiller"));
    CHECK(ComboText(manager.Control(L"cboPauseKey")) == L"Shift");
    CHECK(ListViewRows(manager.Control(L"lvwBanners")) ==
          Rows{L"Full Banner|468|60|x", L"Half Banner|234|60", L"Quarter Banner|120|60", L"Button|88|31"});
    CHECK(ListViewRows(manager.Control(L"lvwSearchURLs")).size() == 6);
    CHECK(ListBoxRows(manager.Control(L"lstExclude")).empty());
    CHECK_FALSE(IsWindowEnabled(manager.Control(L"cmdApply")));
}

TEST_CASE("First Time with any content, even none, keeps the defaults away") {
    const Store store;
    TestManager manager(true);
    manager.Instance(FormHide);
    CHECK(SettingCount(L"Settings") == 1);
    CHECK_FALSE(HasKey(L"Software\\Calvane\\Banners"));
    CHECK_FALSE(HasKey(L"Software\\Calvane\\Search"));
    CHECK_FALSE(HasKey(L"Software\\Calvane\\Exclude"));
    CHECK(ListViewRows(manager.Control(L"lvwBanners")).empty());
    CHECK(ListViewRows(manager.Control(L"lvwSearchURLs")).empty());
    // What the designer put there, and the fallbacks.
    CHECK_FALSE(IsChecked(manager, L"chkPlaySound"));
    CHECK_FALSE(IsChecked(manager, L"chkBeep"));
    CHECK(IsChecked(manager, L"optLoadFromMenu"));
    CHECK(ComboText(manager.Control(L"cboPauseKey")) == L"Shift");
    CHECK_FALSE(IsWindowEnabled(manager.Control(L"cmdApply")));
}

TEST_CASE("without First Time the defaults are written over what is there, and further entries survive") {
    DeleteSettings();
    WriteSetting(L"Settings", L"txtPause", L"9000");
    WriteSetting(L"Settings", L"chkBeep", L"1");
    WriteSetting(L"Exclude", L"0", L"http://kept");
    Store::Banner(2, L"Mine", L"1", L"2", L"True");
    Store::Banner(5, L"Fifth", L"50", L"51", L"True");
    TestManager manager(true);
    manager.Instance(FormHide);
    CHECK(Setting(L"Settings", L"txtPause") == L"5000");
    CHECK(Setting(L"Settings", L"chkBeep") == L"0");
    CHECK(SettingCount(L"Banners") == 20);
    const Rows banners = ListViewRows(manager.Control(L"lvwBanners"));
    REQUIRE(banners.size() == 5);
    CHECK(banners[1] == L"Half Banner|234|60");
    CHECK(banners[4] == L"Fifth|50|51|x");
    CHECK(ListBoxRows(manager.Control(L"lstExclude")) == Rows{L"http://kept"});
}
