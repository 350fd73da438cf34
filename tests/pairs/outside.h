// What lies outside the manager, played by the test: the engine, the shell, other programs' pictures, the
// timers, the user in dialogs and menus. Each call that the manager makes of it can let one piece of work in.
#pragma once

#include <windows.h>
#include <shellapi.h>
#include <commdlg.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/client_abuse/quiet_system.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/pairs/clock.h"
#include "tests/support/import_fake.h"
#include "tests/support/other_process.h"
#include "tests/tray_icon/fake_picture_box.h"

// Before the one who is called has done anything, or when the answer is there and the caller has not got it.
enum class Moment { BeforeReply, AfterReply };

// One at a time.
class Outside {
public:
    Outside() {
        s_current = this;
        for (const char* const call :
             {"CreateInstance", "CreatePopup", "Advise", "State", "LogFile", "ReloadSettings", "Start",
              "Stop", "Pause", "Unadvise", "ReleasePopup"}) {
            engine.script.within[call] = [this, call] { Reach(call, Moment::BeforeReply); };
            engine.script.behind[call] = [this, call] { Reach(call, Moment::AfterReply); };
        }
        SetWindowLongPtrW(m_helper, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&HelperProcedure));
    }
    ~Outside() {
        DestroyWindow(m_helper);
        s_current = nullptr;
    }

    // Lets work in at the next call of this name, once. Names: the engine's; "Picture"; "NIM_ADD",
    // "NIM_MODIFY", "NIM_DELETE"; "Dialog", "MessageBox", "FileDialog", "Menu".
    void LetIn(const char* call, Moment moment, std::function<void()> work) {
        m_call = call;
        m_moment = moment;
        m_work = std::move(work);
    }

    // Whether the call came, and with it the work.
    bool HasComeIn() const noexcept { return !m_work; }
    void LetNothingIn() noexcept { m_work = nullptr; }

    // A picture box of another program, born with one reference.
    ComPtr<FakePictureBox> MakePictureBox() {
        constexpr LONG kPictureHandle = 4711;
        const auto box = MakeObject<FakePictureBox>(kPictureHandle);
        ++pictureBoxes;
        box->asked = [this] { Reach("Picture", Moment::BeforeReply); };
        box->answered = [this] { Reach("Picture", Moment::AfterReply); };
        box->gone = [this] { --pictureBoxes; };
        return box;
    }
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
    void Reach(const char* call, Moment moment) {
        if (!m_work || m_call != call || m_moment != moment) return;
        const auto work = std::exchange(m_work, nullptr);
        work();
    }

    // As the shell does it: an icon is there once or not at all.
    BOOL Answer(DWORD action, const NOTIFYICONDATAA& data) {
        const std::pair<HWND, UINT> icon(data.hWnd, data.uID);
        if (action == NIM_DELETE) return icons.erase(icon) != 0;
        if (shellIsBusy) return FALSE;
        if (action == NIM_MODIFY) return icons.contains(icon);
        if (!IsWindow(data.hWnd)) return FALSE;
        const bool isNew = icons.insert(icon).second;
        mostIcons = std::max(mostIcons, icons.size());
        return isNew;
    }

    static LRESULT CALLBACK HelperProcedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != WM_APP) return DefWindowProcW(hwnd, message, wParam, lParam);
        const std::vector<HWND> dialogs = DialogsOf(GetCurrentProcessId(), true);
        if (dialogs.empty()) return 0;
        s_current->Reach("Dialog", Moment::BeforeReply);
        if (IsWindow(dialogs.front())) SendMessageW(dialogs.front(), WM_COMMAND, IDCANCEL, 0);
        s_current->Reach("Dialog", Moment::AfterReply);
        return 0;
    }

    static inline Outside* s_current = nullptr;
    std::string m_call;
    Moment m_moment = Moment::BeforeReply;
    std::function<void()> m_work;

    const QuietSystem m_quiet;

    // Gets a message in the loop of the dialog that comes up, as the user's clicks come.
    const HWND m_helper =
        CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    const ImportFake<"DialogBoxParamW", decltype(&DialogBoxParamW)> m_dialog{
        "user32.dll",
        [this](HINSTANCE instance, LPCWSTR resource, HWND owner, DLGPROC procedure, LPARAM parameter) {
            PostMessageW(m_helper, WM_APP, 0, 0);
            return m_dialog.Original(instance, resource, owner, procedure, parameter);
        }};
    const ImportFake<"MessageBoxW", decltype(&MessageBoxW)> m_box{
        "user32.dll", [this](HWND, LPCWSTR, LPCWSTR, UINT) {
            Reach("MessageBox", Moment::BeforeReply);
            return IDOK;
        }};
    const ImportFake<"GetOpenFileNameW", decltype(&GetOpenFileNameW)> m_open{
        "comdlg32.dll", [this](OPENFILENAMEW*) {
            Reach("FileDialog", Moment::BeforeReply);
            return FALSE;
        }};
    const ImportFake<"TrackPopupMenuEx", decltype(&TrackPopupMenuEx)> m_menu{
        "user32.dll", [this](HMENU, UINT, int, int, HWND, LPTPMPARAMS) {
            const UINT item = std::exchange(chosen, 0);
            ++menus;
            Reach("Menu", Moment::BeforeReply);
            return static_cast<BOOL>(item);
        }};
    const ImportFake<"Shell_NotifyIconA", decltype(&Shell_NotifyIconA)> m_notify{
        "shell32.dll", [this](DWORD action, NOTIFYICONDATAA* data) {
            const char* const name = action == NIM_ADD      ? "NIM_ADD"
                                     : action == NIM_MODIFY ? "NIM_MODIFY"
                                                            : "NIM_DELETE";
            Reach(name, Moment::BeforeReply);
            const BOOL answer = Answer(action, *data);
            Reach(name, Moment::AfterReply);
            return answer;
        }};

    // Nobody looks at the pictures, and to make one takes longer than anything else of a window does.
    // Windows' own stays when it is destroyed.
    const ImportFake<"LoadImageW", decltype(&LoadImageW)> m_load{
        "user32.dll",
        [picture = LoadIconW(nullptr, IDI_APPLICATION)](HINSTANCE, LPCWSTR, UINT, int, int, UINT) -> HANDLE {
            return picture;
        }};
};
