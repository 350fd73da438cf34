// What the system, the engine and the timers bring.
#include "app/resource.h"
#include "tests/pairs/incoming_work.h"

namespace {

template <UINT kMessage, WPARAM kParameter>
Came System(Case& manager) {
    const HWND window = manager.Window();
    if (window == nullptr) return Came::NotPossible;
    SendMessageW(window, kMessage, kParameter, 0);
    return Came::In;
}

Came NewTaskbar(Case& manager) {
    const HWND window = manager.Window();
    if (window == nullptr) return Came::NotPossible;
    manager.outside.icons.clear();
    SendMessageW(window, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    return Came::In;
}

Came Raise(Case& manager, DISPID event, std::vector<Variant> arguments = {}) {
    return manager.Raise(event, std::move(arguments)) ? Came::In : Came::NotPossible;
}
Came Killed(Case& manager) {
    return Raise(manager, kKilled, {4711L, L"Win a prize"});
}
template <DISPID kEvent>
Came Event(Case& manager) {
    return Raise(manager, kEvent);
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
    const auto icon = manager.Icon();
    if (icon == nullptr) return Came::NotPossible;
    ComPtr<IDispatch> picture;
    manager.Form()->get_picShellIcon(&picture);
    icon->RemoveIcon();
    manager.outside.shellIsBusy = true;
    icon->AddIcon(picture.Get());
    manager.outside.shellIsBusy = false;
    return Tick(manager, kIconAgainTick);
}
Came EngineAgainTick(Case& manager) {
    if (manager.outside.engine.popup == nullptr || manager.Child(IDC_CMDAPPLY) == nullptr)
        return Came::NotPossible;
    manager.outside.engine.script.results["ReloadSettings"] = RPC_E_CALL_REJECTED;
    manager.EnableApply();
    manager.Press(IDC_CMDAPPLY);
    manager.outside.engine.script.results.clear();
    manager.outside.clock.Tick(kEngineAgainTick);
    return Came::In;
}

constexpr IncomingWork kEvents[] = {
    {.name = "the question whether to log off", .come = System<WM_QUERYENDSESSION, 0>},
    {.name = "a log-off called off", .come = System<WM_ENDSESSION, FALSE>},
    {.name = "a log-off", .come = System<WM_ENDSESSION, TRUE>, .takesWindow = true},
    {.name = "a new taskbar", .come = NewTaskbar},
    {.name = "Killed", .come = Killed},
    {.name = "Paused", .come = Event<kPaused>},
    {.name = "Started", .come = Event<kStarted>},
    {.name = "Stopped", .come = Event<kStopped>},
    {.name = "a tick of tmMenu", .come = CommandTick, .leavesCommands = true},
    {.name = "a tick of the animation", .come = FrameTick},
    {.name = "the last tick of an animation", .come = LastFrameTick},
    {.name = "a tick for an icon that was refused", .come = IconAgainTick},
    {.name = "a tick for a call that was refused", .come = EngineAgainTick, .mark = Mark::Cleared},
};

}  // namespace

std::span<const IncomingWork> IncomingEvents() {
    return kEvents;
}
