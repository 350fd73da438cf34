// Numbers of the Settings and About pages, and of the buttons that every page has below it.
#pragma once

#include "lists/resource.h"  // IDC_LABEL1

#define IDD_PAGE_SETTINGS 101
#define IDD_PAGE_ABOUT 106

#define IDG_LOGO_96 20
#define IDG_LOGO_120 21
#define IDG_LOGO_144 22
#define IDG_LOGO_192 23

/* cmdOK must not be IDOK (1): the dialog manager presses IDOK on Enter wherever there is no default button.
   cmdCancel is IDCANCEL (2), which Esc presses. */
#define IDC_CMDOK 1001
#define IDC_CMDAPPLY 1002

#define IDC_FRAGENERAL 1010
#define IDC_OPTSTARTUP 1011
#define IDC_OPTLOADWITHKILLER 1012
#define IDC_OPTLOADFROMMENU 1013
#define IDC_FRANOTICE 1014
#define IDC_CHKPLAYSOUND 1015
#define IDC_CMDSOUNDFILE 1016
#define IDC_CMDTESTSOUND 1017
#define IDC_CHKBEEP 1018
#define IDC_FRAADVANCED 1019
#define IDC_LBLPAUSEKEY 1020
#define IDC_CBOPAUSEKEY 1021
#define IDC_TXTSPEED 1023
#define IDC_UDBSPEED 1024
#define IDC_LABEL4 1025
#define IDC_LABEL3 1026
#define IDC_TXTPAUSE 1027
#define IDC_UDBPAUSE 1028
#define IDC_LABEL2 1029

#define IDC_LABEL11 1080
#define IDC_LBLNAVSITE 1081
#define IDC_IMGLOGO 1082
#define IDC_LBLABOUT 1083
