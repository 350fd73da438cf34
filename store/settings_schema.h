// The layout of the store: every key, value name and first-run default, written once.
//
// All of it lies under HKEY_CURRENT_USER except the start-up entry. Every value is text of the type
// kTextType, numbers as decimal digits, check boxes as "0" or "1", list flags as "True" or "False".
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace Schema {

inline constexpr long kTextType = REG_SZ;

inline constexpr wchar_t kSettingsKey[] = L"Software\\Calvane\\Settings";
inline constexpr wchar_t kExcludeKey[] = L"Software\\Calvane\\Exclude";
inline constexpr wchar_t kBannersKey[] = L"Software\\Calvane\\Banners";
inline constexpr wchar_t kSearchKey[] = L"Software\\Calvane\\Search";

// Under HKEY_LOCAL_MACHINE; the data is the loader's path.
inline constexpr wchar_t kRunKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
inline constexpr wchar_t kRunValue[] = L"Calvane Config Manager";

// Values of the Settings key. Check boxes and text boxes of the window are stored under their own names.
inline constexpr wchar_t kFirstTime[] = L"First Time";
inline constexpr wchar_t kSoundFile[] = L"SoundFile";
inline constexpr wchar_t kStartup[] = L"Startup";
inline constexpr wchar_t kPauseKey[] = L"Pause Key";
inline constexpr wchar_t kBeep[] = L"chkBeep";
inline constexpr wchar_t kPlaySound[] = L"chkPlaySound";
inline constexpr wchar_t kPause[] = L"txtPause";
inline constexpr wchar_t kSpeed[] = L"txtSpeed";

// What kStartup holds: started with Windows, with the browser, or from the browser's toolbar alone.
inline constexpr wchar_t kStartupMode[] = L"Startup";
inline constexpr wchar_t kRunOnlyMode[] = L"RunOnly";
inline constexpr wchar_t kManualMode[] = L"Manual";

// What kPauseKey can hold, in the order in which the window offers it.
inline constexpr const wchar_t* kPauseKeys[] = {L"Alt", L"Ctrl", L"Shift", L"F6",
                                                L"F7",  L"F8",   L"F9",    L"F10"};
inline constexpr wchar_t kDefaultPauseKey[] = L"Shift";

// The pause times that the window offers, in seconds; kPause holds milliseconds.
inline constexpr int kShortestPause = 1;
inline constexpr int kLongestPause = 30;

// Fields of the numbered lists, behind the entry's number. The Exclude key has none: its values are "0", "1",
// ... kUrl and kURL name the same value, since the registry compares names without regard to case.
inline constexpr wchar_t kName[] = L"Name";
inline constexpr wchar_t kWidth[] = L"Width";
inline constexpr wchar_t kHeight[] = L"Height";
inline constexpr wchar_t kUse[] = L"Use";
inline constexpr wchar_t kUrl[] = L"Url";
inline constexpr wchar_t kURL[] = L"URL";

// "12Name" for 12 and "Name", "0" for 0 and an empty word.
std::wstring Numbered(long n, std::wstring_view word);

struct Setting {
    const wchar_t* name;
    const wchar_t* text;
    bool isInServerDirectory;  // text is the end of a path that begins with the server's directory
};

// In the order of writing.
inline constexpr Setting kOptionDefaults[] = {
    {kBeep, L"0", false},              // beep when a window has been closed
    {kPlaySound, L"1", false},         // play the sound when a window has been closed
    {L"chkStartup", L"1", false},      // never read by this program
    {L"chkStopAds", L"True", false},   // never read by this program
    {L"chkStopPop", L"True", false},   // never read by this program
    {L"chkTray", L"1", false},         // never read by this program
    {kPause, L"5000", false},          // pause time, milliseconds
    {kSpeed, L"1000", false},          // polling interval, milliseconds
    {kSoundFile, L"\\Arc.wav", true},  // path of the sound
};

// Written behind the lists. The presence of kFirstTime says that all defaults are there, so it comes last.
inline constexpr Setting kClosingDefaults[] = {
    {kStartup, kRunOnlyMode, false},
    {kPauseKey, kDefaultPauseKey, false},
    {kFirstTime, L"True", false},
};

struct BannerSize {
    const wchar_t* name;
    long width;   // pixels
    long height;  // pixels
    bool use;
};

inline constexpr BannerSize kBannerDefaults[] = {
    {L"Full Banner", 468, 60, true},
    {L"Half Banner", 234, 60, false},
    {L"Quarter Banner", 120, 60, false},
    {L"Button", 88, 31, false},
};

struct SearchEngine {
    const wchar_t* name;
    const wchar_t* url;  // the query text goes behind its last character
    bool use;
};

inline constexpr SearchEngine kSearchDefaults[] = {
    {L"Yahoo", L"http://search.yahoo.com/bin/search?p=", true},
    {L"Alta Vista", L"http://www.altavista.com/sites/search/web?q=", true},
    {L"MSN", L"http://search.msn.com/results.asp?RS=CHECKED&FORM=MSNH&v=1&q=", true},
    {L"Google", L"http://www.google.com/search?q=", true},
    {L"Teoma", L"http://s.teoma.com/search?q=", true},
    {L"Overture", L"http://www.overture.com/d/search/?type=home&tm=1&Keywords=", true},
};

}  // namespace Schema
