// What lies outside the manager, played by the test: the engine, the shell, other programs' pictures, the
// timers, the user in dialogs and menus. Each call that the manager makes of it can let one piece of work in.
#pragma once

#include <windows.h>
#include <shellapi.h>
#include <commdlg.h>

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "tests/engine_control/fake_engine.h"
#include "tests/pairs/clock.h"
#include "tests/support/import_patch.h"
#include "tests/support/sound_patch.h"
#include "tests/tray_icon/fake_picture_box.h"

// Before the one who is called has done anything, or when the answer is there and the caller has not got it.
enum class Moment { BeforeReply, AfterReply };

// One at a time.
class Outside {
public:
    Outside();
    Outside(const Outside&) = delete;
    Outside& operator=(const Outside&) = delete;
    ~Outside();

    // Lets work in at the next call of this name, once. Names: those of FakeEngine, "Unadvise"; "Picture";
    // "NIM_ADD", "NIM_MODIFY", "NIM_DELETE"; "Dialog", "MessageBox", "FileDialog", "Menu".
    void LetIn(const char* call, Moment moment, std::function<void()> work);

    static bool IsEngineCall(std::string_view call);

    // Whether the call came, and with it the work.
    bool HasComeIn() const noexcept { return !m_work; }
    void LetNothingIn() noexcept { m_work = nullptr; }

    // A picture box of another program, born with one reference.
    ComPtr<FakePictureBox> MakePictureBox();
    int pictureBoxes = 0;  // how many there are

    FakeEngine engine;
    Clock clock;

    // The icons that the shell has.
    std::set<std::pair<HWND, UINT>> icons;
    size_t mostIcons = 0;  // at any time
    bool shellIsBusy = false;

    UINT chosen = 0;  // in the next menu
    int menus = 0;    // shown so far

private:
    void Reach(const char* call, Moment moment);

    static BOOL WINAPI Notify(DWORD action, NOTIFYICONDATAA* data);
    BOOL Answer(DWORD action, const NOTIFYICONDATAA& data);
    static INT_PTR WINAPI ShowDialog(HINSTANCE instance, LPCWSTR resource, HWND owner, DLGPROC procedure,
                                     LPARAM parameter);
    static int WINAPI ShowBox(HWND owner, LPCWSTR text, LPCWSTR title, UINT type);
    static BOOL WINAPI ShowOpen(OPENFILENAMEW* dialog);
    static BOOL WINAPI ShowMenu(HMENU menu, UINT flags, int x, int y, HWND owner, LPTPMPARAMS area);
    static LRESULT CALLBACK HelperProcedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    static HANDLE WINAPI LoadPicture(HINSTANCE, LPCWSTR, UINT, int, int, UINT);
    static HINSTANCE WINAPI Execute(HWND, LPCSTR, LPCSTR, LPCSTR, LPCSTR, INT);
    static BOOL WINAPI Beep(UINT) { return TRUE; }
    static BOOL WINAPI Play(LPCSTR, UINT) { return TRUE; }

    std::string m_call;
    Moment m_moment = Moment::BeforeReply;
    std::function<void()> m_work;

    // Gets a message in the loop of the dialog that comes up, as the user's clicks come.
    HWND m_helper = nullptr;

    const ImportPatch m_notify{"shell32.dll", "Shell_NotifyIconA", &Notify};
    const ImportPatch m_dialog{"user32.dll", "DialogBoxParamW", &ShowDialog};
    const ImportPatch m_box{"user32.dll", "MessageBoxW", &ShowBox};
    const ImportPatch m_open{"comdlg32.dll", "GetOpenFileNameW", &ShowOpen};
    const ImportPatch m_menu{"user32.dll", "TrackPopupMenuEx", &ShowMenu};
    const ImportPatch m_load{"user32.dll", "LoadImageW", &LoadPicture};
    const ImportPatch m_execute{"shell32.dll", "ShellExecuteA", &Execute};
    const ImportPatch m_beep{"user32.dll", "MessageBeep", &Beep};
    const SoundPatch m_play{&Play};
};
