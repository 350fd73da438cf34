// While it exists, the program plays nothing, opens no dialogs of the system, and has no icons.
#pragma once

#include <windows.h>
#include <commdlg.h>
#include <shellapi.h>

#include "tests/support/import_patch.h"
#include "tests/support/message_recorder.h"
#include "tests/support/sound_patch.h"

class QuietSystem {
public:
    QuietSystem() = default;
    QuietSystem(const QuietSystem&) = delete;
    QuietSystem& operator=(const QuietSystem&) = delete;

private:
    static BOOL WINAPI Notify(DWORD, NOTIFYICONDATAA*) { return TRUE; }
    static BOOL WINAPI Open(OPENFILENAMEW*) { return FALSE; }
    static HINSTANCE WINAPI Execute(HWND, LPCSTR, LPCSTR, LPCSTR, LPCSTR, INT) {
        return reinterpret_cast<HINSTANCE>(33);
    }
    static BOOL WINAPI Beep(UINT) { return TRUE; }
    static BOOL WINAPI Play(LPCSTR, UINT) { return TRUE; }

    const MessageRecorder m_messages;
    const ImportPatch m_notify{"shell32.dll", "Shell_NotifyIconA", &Notify};
    const ImportPatch m_open{"comdlg32.dll", "GetOpenFileNameW", &Open};
    const ImportPatch m_execute{"shell32.dll", "ShellExecuteA", &Execute};
    const ImportPatch m_beep{"user32.dll", "MessageBeep", &Beep};
    const SoundPatch m_play{&Play};
};
