// The Settings page: its controls. General options and pop-up notice share it.
#pragma once

#include <array>

#include "options/resource.h"
#include "platform/controls/button.h"
#include "platform/controls/check_box.h"
#include "platform/controls/combo_box.h"
#include "platform/controls/label.h"
#include "platform/controls/option_button.h"
#include "platform/controls/text_box.h"
#include "platform/controls/up_down.h"
#include "store/settings_schema.h"

struct SettingsControls {
    // Fills the combo box and the text boxes. To be called when the windows of the controls have just been
    // made.
    void SetUp();

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
    const std::array<Control*, 20> all{&fraGeneral, &optStartup,   &optLoadWithKiller, &optLoadFromMenu,
                                       &fraNotice,  &chkPlaySound, &cmdSoundFile,      &cmdTestSound,
                                       &chkBeep,    &fraAdvanced,  &lblPauseKey,       &cboPauseKey,
                                       &Label1,     &txtSpeed,     &udbSpeed,          &Label4,
                                       &Label3,     &txtPause,     &udbPause,          &Label2};
};
