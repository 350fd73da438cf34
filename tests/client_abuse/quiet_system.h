// While it exists, the program plays nothing, opens no dialogs of the system, and has no icons.
#pragma once

#include <windows.h>
#include <commdlg.h>
#include <shellapi.h>

#include "tests/support/message_recorder.h"
#include "tests/support/sound_patch.h"

class QuietSystem {
    const MessageRecorder m_messages;
    const SoundPatch m_play{[](LPCSTR, UINT) { return TRUE; }};
    const ImportFake<"MessageBeep", decltype(&MessageBeep)> m_beep{"user32.dll", [](UINT) { return TRUE; }};
    const ImportFake<"Shell_NotifyIconA", decltype(&Shell_NotifyIconA)> m_notify{
        "shell32.dll", [](DWORD, NOTIFYICONDATAA*) { return TRUE; }};
    const ImportFake<"GetOpenFileNameW", decltype(&GetOpenFileNameW)> m_open{
        "comdlg32.dll", [](OPENFILENAMEW*) { return FALSE; }};
    const ImportFake<"ShellExecuteA", decltype(&ShellExecuteA)> m_execute{
        "shell32.dll",
        [](HWND, LPCSTR, LPCSTR, LPCSTR, LPCSTR, INT) { return reinterpret_cast<HINSTANCE>(33); }};
};
