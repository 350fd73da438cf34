// Numbers of the manager's resources: its icons, and the frame of its window. Those of the pages lie with
// their pages.
#pragma once

#include "lists/resource.h"
#include "options/resource.h"

#define IDI_CALVANE 1
#define IDI_TRAY_REST 10
#define IDI_TRAY_0 11
#define IDI_TRAY_1 12
#define IDI_TRAY_2 13
#define IDI_LIST_BANNER 14
#define IDI_LIST_SEARCH 15

#define IDD_CONFIG 100
#define IDC_TAB 1000
