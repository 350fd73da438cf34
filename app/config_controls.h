// Every control of the configuration window, under its fixed name.
#pragma once

#include <array>

#include "app/resource.h"
#include "platform/controls/button.h"
#include "platform/controls/check_box.h"
#include "platform/controls/combo_box.h"
#include "platform/controls/image_box.h"
#include "platform/controls/label.h"
#include "platform/controls/link_label.h"
#include "platform/controls/list_box.h"
#include "platform/controls/list_view.h"
#include "platform/controls/option_button.h"
#include "platform/controls/tab_strip.h"
#include "platform/controls/text_box.h"
#include "platform/controls/up_down.h"
#include "store/settings_schema.h"

class ConfigControls {
public:
    ConfigControls() = default;
    ConfigControls(const ConfigControls&) = delete;
    ConfigControls& operator=(const ConfigControls&) = delete;

    // All of them in the window's control order, the order in which settings are loaded and saved.
    ControlTable All() const noexcept { return m_all; }

    // What the designer would have typed into the property sheets: the tabs; then items, columns, limits,
    // first texts. Each is called when the windows of the controls it is about have just been made.
    void DesignTabs();
    void Design();

    TabStrip tab{L"tab", IDC_TAB};
    Button cmdOK{L"cmdOK", IDC_CMDOK};
    Button cmdApply{L"cmdApply", IDC_CMDAPPLY};
    Button cmdCancel{L"cmdCancel", IDCANCEL};

    Label fraGeneral{L"fraGeneral", IDC_FRAGENERAL, ControlKind::Frame};
    OptionButton optStartup{L"optStartup", IDC_OPTSTARTUP};
    OptionButton optLoadWithKiller{L"optLoadWithKiller", IDC_OPTLOADWITHKILLER};
    OptionButton optLoadFromMenu{L"optLoadFromMenu", IDC_OPTLOADFROMMENU};
    Label fraNotice{L"fraNotice", IDC_FRANOTICE, ControlKind::Frame};
    CheckBox chkPlaySound{L"chkPlaySound", IDC_CHKPLAYSOUND};
    Button cmdSoundFile{L"cmdSoundFile", IDC_CMDSOUNDFILE};
    Button cmdTestSound{L"cmdTestSound", IDC_CMDTESTSOUND};
    CheckBox chkBeep{L"chkBeep", IDC_CHKBEEP};
    Label fraAdvanced{L"fraAdvanced", IDC_FRAADVANCED, ControlKind::Frame};
    Label lblPauseKey{L"lblPauseKey", IDC_LBLPAUSEKEY};
    ComboBox cboPauseKey{L"cboPauseKey", IDC_CBOPAUSEKEY};
    Label Label1{L"Label1", IDC_LABEL1};
    TextBox txtSpeed{L"txtSpeed", IDC_TXTSPEED};
    UpDown udbSpeed{L"udbSpeed", IDC_UDBSPEED, txtSpeed, 1, 10};
    Label Label4{L"Label4", IDC_LABEL4};
    Label Label3{L"Label3", IDC_LABEL3};
    TextBox txtPause{L"txtPause", IDC_TXTPAUSE};
    UpDown udbPause{L"udbPause", IDC_UDBPAUSE, txtPause, Schema::kShortestPause, Schema::kLongestPause};
    Label Label2{L"Label2", IDC_LABEL2};

    Label Label5{L"Label5", IDC_LABEL5};
    ListBox lstExclude{L"lstExclude", IDC_LSTEXCLUDE};
    Button cmdAddURL{L"cmdAddURL", IDC_CMDADDURL};
    Button cmdRemoveURL{L"cmdRemoveURL", IDC_CMDREMOVEURL};

    Label Label6{L"Label6", IDC_LABEL6};
    ListBox lstClosedWnd{L"lstClosedWnd", IDC_LSTCLOSEDWND};
    Button cmdRefreshLog{L"cmdRefreshLog", IDC_CMDREFRESHLOG};
    Button cmdAddTo{L"cmdAddTo", IDC_CMDADDTO};
    Button cmdClearList{L"cmdClearList", IDC_CMDCLEARLIST};

    Label Label7{L"Label7", IDC_LABEL7};
    ListView lvwBanners{L"lvwBanners", IDC_LVWBANNERS};
    Button cmdAddSize{L"cmdAddSize", IDC_CMDADDSIZE};
    Button cmdRemoveSize{L"cmdRemoveSize", IDC_CMDREMOVESIZE};

    Label Label8{L"Label8", IDC_LABEL8};
    ListView lvwSearchURLs{L"lvwSearchURLs", IDC_LVWSEARCHURLS};
    Button cmdAddSearch{L"cmdAddSearch", IDC_CMDADDSEARCH};
    Button cmdEditSearch{L"cmdEditSearch", IDC_CMDEDITSEARCH};
    Button cmdRemoveSearch{L"cmdRemoveSearch", IDC_CMDREMOVESEARCH};

    Label Label11{L"Label11", IDC_LABEL11};
    LinkLabel lblNavSite{L"lblNavSite", IDC_LBLNAVSITE};
    ImageBox imgLogo{L"imgLogo", IDC_IMGLOGO};
    Label lblAbout{L"lblAbout", IDC_LBLABOUT};

private:
    const std::array<Control*, 46> m_all{
        &tab,           &cmdOK,           &cmdApply,          &cmdCancel,
        &fraGeneral,    &optStartup,      &optLoadWithKiller, &optLoadFromMenu,
        &fraNotice,     &chkPlaySound,    &cmdSoundFile,      &cmdTestSound,
        &chkBeep,       &fraAdvanced,     &lblPauseKey,       &cboPauseKey,
        &Label1,        &txtSpeed,        &udbSpeed,          &Label4,
        &Label3,        &txtPause,        &udbPause,          &Label2,
        &Label5,        &lstExclude,      &cmdAddURL,         &cmdRemoveURL,
        &Label6,        &lstClosedWnd,    &cmdRefreshLog,     &cmdAddTo,
        &cmdClearList,  &Label7,          &lvwBanners,        &cmdAddSize,
        &cmdRemoveSize, &Label8,          &lvwSearchURLs,     &cmdAddSearch,
        &cmdEditSearch, &cmdRemoveSearch, &Label11,           &lblNavSite,
        &imgLogo,       &lblAbout};
};
