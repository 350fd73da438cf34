#include "tests/walk/user.h"

#include <commctrl.h>

#include <stdexcept>

#include "platform/automation_error.h"
#include "platform/text.h"
#include "tests/support/killed_servers.h"
#include "tests/support/message_pump.h"

namespace {

constexpr int kIntoRow = 6;  // pixels from a row's upper edge that are safely inside of it

struct Search {
    DWORD process;
    HWND except;
    std::wstring title;
    HWND found;
};

BOOL CALLBACK TakeDialog(HWND window, LPARAM parameter) {
    Search& search = *reinterpret_cast<Search*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != search.process || window == search.except || !IsWindowVisible(window)) return TRUE;
    if (ClassOf(window) != L"#32770" || ShownText(window) != search.title) return TRUE;
    search.found = window;
    return FALSE;
}

void WaitUntilGone(HWND window) {
    if (!WaitUntil([&] { return !IsWindow(window); })) {
        throw std::runtime_error("a window stays open: " + ToAnsi(ShownText(window)));
    }
}

}  // namespace

// The first calls after a manager was killed can still be sent to it: they fail, and are tried again.
void User::Start(bool keepSettings) {
    for (const DWORD start = GetTickCount();; PumpFor(50)) {
        try {
            m_manager.emplace(keepSettings);
            Show();
            break;
        } catch (const AutomationError& error) {
            m_manager.reset();
            const bool isDeadServer = error.Code() == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE) ||
                                      error.Code() == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED);
            if (!isDeadServer || GetTickCount() - start > kPatience) throw;
        }
    }
    GetWindowThreadProcessId(m_manager->Window(), &m_process);
}

void User::KillAndRestart() {
    const ProcessHandle process(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, m_process));
    if (!TerminateProcess(process.Get(), 1) ||
        WaitForSingleObject(process.Get(), kPatience) != WAIT_OBJECT_0) {
        throw std::runtime_error("the manager was not killed");
    }
    // No server may be left that Wine's service knew.
    StandIn::End();
    ForgetKilledServers();
    m_manager.reset();
    engine = StandIn();
    Start(true);
}

void User::EndAndRestart() {
    m_manager.reset();
    Start(true);
}

void User::Show() {
    m_controls.clear();
    m_manager->Instance(formShow);
}

HWND User::Find(const wchar_t* name) {
    HWND& control = m_controls[name];
    if (control == nullptr) control = m_manager->Control(name);
    return control;
}

void User::TurnTo(Page page) {
    // Unlike TCM_SETCURSEL this is what the keyboard does: the tab control tells its owner.
    SendMessageW(Find(L"tab"), TCM_SETCURFOCUS, static_cast<WPARAM>(page), 0);
}

Rows User::Look() {
    Rows shown;
    for (const wchar_t* const option : {L"optStartup", L"optLoadWithKiller", L"optLoadFromMenu"}) {
        if (IsChecked(option)) shown.push_back(ShownText(Find(option)));
    }
    for (const std::wstring name : {L"chkPlaySound", L"chkBeep"})
        shown.push_back(name + (IsChecked(name.c_str()) ? L" is checked" : L" is not checked"));
    for (const std::wstring name : {L"cmdSoundFile", L"cmdTestSound"})
        shown.push_back(name + (CanPress(name.c_str()) ? L" is enabled" : L" is disabled"));
    shown.push_back(L"cboPauseKey: " + ComboText(Find(L"cboPauseKey")));
    for (const std::wstring name : {L"txtSpeed", L"txtPause"})
        shown.push_back(name + L": " + ShownText(Find(name.c_str())));
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

HWND User::Open(const wchar_t* name, const wchar_t* title) {
    PostMessageW(Pressable(name), BM_CLICK, 0, 0);
    return WaitForWindow(title);
}

std::wstring User::PressAndRead(HWND button) {
    PostMessageW(button, BM_CLICK, 0, 0);
    const HWND box = WaitForWindow(L"Calvane");
    std::wstring text;
    for (HWND child = nullptr; (child = FindWindowExW(box, child, L"Static", nullptr)) != nullptr;) {
        // The other one is the place of the icon.
        if ((GetWindowLongW(child, GWL_STYLE) & SS_TYPEMASK) != SS_ICON) text += ShownText(child);
    }
    PostMessageW(FindWindowExW(box, nullptr, L"Button", nullptr), BM_CLICK, 0, 0);
    WaitUntilGone(box);
    return text;
}

void User::Answer(HWND dialog, const std::map<int, std::wstring>& fields) {
    for (const auto& [id, text] : fields)
        TypeInto(GetDlgItem(dialog, id), text);
    Close(dialog, IDOK);
}

void User::Close(HWND dialog, int button) {
    PostMessageW(GetDlgItem(dialog, button), BM_CLICK, 0, 0);
    WaitUntilGone(dialog);
    // What the manager does behind the dialog is done by the time that its window responds again.
    SendMessageW(m_manager->Window(), WM_NULL, 0, 0);
}

void User::Key(const wchar_t* name, UINT virtualKey) {
    SendMessageW(Find(name), WM_KEYDOWN, virtualKey, 1);
    SendMessageW(Find(name), WM_KEYUP, virtualKey, 1);
}

// A list view that has lost its selected row keeps the focus on another one, which keys that go there do not
// select: going away and back does, and on the only row a click.
void User::SelectFirst(HWND list) {
    const auto isSelected = [list] {
        return SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED) == 0;
    };
    if (isSelected()) return;
    SendMessageW(list, WM_KEYDOWN, VK_END, 1);
    SendMessageW(list, WM_KEYDOWN, VK_HOME, 1);
    if (isSelected()) return;
    RECT header{};
    GetClientRect(reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0)), &header);
    const LPARAM point = MAKELPARAM(header.right / 2, header.bottom + kIntoRow);
    // Sent, the click would begin to drag before the button is up.
    PostMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON, point);
    PostMessageW(list, WM_LBUTTONUP, 0, point);
    if (!WaitUntil(isSelected)) throw std::runtime_error("the first row is not selected");
}

void User::Select(const wchar_t* list, int row) {
    Key(list, VK_HOME);
    if (ClassOf(Find(list)) == WC_LISTVIEWW) SelectFirst(Find(list));
    for (; row > 0; --row)
        Key(list, VK_DOWN);
}

void User::Tick(const wchar_t* list, int row) {
    Select(list, row);
    Key(list, VK_SPACE);
}

HWND User::WaitForWindow(const std::wstring& title) {
    Search search{m_process, m_manager->Window(), title, nullptr};
    const bool isThere = WaitUntil([&] {
        EnumWindows(TakeDialog, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr;
    });
    if (!isThere) throw std::runtime_error("no window came up: " + ToAnsi(title));
    return search.found;
}
