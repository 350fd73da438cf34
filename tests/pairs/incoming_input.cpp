// What the user does at the window, over the icon and in its menu.
#include <commctrl.h>

#include "app/resource.h"
#include "lists/resource.h"
#include "options/resource.h"
#include "tests/pairs/incoming_work.h"

namespace {

Came If(bool possible) {
    return possible ? Came::In : Came::NotPossible;
}

template <int kId>
Came Press(Case& manager) {
    return If(manager.Child(kId) != nullptr && manager.IsEnabled(kId) && manager.Press(kId));
}

Came PressApply(Case& manager) {
    if (manager.Child(IDC_CMDAPPLY) == nullptr) return Came::NotPossible;
    manager.EnableApply();
    return Press<IDC_CMDAPPLY>(manager);
}

// Select a row and press a button for it.
template <int kList, int kButton>
Came OnRow(Case& manager) {
    if (!manager.Select(kList, 0)) return Came::NotPossible;
    return manager.Press(kButton) ? Came::In : Came::InVain;
}

template <int kList, int kRow, int kButton>
Came OnItem(Case& manager) {
    if (!manager.SelectItem(kList, kRow)) return Came::NotPossible;
    return manager.Press(kButton) ? Came::In : Came::InVain;
}

template <int kList>
Came CheckItem(Case& manager) {
    if (manager.ItemCount(kList) == 0) return Came::NotPossible;
    const HWND list = manager.Child(kList);
    LVITEMW item{};
    item.stateMask = LVIS_STATEIMAGEMASK;
    const LRESULT state = SendMessageW(list, LVM_GETITEMSTATE, 0, LVIS_STATEIMAGEMASK);
    item.state = INDEXTOSTATEIMAGEMASK((state >> 12) == 2 ? 1U : 2U);
    SendMessageW(list, LVM_SETITEMSTATE, 0, reinterpret_cast<LPARAM>(&item));
    return Came::In;
}

Came SelectTab(Case& manager) {
    const HWND tab = manager.Child(IDC_TAB);
    SendMessageW(tab, TCM_SETCURFOCUS, 2, 0);
    return If(tab != nullptr);
}

Came TypeSpeed(Case& manager) {
    return If(SetWindowTextW(manager.Child(IDC_TXTSPEED), L"3") != FALSE);
}

Came CloseBox(Case& manager) {
    const HWND window = manager.Window();
    if (window == nullptr) return Came::NotPossible;
    SendMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0);
    PumpPosted();
    return Came::In;
}

template <UINT kItem>
Came Menu(Case& manager) {
    if (!manager.TakesGestures()) return Came::NotPossible;
    if (!manager.Choose(kItem)) return Came::InVain;
    if (kItem == mnuExit) PumpPosted();
    return Came::In;
}

Came DoubleClick(Case& manager) {
    return If(manager.Gesture(WM_LBUTTONDBLCLK));
}

constexpr IncomingWork kInputs[] = {
    {.name = "cmdOK", .come = Press<IDC_CMDOK>, .mark = Mark::Cleared},
    {.name = "cmdApply", .come = PressApply, .mark = Mark::Cleared},
    {.name = "cmdCancel", .come = Press<IDCANCEL>},
    {.name = "optStartup", .come = Press<IDC_OPTSTARTUP>, .mark = Mark::Set},
    {.name = "optLoadWithKiller", .come = Press<IDC_OPTLOADWITHKILLER>, .mark = Mark::Set},
    {.name = "optLoadFromMenu", .come = Press<IDC_OPTLOADFROMMENU>, .mark = Mark::Set},
    {.name = "chkPlaySound", .come = Press<IDC_CHKPLAYSOUND>, .mark = Mark::Set},
    {.name = "cmdSoundFile", .come = Press<IDC_CMDSOUNDFILE>, .mark = Mark::Set},
    {.name = "cmdTestSound", .come = Press<IDC_CMDTESTSOUND>},
    {.name = "chkBeep", .come = Press<IDC_CHKBEEP>, .mark = Mark::Set},
    {.name = "txtSpeed", .come = TypeSpeed, .typesText = true},
    {.name = "cmdAddURL", .come = Press<IDC_CMDADDURL>, .mark = Mark::Set},
    {.name = "cmdRemoveURL",
     .come = OnRow<IDC_LSTEXCLUDE, IDC_CMDREMOVEURL>,
     .mark = Mark::SetEvenWhileLoading,
     .editsExclude = -1},
    {.name = "cmdRefreshLog", .come = Press<IDC_CMDREFRESHLOG>},
    {.name = "cmdAddTo",
     .come = OnRow<IDC_LSTCLOSEDWND, IDC_CMDADDTO>,
     .mark = Mark::Set,
     .editsExclude = +1},
    {.name = "cmdClearList", .come = Press<IDC_CMDCLEARLIST>, .mark = Mark::Set},
    {.name = "lvwBanners' check mark", .come = CheckItem<IDC_LVWBANNERS>, .mark = Mark::Set},
    {.name = "cmdAddSize", .come = Press<IDC_CMDADDSIZE>, .mark = Mark::Set},
    {.name = "cmdRemoveSize",
     .come = OnItem<IDC_LVWBANNERS, 4, IDC_CMDREMOVESIZE>,
     .mark = Mark::Set,
     .editsBanners = -1},
    {.name = "cmdRemoveSize on a default", .come = OnItem<IDC_LVWBANNERS, 0, IDC_CMDREMOVESIZE>},
    {.name = "lvwSearchURLs' check mark", .come = CheckItem<IDC_LVWSEARCHURLS>, .mark = Mark::Set},
    {.name = "cmdAddSearch", .come = Press<IDC_CMDADDSEARCH>, .mark = Mark::Set},
    {.name = "cmdEditSearch", .come = OnItem<IDC_LVWSEARCHURLS, 0, IDC_CMDEDITSEARCH>, .mark = Mark::Set},
    {.name = "cmdRemoveSearch",
     .come = OnItem<IDC_LVWSEARCHURLS, 0, IDC_CMDREMOVESEARCH>,
     .mark = Mark::Set,
     .editsSearch = -1},
    {.name = "another tab", .come = SelectTab},
    {.name = "lblNavSite", .come = Press<IDC_LBLNAVSITE>},
    {.name = "imgLogo", .come = Press<IDC_IMGLOGO>},
    {.name = "the close box", .come = CloseBox},
    {.name = "mnuStartKiller", .come = Menu<mnuStartKiller>, .leavesCommands = true},
    {.name = "mnuStopKiller", .come = Menu<mnuStopKiller>, .leavesCommands = true},
    {.name = "mnuPauseKiller", .come = Menu<mnuPauseKiller>, .leavesCommands = true},
    {.name = "mnuShowConfig", .come = Menu<mnuShowConfig>, .showsWindow = true},
    {.name = "mnuExit", .come = Menu<mnuExit>, .takesWindow = true},
    {.name = "the menu left without a choice", .come = Menu<0>},
    {.name = "a double click on the icon", .come = DoubleClick, .showsWindow = true},
};

}  // namespace

std::span<const IncomingWork> IncomingInputs() {
    return kInputs;
}
