#include "app/config_globals.h"

#include "app/config.h"
#include "app/frm_config.h"

ComPtr<Config> g_oConfig;
ComPtr<frmConfig> g_frmConfig;
LONG g_lngClientCount = 0;
std::wstring g_strLoaderPath;
