// The window as somebody who only has a keyboard uses it.
#pragma once

#include <doctest.h>

#include <commctrl.h>

#include <map>
#include <string>
#include <vector>

#include "tests/window/keys.h"
#include "tests/window/other_process.h"
#include "tests/window/test_manager.h"

// In the order in which the tab key visits them, the frame's three buttons aside.
inline const std::vector<Rows> kTabStops = {
    {L"optLoadWithKiller", L"chkPlaySound", L"cmdSoundFile", L"cmdTestSound", L"chkBeep", L"cboPauseKey",
     L"txtSpeed", L"txtPause"},
    {L"lstExclude", L"cmdAddURL", L"cmdRemoveURL"},
    {L"lstClosedWnd", L"cmdRefreshLog", L"cmdAddTo", L"cmdClearList"},
    {L"lvwBanners", L"cmdAddSize", L"cmdRemoveSize"},
    {L"lvwSearchURLs", L"cmdAddSearch", L"cmdEditSearch", L"cmdRemoveSearch"},
    {L"lblNavSite"},
};
inline const Rows kFrameButtons = {L"cmdOK", L"cmdCancel", L"cmdApply"};
inline const auto kPages = static_cast<int>(kTabStops.size());

// The manager with its window in front.
class KeyboardWindow : public TestManager {
public:
    KeyboardWindow() {
        Bring();
        m_names[Control(L"tab")] = L"tab";
        for (const auto& names : {kTabStops[0], kTabStops[1], kTabStops[2], kTabStops[3], kTabStops[4],
                                  kTabStops[5], kFrameButtons}) {
            for (const std::wstring& name : names)
                m_names[Control(name.c_str())] = name;
        }
    }

    // On a busy machine the screen may tell late that the window of an earlier test has lost the focus, which
    // Wine takes to mean this one: then it is asked for again, as somebody would.
    void Bring() {
        Instance(formShow);
        REQUIRE(WaitUntil([this] {
            if (GetForegroundWindow() == m_window) return true;
            Sleep(200);
            Instance(formShow);
            return false;
        }));
    }

    HWND Find(const std::wstring& name) const {
        for (const auto& [window, known] : m_names) {
            if (known == name) return window;
        }
        return nullptr;
    }

    std::wstring Focused() {
        const auto found = m_names.find(FocusOf(m_window));
        return found == m_names.end() ? L"?" : found->second;
    }

    void Focus(const std::wstring& name) {
        SendMessageW(m_window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Find(name)), TRUE);
        REQUIRE(WaitUntil([&] { return Focused() == name; }));
    }

    // Presses the keys and waits for what they do. Keys are lost while the window is not in front, for the
    // reason above: they are pressed again then.
    template <class Effect>
    bool Press(std::initializer_list<WORD> keys, Effect&& effect) {
        PressKeys(keys);
        return WaitUntil([&] {
            const bool isLost = GetForegroundWindow() != m_window;
            if (effect()) return true;
            if (isLost && IsShown()) {
                Bring();
                PressKeys(keys);
            }
            return false;
        });
    }

    // Where the focus is after the key has moved it.
    std::wstring After(std::initializer_list<WORD> keys) {
        const std::wstring before = Focused();
        Press(keys, [&] { return Focused() != before; });
        return Focused();
    }

    bool FocusBecomes(const std::wstring& name, std::initializer_list<WORD> keys) {
        return Press(keys, [&] { return Focused() == name; });
    }

    void Page(int page) { SendMessageW(Find(L"tab"), TCM_SETCURFOCUS, static_cast<WPARAM>(page), 0); }
    int Page() const { return static_cast<int>(SendMessageW(Find(L"tab"), TCM_GETCURSEL, 0, 0)); }
    bool PageBecomes(int page, std::initializer_list<WORD> keys) {
        return Press(keys, [&] { return Page() == page; });
    }

    bool IsShown() const { return IsWindowVisible(m_window) != FALSE; }
    bool Hides(std::initializer_list<WORD> keys) {
        return Press(keys, [&] { return !IsShown(); });
    }

    // Whether a dialog of this title opens; it is closed again.
    bool Opens(const wchar_t* title, std::initializer_list<WORD> keys) {
        HWND dialog = nullptr;
        const bool isOpen = Press(keys, [&] {
            dialog = FindWindowW(L"#32770", title);
            return dialog != nullptr;
        });
        if (!isOpen || !WaitUntil([&] { return GetForegroundWindow() == dialog; })) return false;
        PressKeys({VK_ESCAPE});
        return WaitUntil([&] { return !IsWindow(dialog); }) &&
               WaitUntil([&] { return GetForegroundWindow() == m_window; });
    }

private:
    const HWND m_window = Window();
    std::map<HWND, std::wstring> m_names;
};
