// The configuration window's option controls and lists in a hidden window of their own, with the parts that
// work on them, over throw-away registry roots.
#pragma once

#include <string>
#include <vector>

#include "lists/closed_log.h"
#include "options/change_mark.h"
#include "options/commands.h"
#include "options/general_options.h"
#include "options/popup_notice.h"
#include "options/settings_transfer.h"
#include "platform/controls/button.h"
#include "platform/controls/check_box.h"
#include "platform/controls/combo_box.h"
#include "platform/controls/image_box.h"
#include "platform/controls/link_label.h"
#include "platform/controls/list_box.h"
#include "platform/controls/list_view.h"
#include "platform/controls/option_button.h"
#include "platform/controls/text_box.h"
#include "platform/controls/up_down.h"
#include "tests/support/test_hive.h"
#include "tests/support/test_window.h"

class SettingsWindow {
public:
    SettingsWindow();

    // Sets the state of a button as Windows does it, without a click: so the handlers are passed by.
    static void Check(const Control& button, bool checked) {
        SendMessageW(button.Hwnd(), BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
    }

    // Clicks as a user does.
    static void Click(const Control& button) { SendMessageW(button.Hwnd(), BM_CLICK, 0, 0); }

    // In the Settings key.
    void Store(const std::wstring& value, const std::wstring& text) const;
    std::wstring Stored(const std::wstring& value) const;
    bool HasStored(const std::wstring& value) const;

    std::vector<std::wstring> ExcludeRows() const;

    // A row as "name|sub-item 1|...|x", the x only where the row is checked.
    static std::vector<std::wstring> Rows(const ListView& list, int subItems);

    TestHive machine{HKEY_LOCAL_MACHINE};
    TestHive user{HKEY_CURRENT_USER};

    Button cmdOK{L"cmdOK", 101};
    Button cmdApply{L"cmdApply", 102};
    Button cmdCancel{L"cmdCancel", 103};
    OptionButton optStartup{L"optStartup", 104};
    OptionButton optLoadWithKiller{L"optLoadWithKiller", 105};
    OptionButton optLoadFromMenu{L"optLoadFromMenu", 106};
    CheckBox chkPlaySound{L"chkPlaySound", 107};
    Button cmdSoundFile{L"cmdSoundFile", 108};
    Button cmdTestSound{L"cmdTestSound", 109};
    CheckBox chkBeep{L"chkBeep", 110};
    ComboBox cboPauseKey{L"cboPauseKey", 111};
    TextBox txtSpeed{L"txtSpeed", 112};
    UpDown udbSpeed{L"udbSpeed", 113, txtSpeed, 1, 10};
    TextBox txtPause{L"txtPause", 114};
    UpDown udbPause{L"udbPause", 115, txtPause, 1, 30};
    ListBox lstExclude{L"lstExclude", 116};
    ListBox lstClosedWnd{L"lstClosedWnd", 117};
    Button cmdRefreshLog{L"cmdRefreshLog", 118};
    Button cmdAddTo{L"cmdAddTo", 119};
    Button cmdClearList{L"cmdClearList", 120};
    ListView lvwBanners{L"lvwBanners", 121};
    ListView lvwSearchURLs{L"lvwSearchURLs", 122};
    LinkLabel lblNavSite{L"lblNavSite", 123};
    ImageBox imgLogo{L"imgLogo", 124};

    // The window of the product has none of these: they stand for what it may get one day.
    CheckBox chkExtra{L"chkExtra", 125};
    TextBox txtExtra{L"txtExtra", 126};
    ListBox lstExtra{L"lstExtra", 127};
    ListView lvwExtra{L"lvwExtra", 128};

    std::vector<Control*> controls;
    TestWindow window;

    std::wstring loaderPath = L"C:\\Program Files\\Calvane\\CalvaneConfigLoader.exe";
    std::function<std::wstring()> logFile;
    std::vector<std::string> events;  // "reload" and "hide", as Commands calls them
    Event onReload;
    Event onHide;

    ChangeMark changeMark{cmdApply};
    Event markChanged = [this] { changeMark.MarkChanged(); };
    PopupNotice popupNotice{chkPlaySound, chkBeep, cmdSoundFile, cmdTestSound, markChanged};
    GeneralOptions generalOptions{optStartup, optLoadWithKiller, optLoadFromMenu, cboPauseKey, udbSpeed,
                                  udbPause,   lblNavSite,        imgLogo,         loaderPath,  markChanged};
    ClosedLog closedLog{lstClosedWnd, cmdRefreshLog, cmdAddTo,
                        cmdClearList, lstExclude,    [this] { return logFile(); },
                        markChanged};
    SettingsTransfer transfer{controls, changeMark, popupNotice, generalOptions, closedLog, cboPauseKey};
    Commands commands{cmdOK, cmdApply, cmdCancel, transfer, [this] { Reload(); }, [this] { Hide(); }};

private:
    void Reload();
    void Hide();
};
