#include "tests/pairs/case.h"

#include <commctrl.h>

#include <algorithm>

#include "app/resource.h"
#include "store/first_run.h"
#include "tests/support/plain_log.h"
#include "tray/picture_array.h"

namespace {

BOOL CALLBACK Take(HWND hwnd, LPARAM windows) {
    reinterpret_cast<std::vector<HWND>*>(windows)->push_back(hwnd);
    return TRUE;
}

ULONG ReferencesOf(IUnknown* object) {
    if (object == nullptr) return 0;
    object->AddRef();
    return object->Release();
}

}  // namespace

Case::Case() {
    WriteFirstRunDefaults();
    for (const char* const row : {"0", "1", "2"})
        registry.contents["HKCU\\Software\\Calvane\\Exclude"][row].bytes = std::string("excluded") + row;
    StoredKey& banners = registry.contents["HKCU\\Software\\Calvane\\Banners"];
    for (const char* const field : {"5Name", "5Width", "5Height"})
        banners[field].bytes = "55";
    banners["5Use"].bytes = "True";
    m_filled = registry.contents;
    const std::string text = RepeatingLog();
    outside.engine.script.logFile = m_folder.Write(L"closed.log", text);
    for (const std::string& line : PlainNewestLines(text, 25))
        newestLines.emplace_back(line.begin(), line.end());
}

void Case::HaveWindow() {
    if (Window() != nullptr) return;
    ComPtr<IDispatch> config;
    if (g_frmConfig == nullptr) {
        Instance(FormHide, config);
    } else {
        LONG window = 0;
        Form()->get_hWnd(&window);
    }
}

void Case::LetGo() {
    g_oConfig.Reset();
    g_frmConfig.Reset();
    g_lngConfigHwnd = 0;
    outside.engine.script.calls.clear();
}

void Case::Restore(bool reloads, bool hasCommands) {
    // One command a tick: what another one has left waits for the next.
    for (int i = 0; hasCommands && i < 3; ++i) {
        Choose(mnuPauseKiller);
        outside.clock.Tick(kCommandTick);
    }
    outside.engine.script.results.clear();
    Form()->put_b_OKtoUnload(VARIANT_FALSE);
    if (IsWindowVisible(Window())) Form()->Hide();
    if (reloads) Press(IDCANCEL);
    if (IsEnabled(IDC_CMDAPPLY)) EnableWindow(Child(IDC_CMDAPPLY), FALSE);
    if (SendMessageW(Child(IDC_TAB), TCM_GETCURSEL, 0, 0) != 0)
        SendMessageW(Child(IDC_TAB), TCM_SETCURFOCUS, 0, 0);
    if (outside.icons.empty() || outside.pictureBoxes != 0) {
        Icon()->RemoveIcon();
        AddIcon();
    }
    PumpPosted();
}

std::array<ULONG, 3> Case::Held() const {
    ComPtr<_ShellNotification> icon = Icon();
    const ULONG iconReferences = ReferencesOf(icon.Get());
    icon.Reset();
    return {Locks(), ReferencesOf(static_cast<_frmConfig*>(g_frmConfig.Get())), iconReferences};
}

HWND Case::Window() const {
    const std::vector<HWND> windows = Windows();
    return windows.empty() ? nullptr : windows.front();
}

HWND Case::Child(int id) const {
    const HWND window = Window();
    if (window != m_parent) {
        m_parent = window;
        m_children.clear();
        if (window != nullptr) EnumChildWindows(window, Take, reinterpret_cast<LPARAM>(&m_children));
    }
    const auto found = std::find_if(m_children.begin(), m_children.end(),
                                    [&](HWND child) { return GetDlgCtrlID(child) == id; });
    return found == m_children.end() ? nullptr : *found;
}

ComPtr<_ShellNotification> Case::Icon() const {
    ComPtr<_ShellNotification> icon;
    ComPtr<IDispatch> object;
    if (g_frmConfig != nullptr) Form()->get_m_oShellIcon(&object);
    if (object != nullptr) object.As(&icon);
    return icon;
}

ComPtr<IDispatch> Case::Picture() const {
    ComPtr<IDispatch> box;
    if (g_frmConfig != nullptr) Form()->get_picTray(0, &box);
    return box;
}

bool Case::Press(int id) const {
    const HWND button = Child(id);
    if (button == nullptr) return false;
    SendMessageW(button, BM_CLICK, 0, 0);
    return true;
}

bool Case::PressApply() const {
    EnableWindow(Child(IDC_CMDAPPLY), TRUE);
    return Press(IDC_CMDAPPLY);
}

bool Case::Select(int list, int row) const {
    const HWND hwnd = Child(list);
    if (hwnd == nullptr || RowCount(list) <= row) return false;
    if (ClassOf(hwnd) == WC_LISTVIEWW) {
        ListView_SetItemState(hwnd, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    } else {
        SendMessageW(hwnd, LB_SETCURSEL, static_cast<WPARAM>(row), 0);
        SendMessageW(GetParent(hwnd), WM_COMMAND, MAKEWPARAM(list, LBN_SELCHANGE),
                     reinterpret_cast<LPARAM>(hwnd));
    }
    return true;
}

bool Case::TakesGestures() const {
    const HWND window = Window();
    return window != nullptr && HandleToLong(window) == g_lngConfigHwnd &&
           GetPropA(window, "OldWndProc") != nullptr;
}

bool Case::Gesture(LPARAM gesture) const {
    if (!TakesGestures()) return false;
    SendMessageW(Window(), kTrayCallback, 1, gesture);
    return true;
}

bool Case::Choose(UINT item) {
    const int menus = outside.menus;
    outside.chosen = item;
    return Gesture(WM_RBUTTONUP) && outside.menus > menus;
}

bool Case::NewTaskbar() {
    const HWND window = Window();
    if (window == nullptr) return false;
    outside.icons.clear();
    SendMessageW(window, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    return true;
}

void Case::AddIcon() const {
    ComPtr<IDispatch> picture;
    Form()->get_picShellIcon(&picture);
    Icon()->AddIcon(picture.Get());
}

HRESULT Case::Animate(bool isForeign) {
    const auto icon = Icon();
    if (icon == nullptr) return E_FAIL;
    PictureArray pictures(0, 3);
    for (LONG i = 0; i < 3; ++i) {
        ComPtr<IDispatch> picture = isForeign ? outside.MakePictureBox() : nullptr;
        if (!isForeign) ThrowIfFailed(Form()->get_picTray(static_cast<short>(i), &picture));
        pictures.Item(i, picture.Get());
    }
    return icon->AnimateIcon(pictures.Reference(), kFrameTick, 1, HandleToLong(Window()));
}

void Case::HaveRefusedIcon(IDispatch* picture) {
    const auto icon = Icon();
    icon->RemoveIcon();
    outside.shellIsBusy = true;
    icon->AddIcon(picture);
    outside.shellIsBusy = false;
}

void Case::HaveRefusedChange() {
    outside.engine.script.results["ReloadSettings"] = RPC_E_CALL_REJECTED;
    PressApply();
    outside.engine.script.results.clear();
}

void Case::Settle() {
    constexpr int kRounds = 300;
    for (int round = 0; round < kRounds; ++round) {
        PumpPosted();
        if (outside.clock.Tick() == 0) break;
    }
    PumpPosted();
    outside.clock.TickLate();
    PumpPosted();
}

int Case::RowCount(int list) const {
    const HWND hwnd = Child(list);
    const UINT message = ClassOf(hwnd) == WC_LISTVIEWW ? LVM_GETITEMCOUNT : LB_GETCOUNT;
    return static_cast<int>(SendMessageW(hwnd, message, 0, 0));
}
