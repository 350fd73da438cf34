// The tray menu's items for the engine, as far as they can be chosen: "+" or "-" for Start, Stop and Pause.
#pragma once

#include <windows.h>

#include <string>

#include "tray/tray_menu.h"

inline constexpr char kDesigned[] = "+++";
inline constexpr char kRunning[] = "-++";
inline constexpr char kStopped[] = "+--";

inline std::string EnabledItems(HMENU menu) {
    std::string enabled;
    for (const UINT item : {mnuStartKiller, mnuStopKiller, mnuPauseKiller})
        enabled += (GetMenuState(menu, item, MF_BYCOMMAND) & MF_GRAYED) == 0 ? '+' : '-';
    return enabled;
}
