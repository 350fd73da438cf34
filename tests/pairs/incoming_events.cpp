// What the user does at the window, over the icon and in its menu, and what the system, the engine and the
// timers bring.
#include <commctrl.h>

#include "app/resource.h"
#include "tests/pairs/pairs.h"

namespace {

template <int kId>
Came Press(Case& manager) {
    return If(manager.Child(kId) != nullptr && manager.IsEnabled(kId) && manager.Press(kId));
}

Came PressApply(Case& manager) {
    return If(manager.PressApply());
}

// Select a row and press a button for it.
template <int kList, int kButton, int kRow = 0>
Came OnRow(Case& manager) {
    if (!manager.Select(kList, kRow)) return Came::NotPossible;
    return manager.Press(kButton) ? Came::In : Came::InVain;
}

template <int kList>
Came CheckItem(Case& manager) {
    if (manager.RowCount(kList) == 0) return Came::NotPossible;
    const HWND list = manager.Child(kList);
    ListView_SetCheckState(list, 0, ListView_GetCheckState(list, 0) == 0);
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

template <UINT kMessage, WPARAM kParameter>
Came System(Case& manager) {
    const HWND window = manager.Window();
    if (window == nullptr) return Came::NotPossible;
    SendMessageW(window, kMessage, kParameter, 0);
    return Came::In;
}

Came NewTaskbar(Case& manager) {
    return If(manager.NewTaskbar());
}

Came Killed(Case& manager) {
    return If(manager.Raise(kKilled, {4711L, L"Win a prize"}));
}
template <DISPID kEvent>
Came Event(Case& manager) {
    return If(manager.Raise(kEvent));
}

Came Tick(Case& manager, UINT interval) {
    return manager.outside.clock.Tick(interval) != 0 ? Came::In : Came::InVain;
}
Came CommandTick(Case& manager) {
    if (!manager.TakesGestures()) return Came::NotPossible;
    return manager.Choose(mnuPauseKiller) ? Tick(manager, kCommandTick) : Came::InVain;
}
Came FrameTick(Case& manager) {
    if (manager.Icon() == nullptr) return Came::NotPossible;
    return SUCCEEDED(manager.Animate()) ? Tick(manager, kFrameTick) : Came::InVain;
}
Came LastFrameTick(Case& manager) {
    const Came came = FrameTick(manager);
    for (int frame = 1; came == Came::In && frame < 4; ++frame)
        Tick(manager, kFrameTick);
    return came;
}
Came IconAgainTick(Case& manager) {
    if (manager.Icon() == nullptr) return Came::NotPossible;
    ComPtr<IDispatch> picture;
    manager.Form()->get_picShellIcon(&picture);
    manager.HaveRefusedIcon(picture.Get());
    return Tick(manager, kIconAgainTick);
}
Came EngineAgainTick(Case& manager) {
    if (manager.outside.engine.popup == nullptr || manager.Child(IDC_CMDAPPLY) == nullptr)
        return Came::NotPossible;
    manager.HaveRefusedChange();
    manager.outside.clock.Tick(kEngineAgainTick);
    return Came::In;
}

constexpr IncomingWork kEvents[] = {
    {"cmdOK", Press<IDC_CMDOK>, {.mark = Mark::Cleared}},
    {"cmdApply", PressApply, {.mark = Mark::Cleared}},
    {"cmdCancel", Press<IDCANCEL>},
    {"optStartup", Press<IDC_OPTSTARTUP>, {.mark = Mark::Set}},
    {"optLoadWithKiller", Press<IDC_OPTLOADWITHKILLER>, {.mark = Mark::Set}},
    {"optLoadFromMenu", Press<IDC_OPTLOADFROMMENU>, {.mark = Mark::Set}},
    {"chkPlaySound", Press<IDC_CHKPLAYSOUND>, {.mark = Mark::Set}},
    {"cmdSoundFile", Press<IDC_CMDSOUNDFILE>, {.mark = Mark::Set}},
    {"cmdTestSound", Press<IDC_CMDTESTSOUND>},
    {"chkBeep", Press<IDC_CHKBEEP>, {.mark = Mark::Set}},
    {"txtSpeed", TypeSpeed, {.typesText = true}},
    {"cmdAddURL", Press<IDC_CMDADDURL>, {.mark = Mark::Set}},
    {"cmdRemoveURL",
     OnRow<IDC_LSTEXCLUDE, IDC_CMDREMOVEURL>,
     {.mark = Mark::SetEvenWhileLoading, .editsExclude = -1}},
    {"cmdRefreshLog", Press<IDC_CMDREFRESHLOG>},
    {"cmdAddTo", OnRow<IDC_LSTCLOSEDWND, IDC_CMDADDTO>, {.mark = Mark::Set, .editsExclude = +1}},
    {"cmdClearList", Press<IDC_CMDCLEARLIST>, {.mark = Mark::Set}},
    {"lvwBanners' check mark", CheckItem<IDC_LVWBANNERS>, {.mark = Mark::Set}},
    {"cmdAddSize", Press<IDC_CMDADDSIZE>, {.mark = Mark::Set}},
    {"cmdRemoveSize", OnRow<IDC_LVWBANNERS, IDC_CMDREMOVESIZE, 4>, {.mark = Mark::Set, .editsBanners = -1}},
    {"cmdRemoveSize on a default", OnRow<IDC_LVWBANNERS, IDC_CMDREMOVESIZE>},
    {"lvwSearchURLs' check mark", CheckItem<IDC_LVWSEARCHURLS>, {.mark = Mark::Set}},
    {"cmdAddSearch", Press<IDC_CMDADDSEARCH>, {.mark = Mark::Set}},
    {"cmdEditSearch", OnRow<IDC_LVWSEARCHURLS, IDC_CMDEDITSEARCH>, {.mark = Mark::Set}},
    {"cmdRemoveSearch",
     OnRow<IDC_LVWSEARCHURLS, IDC_CMDREMOVESEARCH>,
     {.mark = Mark::Set, .editsSearch = -1}},
    {"another tab", SelectTab},
    {"lblNavSite", Press<IDC_LBLNAVSITE>},
    {"imgLogo", Press<IDC_IMGLOGO>},
    {"the close box", CloseBox},
    {"mnuStartKiller", Menu<mnuStartKiller>, {.leavesCommands = true}},
    {"mnuStopKiller", Menu<mnuStopKiller>, {.leavesCommands = true}},
    {"mnuPauseKiller", Menu<mnuPauseKiller>, {.leavesCommands = true}},
    {"mnuShowConfig", Menu<mnuShowConfig>, {.showsWindow = true}},
    {"mnuExit", Menu<mnuExit>, {.takesWindow = true}},
    {"the menu left without a choice", Menu<0>},
    {"a double click on the icon", DoubleClick, {.showsWindow = true}},
    {"the question whether to log off", System<WM_QUERYENDSESSION, 0>},
    {"a log-off called off", System<WM_ENDSESSION, FALSE>},
    {"a log-off", System<WM_ENDSESSION, TRUE>, {.takesWindow = true}},
    {"a new taskbar", NewTaskbar},
    {"Killed", Killed},
    {"Paused", Event<kPaused>},
    {"Started", Event<kStarted>},
    {"Stopped", Event<kStopped>},
    {"a tick of tmMenu", CommandTick, {.leavesCommands = true}},
    {"a tick of the animation", FrameTick},
    {"the last tick of an animation", LastFrameTick},
    {"a tick for an icon that was refused", IconAgainTick},
    {"a tick for a call that was refused", EngineAgainTick, {.mark = Mark::Cleared}},
};

}  // namespace

std::span<const IncomingWork> IncomingEvents() {
    return kEvents;
}
