#include "tests/pairs/outside.h"

#include <algorithm>
#include <iterator>

namespace {

Outside* current = nullptr;

constexpr const char* kEngineCalls[] = {"CreateInstance", "CreatePopup",    "Advise",      "State",
                                        "LogFile",        "ReloadSettings", "Start",       "Stop",
                                        "Pause",          "Unadvise",       "ReleasePopup"};
constexpr LONG kPictureHandle = 4711;

const char* NameOf(DWORD action) {
    return action == NIM_ADD ? "NIM_ADD" : action == NIM_MODIFY ? "NIM_MODIFY" : "NIM_DELETE";
}

BOOL CALLBACK IsDialog(HWND hwnd, LPARAM found) {
    wchar_t name[16] = L"";
    GetClassNameW(hwnd, name, 16);
    if (GetWindow(hwnd, GW_OWNER) == nullptr || lstrcmpW(name, L"#32770") != 0) return TRUE;
    *reinterpret_cast<HWND*>(found) = hwnd;
    return FALSE;
}

// The topmost dialog over a window of this thread.
HWND NewestDialog() {
    HWND dialog = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), IsDialog, reinterpret_cast<LPARAM>(&dialog));
    return dialog;
}

}  // namespace

Outside::Outside() {
    current = this;
    for (const char* const call : kEngineCalls) {
        engine.script.within[call] = [this, call] { Reach(call, Moment::BeforeReply); };
        engine.script.behind[call] = [this, call] { Reach(call, Moment::AfterReply); };
    }
    m_helper = CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(m_helper, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&HelperProcedure));
}

Outside::~Outside() {
    DestroyWindow(m_helper);
    current = nullptr;
}

void Outside::LetIn(const char* call, Moment moment, std::function<void()> work) {
    m_call = call;
    m_moment = moment;
    m_work = std::move(work);
}

bool Outside::IsEngineCall(std::string_view call) {
    return std::ranges::find(kEngineCalls, call) != std::end(kEngineCalls);
}

void Outside::Reach(const char* call, Moment moment) {
    if (!m_work || m_call != call || m_moment != moment) return;
    const auto work = std::exchange(m_work, nullptr);
    work();
}

ComPtr<FakePictureBox> Outside::MakePictureBox() {
    const auto box = MakeObject<FakePictureBox>(kPictureHandle);
    ++pictureBoxes;
    box->asked = [] { current->Reach("Picture", Moment::BeforeReply); };
    box->answered = [] { current->Reach("Picture", Moment::AfterReply); };
    box->gone = [] { --current->pictureBoxes; };
    return box;
}

BOOL WINAPI Outside::Notify(DWORD action, NOTIFYICONDATAA* data) {
    current->Reach(NameOf(action), Moment::BeforeReply);
    const BOOL answer = current->Answer(action, *data);
    current->Reach(NameOf(action), Moment::AfterReply);
    return answer;
}

// As the shell answers: an icon is there once or not at all.
BOOL Outside::Answer(DWORD action, const NOTIFYICONDATAA& data) {
    const std::pair<HWND, UINT> icon(data.hWnd, data.uID);
    if (action == NIM_DELETE) return icons.erase(icon) != 0;
    if (shellIsBusy) return FALSE;
    if (action == NIM_MODIFY) return icons.contains(icon);
    if (!IsWindow(data.hWnd)) return FALSE;
    const bool isNew = icons.insert(icon).second;
    mostIcons = std::max(mostIcons, icons.size());
    return isNew;
}

INT_PTR WINAPI Outside::ShowDialog(HINSTANCE instance, LPCWSTR resource, HWND owner, DLGPROC procedure,
                                   LPARAM parameter) {
    PostMessageW(current->m_helper, WM_APP, 0, 0);
    return current->m_dialog.Original<decltype(&DialogBoxParamW)>()(instance, resource, owner, procedure,
                                                                    parameter);
}

LRESULT CALLBACK Outside::HelperProcedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_APP) return DefWindowProcW(hwnd, message, wParam, lParam);
    const HWND dialog = NewestDialog();
    if (dialog == nullptr) return 0;
    current->Reach("Dialog", Moment::BeforeReply);
    if (IsWindow(dialog)) SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    current->Reach("Dialog", Moment::AfterReply);
    return 0;
}

int WINAPI Outside::ShowBox(HWND, LPCWSTR, LPCWSTR, UINT) {
    current->Reach("MessageBox", Moment::BeforeReply);
    return IDOK;
}

BOOL WINAPI Outside::ShowOpen(OPENFILENAMEW*) {
    current->Reach("FileDialog", Moment::BeforeReply);
    return FALSE;
}

BOOL WINAPI Outside::ShowMenu(HMENU, UINT, int, int, HWND, LPTPMPARAMS) {
    const UINT item = std::exchange(current->chosen, 0);
    ++current->menus;
    current->Reach("Menu", Moment::BeforeReply);
    return static_cast<BOOL>(item);
}

// Nobody looks at the pictures, and to make one takes longer than anything else of a window does. Windows'
// own stays when it is destroyed.
HANDLE WINAPI Outside::LoadPicture(HINSTANCE, LPCWSTR, UINT, int, int, UINT) {
    static const HICON picture = LoadIconW(nullptr, IDI_APPLICATION);
    return picture;
}

HINSTANCE WINAPI Outside::Execute(HWND, LPCSTR, LPCSTR, LPCSTR, LPCSTR, INT) {
    return reinterpret_cast<HINSTANCE>(33);
}
