#pragma once

// TYPELIB resources. The first is the one found under the bare path of the executable.
#define IDR_SENTREL1 1
#define IDR_STANDIN 2

#define IDD_ENGINE 100

#define IDC_STATE 1000
#define IDC_ADDRESS 1001
#define IDC_CLOSE_POPUP 1002
#define IDC_START 1003
#define IDC_STOP 1004
#define IDC_PAUSE 1005

#ifndef RC_INVOKED
inline constexpr int kEngineTypeLibrary = IDR_SENTREL1;
inline constexpr int kControlTypeLibrary = IDR_STANDIN;
#endif
