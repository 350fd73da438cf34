// Stores with gaps and with values that nobody expects, loaded and saved again.
#include <doctest.h>

#include <commctrl.h>

#include "platform/text.h"
#include "tests/support/shown_text.h"
#include "tests/window/other_process.h"
#include "tests/window/stores.h"

namespace {

constexpr wchar_t kSettings[] = L"Software\\Calvane\\Settings";

void WriteBytes(const wchar_t* value, DWORD type, const std::string& bytes) {
    RegSetKeyValueA(HKEY_CURRENT_USER, "Software\\Calvane\\Settings", ToAnsi(value).c_str(), type,
                    bytes.data(), static_cast<DWORD>(bytes.size()));
}

void Save(Manager& manager) {
    // Apply is disabled where nothing was changed.
    EnableWindow(manager.Control(L"cmdApply"), TRUE);
    manager.Click(L"cmdApply");
}

}  // namespace

TEST_CASE("gaps end the lists, and what lies behind them is kept or deleted as ever") {
    const Store store;
    for (const wchar_t* const number : {L"0", L"1", L"3"}) {
        WriteSetting(L"Exclude", number, std::wstring(L"http://") + number);
    }
    Store::Banner(1, L"One", L"1", L"10", L"True");
    Store::Banner(2, L"Two", L"2", L"20", L"False");
    Store::Banner(3, L"Three", L"3", L"30", L"True");
    Store::Banner(4, L"Four", L"4", L"40", L"True");
    Store::Banner(5, L"Five", L"5", L"50", nullptr);
    Store::Banner(6, L"Six", L"6", L"60", L"True");
    WriteSetting(L"Search", L"1Name", L"Own");
    WriteSetting(L"Search", L"1uRL", L"http://own/?q=");
    WriteSetting(L"Search", L"1Use", L"True");
    WriteSetting(L"Search", L"3Name", L"Unseen");
    TestManager manager(true);

    CHECK(ListBoxRows(manager.Control(L"lstExclude")) == Rows{L"http://0", L"http://1"});
    Rows banners = ListViewRows(manager.Control(L"lvwBanners"));
    REQUIRE(banners.size() == 5);
    CHECK(banners[0] == L"One|1|10|x");
    CHECK(banners[1] == L"Two|2|20");
    CHECK(banners[3] == L"Four|4|40|x");
    // The width, read last, stands in for the missing use.
    CHECK(banners[4] == L"Five|5|50|x");
    CHECK(ListViewRows(manager.Control(L"lvwSearchURLs")) == Rows{L"Own|http://own/?q=|x"});

    Save(manager);
    CHECK(SettingCount(L"Exclude") == 3);
    CHECK(Setting(L"Exclude", L"0") == L"http://0");
    CHECK(Setting(L"Exclude", L"1") == L"http://1");
    CHECK_FALSE(HasSetting(L"Exclude", L"2"));
    CHECK(Setting(L"Exclude", L"3") == L"http://3");
    // The deletion ended at 5Use; the five rows are written again, now all with a use.
    CHECK(Setting(L"Banners", L"5Name") == L"Five");
    CHECK(Setting(L"Banners", L"5Use") == L"True");
    CHECK(Setting(L"Banners", L"6Name") == L"Six");
    CHECK(SettingCount(L"Banners") == 24);
    CHECK(Setting(L"Search", L"1URL") == L"http://own/?q=");
    CHECK(Setting(L"Search", L"3Name") == L"Unseen");
}

TEST_CASE("times between the steps are shown as they are and saved as steps") {
    const Store store;
    WriteSetting(L"Settings", L"chkPlaySound", L"0");
    WriteSetting(L"Settings", L"chkBeep", L"1");
    WriteSetting(L"Settings", L"txtPause", L"2500");
    WriteSetting(L"Settings", L"txtSpeed", L"1100");
    WriteSetting(L"Settings", L"Startup", L"Manual");
    TestManager manager(true);
    CHECK(manager.Text(L"txtPause") == L"2.5");
    CHECK(manager.Text(L"txtSpeed") == L"6");
    CHECK(IsChecked(manager, L"chkBeep"));
    Save(manager);
    CHECK(Setting(L"Settings", L"txtPause") == L"2000");
    CHECK(Setting(L"Settings", L"txtSpeed") == L"1000");
    CHECK(Setting(L"Settings", L"chkBeep") == L"1");

    for (const auto& [typed, stored] : {std::pair{L"3.5", L"4000"}, {L"0.5", L"0"}, {L"999", L"999000"}}) {
        manager.Type(L"txtPause", typed);
        Save(manager);
        CHECK(Setting(L"Settings", L"txtPause") == stored);
    }
    for (const auto& [typed, stored] :
         {std::pair{L"1", L"2000"}, {L"10", L"200"}, {L"11", L"1000"}, {L"-3", L"1000"}}) {
        manager.Type(L"txtSpeed", typed);
        Save(manager);
        CHECK(Setting(L"Settings", L"txtSpeed") == stored);
    }
    manager.Type(L"txtPause", L"abc");
    manager.Type(L"txtSpeed", L"");
    WriteSetting(L"Settings", L"txtPause", L"untouched");
    WriteSetting(L"Settings", L"txtSpeed", L"untouched");
    Save(manager);
    CHECK(Setting(L"Settings", L"txtPause") == L"untouched");
    CHECK(Setting(L"Settings", L"txtSpeed") == L"untouched");
}

TEST_CASE(
    "a pause key that is none leaves the choice, a missing one chooses Shift, and two notices are the beep") {
    const Store store;
    WriteSetting(L"Settings", L"Pause Key", L"F12");
    WriteSetting(L"Settings", L"chkPlaySound", L"1");
    WriteSetting(L"Settings", L"chkBeep", L"1");
    TestManager manager(true);
    CHECK_FALSE(IsChecked(manager, L"chkPlaySound"));
    CHECK(IsChecked(manager, L"chkBeep"));
    CHECK_FALSE(IsWindowEnabled(manager.Control(L"cmdSoundFile")));
    CHECK_FALSE(IsWindowEnabled(manager.Control(L"cmdTestSound")));
    CHECK_FALSE(IsWindowEnabled(manager.Control(L"cmdApply")));

    // A fresh window has no choice to leave.
    const HWND keys = manager.Control(L"cboPauseKey");
    CHECK(SendMessageW(keys, CB_GETCURSEL, 0, 0) == CB_ERR);
    Save(manager);
    CHECK(Setting(L"Settings", L"Pause Key").empty());
    manager.Click(L"cmdCancel");
    CHECK(SendMessageW(keys, CB_GETCURSEL, 0, 0) == CB_ERR);
    WriteSetting(L"Settings", L"Pause Key", L"F8");
    manager.Click(L"cmdCancel");
    CHECK(ComboText(keys) == L"F8");
    WriteSetting(L"Settings", L"Pause Key", L"F12");
    manager.Click(L"cmdCancel");
    CHECK(ComboText(keys) == L"F8");
    Save(manager);
    CHECK(Setting(L"Settings", L"Pause Key") == L"F8");
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kSettings, L"Pause Key");
    manager.Click(L"cmdCancel");
    CHECK(ComboText(keys) == L"Shift");
}

TEST_CASE("numbers that are too large, of another type or none at all leave their control") {
    const Store store;
    WriteSetting(L"Settings", L"chkPlaySound", L"2");
    WriteSetting(L"Settings", L"chkBeep", L"70000");
    WriteSetting(L"Settings", L"txtPause", L"no number");
    WriteSetting(L"Settings", L"txtSpeed", L"99999999999");
    WriteSetting(L"Settings", L"Startup", L"Sometimes");
    TestManager manager(true);
    CHECK_FALSE(IsChecked(manager, L"chkPlaySound"));
    CHECK_FALSE(IsChecked(manager, L"chkBeep"));
    const std::wstring pause = manager.Text(L"txtPause");
    const std::wstring speed = manager.Text(L"txtSpeed");
    CHECK(pause == L"5");
    CHECK(speed == L"6");
    for (const wchar_t* const name : {L"optStartup", L"optLoadWithKiller", L"optLoadFromMenu"}) {
        CHECK_FALSE(IsChecked(manager, name));
    }

    // Half a number and bytes are passed over.
    WriteBytes(L"chkPlaySound", REG_DWORD, std::string("\1", 1));
    WriteBytes(L"chkBeep", REG_BINARY, std::string("\xFF\0\x80", 3));
    WriteBytes(L"txtPause", REG_DWORD, std::string("\1\0", 2));
    WriteBytes(L"txtSpeed", REG_MULTI_SZ, std::string("a\0b\0\0", 5));
    manager.Click(L"cmdCancel");
    CHECK_FALSE(IsChecked(manager, L"chkPlaySound"));
    CHECK_FALSE(IsChecked(manager, L"chkBeep"));
    CHECK(manager.Text(L"txtPause") == pause);
    CHECK(manager.Text(L"txtSpeed") == speed);

    // A negative or huge time is shown, and saved where it fits.
    WriteSetting(L"Settings", L"txtPause", L"-7000");
    manager.Click(L"cmdCancel");
    CHECK(manager.Text(L"txtPause") == L"-7");
    Save(manager);
    CHECK(Setting(L"Settings", L"txtPause") == L"-7000");
    WriteSetting(L"Settings", L"txtPause", L"9999999999000");
    manager.Click(L"cmdCancel");
    CHECK(manager.Text(L"txtPause") == L"9999999999");
    Save(manager);
    CHECK(Setting(L"Settings", L"txtPause") == L"9999999999000");

    // Numbers stored as numbers are read as such.
    WriteBytes(L"chkPlaySound", REG_DWORD, std::string("\1\0\0\0", 4));
    WriteBytes(L"txtPause", REG_DWORD, std::string("\x10\x27\0\0", 4));
    WriteBytes(L"txtSpeed", REG_DWORD_BIG_ENDIAN, std::string("\0\0\0\xC8", 4));
    manager.Click(L"cmdCancel");
    CHECK(IsChecked(manager, L"chkPlaySound"));
    CHECK(manager.Text(L"txtPause") == L"10");
    CHECK(manager.Text(L"txtSpeed") == L"10");
}

TEST_CASE("texts of 64 KB come through whole") {
    const Store store;
    const std::wstring address = L"http://" + std::wstring(65000, L'a');
    WriteSetting(L"Exclude", L"0", address);
    WriteSetting(L"Search", L"1Name", std::wstring(65000, L'n'));
    WriteSetting(L"Search", L"1URL", address);
    WriteSetting(L"Search", L"1Use", L"True");
    WriteSetting(L"Settings", L"SoundFile", std::wstring(65000, L's'));
    WriteSetting(L"Settings", L"Pause Key", std::wstring(65000, L'k'));
    WriteSetting(L"Settings", L"txtPause", std::wstring(65000, L'9'));
    TestManager manager(true);
    CHECK(ListBoxRows(manager.Control(L"lstExclude")) == Rows{address});
    CHECK(SendMessageW(manager.Control(L"lvwSearchURLs"), LVM_GETITEMCOUNT, 0, 0) == 1);
    DeleteSettings();
    WriteSetting(L"Settings", L"First Time", L"");
    Save(manager);
    CHECK(Setting(L"Exclude", L"0") == address);
    CHECK(Setting(L"Search", L"1Name").size() == 65000);
    CHECK(Setting(L"Search", L"1URL") == address);
    CHECK(Setting(L"Settings", L"SoundFile").size() == 65000);
}

TEST_CASE("after Cancel every control shows the stored values again and Apply stays as it was") {
    DeleteSettings();
    TestManager manager;
    manager.Instance(formShow);
    const Rows banners = ListViewRows(manager.Control(L"lvwBanners"));
    const Rows search = ListViewRows(manager.Control(L"lvwSearchURLs"));

    manager.Click(L"chkBeep");
    manager.Click(L"optStartup");
    manager.Type(L"txtPause", L"29");
    manager.Type(L"txtSpeed", L"2");
    SendMessageW(manager.Control(L"cboPauseKey"), CB_SETCURSEL, 0, 0);
    SendMessageW(manager.Control(L"lstExclude"), LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"http://edited"));
    for (const wchar_t* const name : {L"lvwBanners", L"lvwSearchURLs"}) {
        SendMessageW(manager.Control(name), LVM_DELETEITEM, 0, 0);
    }
    CHECK(IsWindowEnabled(manager.Control(L"cmdApply")));

    manager.Click(L"cmdCancel");
    CHECK_FALSE(IsWindowVisible(manager.Window()));
    manager.Instance(formShow);
    CHECK(IsChecked(manager, L"chkPlaySound"));
    CHECK_FALSE(IsChecked(manager, L"chkBeep"));
    CHECK(IsChecked(manager, L"optLoadWithKiller"));
    CHECK_FALSE(IsChecked(manager, L"optStartup"));
    CHECK(manager.Text(L"txtPause") == L"5");
    CHECK(manager.Text(L"txtSpeed") == L"6");
    CHECK(ComboText(manager.Control(L"cboPauseKey")) == L"Shift");
    CHECK(ListBoxRows(manager.Control(L"lstExclude")).empty());
    CHECK(ListViewRows(manager.Control(L"lvwBanners")) == banners);
    CHECK(ListViewRows(manager.Control(L"lvwSearchURLs")) == search);
    CHECK(IsWindowEnabled(manager.Control(L"cmdApply")));
    CHECK(SettingCount(L"Settings") == 12);
}
