#include "tests/walk/user.h"

#include <stdexcept>

#include "platform/automation_error.h"
#include "platform/text.h"
#include "tests/support/message_pump.h"
#include "tests/support/program.h"
#include "tests/support/wine.h"

// The first calls after a manager was killed can still be sent to it: they fail, and are tried again.
void User::Start(bool keepSettings) {
    for (const DWORD start = GetTickCount();; PumpFor(50)) {
        try {
            m_manager.emplace(keepSettings);
            m_manager->Instance(formShow);
            return;
        } catch (const AutomationError& error) {
            m_manager.reset();
            const bool isDeadServer = error.Code() == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE) ||
                                      error.Code() == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED);
            if (!isDeadServer || GetTickCount() - start > kPatience) throw;
        }
    }
}

void User::KillAndRestart() {
    constexpr wchar_t kProgram[] = L"SentrelConfig.exe";
    for (const DWORD id : ProcessesOf(kProgram)) {
        const ProcessHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, id));
        TerminateProcess(process.Get(), 1);
    }
    if (!ProgramEnds(kProgram)) throw std::runtime_error("the manager was not killed");
    // No server may be left that Wine's service knew.
    StandIn::End();
    ForgetKilledServers();
    m_manager.reset();
    engine = StandIn();
    Start(true);
}

void User::TurnTo(Page page) {
    // Unlike TCM_SETCURSEL this is what the keyboard does: the tab control tells its owner.
    SendMessageW(Find(L"tab"), TCM_SETCURFOCUS, static_cast<WPARAM>(page), 0);
}

Rows User::Look() {
    Rows shown;
    for (const wchar_t* const button :
         {L"optStartup", L"optLoadWithKiller", L"optLoadFromMenu", L"chkPlaySound", L"chkBeep"}) {
        if (SendMessageW(Find(button), BM_GETCHECK, 0, 0) == BST_CHECKED) shown.push_back(button);
    }
    for (const wchar_t* const button : {L"cmdSoundFile", L"cmdTestSound"})
        shown.push_back(button + std::wstring(CanPress(button) ? L" is enabled" : L" is disabled"));
    shown.push_back(ShownText(Find(L"cboPauseKey")));
    for (const wchar_t* const box : {L"txtSpeed", L"txtPause"})
        shown.push_back(box + (L": " + ShownText(Find(box))));
    for (const Rows& rows :
         {Excluded(), ListViewRows(Find(L"lvwBanners")), ListViewRows(Find(L"lvwSearchURLs"))})
        shown.insert(shown.end(), rows.begin(), rows.end());
    return shown;
}

HWND User::Pressable(const wchar_t* name) {
    if (!IsWindowVisible(Find(name)) || !CanPress(name))
        throw std::runtime_error("cannot be pressed: " + ToAnsi(name));
    return Find(name);
}

void User::Press(const wchar_t* name) {
    // A message that nobody expects would keep the button pressed for ever.
    DWORD_PTR result = 0;
    if (SendMessageTimeoutW(Pressable(name), BM_CLICK, 0, 0, SMTO_NORMAL, kPatience, &result) == 0)
        throw std::runtime_error("stays pressed: " + ToAnsi(name));
}

void User::Answer(HWND dialog, const std::map<int, std::wstring>& fields) {
    for (const auto& [id, text] : fields)
        TypeInto(GetDlgItem(dialog, id), text);
    Close(dialog, IDOK);
}

void User::Close(HWND dialog, int button) {
    PostMessageW(GetDlgItem(dialog, button), BM_CLICK, 0, 0);
    if (!WaitUntil([&] { return !IsWindow(dialog); }))
        throw std::runtime_error("a dialog stays open: " + ToAnsi(ShownText(dialog)));
    // What the manager does behind the dialog is done by the time that its window responds again.
    SendMessageW(m_manager->Window(), WM_NULL, 0, 0);
}

void User::Key(const wchar_t* name, UINT virtualKey) {
    SendMessageW(Find(name), WM_KEYDOWN, virtualKey, 1);
    SendMessageW(Find(name), WM_KEYUP, virtualKey, 1);
}

void User::Select(const wchar_t* list, int row) {
    // A list view that has lost its selected row keeps the focus on another one, which a key that stays there
    // does not select.
    Key(list, VK_END);
    Key(list, VK_HOME);
    for (; row > 0; --row)
        Key(list, VK_DOWN);
}

void User::Tick(const wchar_t* list, int row) {
    Select(list, row);
    Key(list, VK_SPACE);
}

HWND User::Open(const wchar_t* name, const wchar_t* title) {
    DWORD manager = 0;
    GetWindowThreadProcessId(m_manager->Window(), &manager);
    PostMessageW(Pressable(name), BM_CLICK, 0, 0);
    HWND found = nullptr;
    const bool isThere = WaitUntil([&] {
        for (const HWND dialog : DialogsOf(manager, true)) {
            if (IsWindowVisible(dialog) && ShownText(dialog) == title) found = dialog;
        }
        return found != nullptr;
    });
    if (!isThere) throw std::runtime_error("no dialog came up: " + ToAnsi(title));
    return found;
}
