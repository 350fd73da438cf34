// What the whole process shares. The window handle that the tray's hook compares with, g_lngConfigHwnd, is
// declared beside the hook.
#pragma once

#include <windows.h>

#include <string>

#include "platform/com/com_ptr.h"

class Config;
class frmConfig;

// The one Config that every client gets; empty until the first ConfigInstance.
extern ComPtr<Config> g_oConfig;

// The one configuration window; made by Config's initialisation.
extern ComPtr<frmConfig> g_frmConfig;

// ConfigInstance calls minus ReleaseConfig calls. Kept, but nothing is decided by it.
extern LONG g_lngClientCount;

// Full path of the program that starts the manager with Windows.
extern std::wstring g_strLoaderPath;
