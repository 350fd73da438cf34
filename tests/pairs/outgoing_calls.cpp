// Every call that the manager makes out of its own code, and how it comes to be made.
#include "tests/pairs/pairs.h"

namespace {

void StartHidden(Case& manager) {
    ComPtr<IDispatch> config;
    manager.Instance(FormHide, config);
}

void Unload(Case& manager) {
    if (const auto form = manager.Form()) form->Unload();
}

void Exit(Case& manager) {
    const HWND window = manager.Window();
    if (manager.Form() == nullptr || window == nullptr) return;
    manager.Form()->put_b_OKtoUnload(VARIANT_TRUE);
    SendMessageW(window, WM_CLOSE, 0, 0);
}

void AddForeignIcon(Case& manager) {
    const auto icon = manager.Icon();
    if (icon == nullptr) return;
    icon->AddIcon(manager.outside.MakePictureBox().Get());
}

void RemoveIcon(Case& manager) {
    manager.Icon()->RemoveIcon();
}

void HaveForeignIcon(Case& manager) {
    RemoveIcon(manager);
    AddForeignIcon(manager);
}

void AnimateForeign(Case& manager) {
    manager.Animate(true);
}

// As far as the last picture but the resting icon's.
void AnimateToTheEnd(Case& manager) {
    HaveForeignIcon(manager);
    manager.Animate();
    for (int frame = 0; frame < 3; ++frame)
        manager.outside.clock.Tick(kFrameTick);
}

void HaveRefusedForeignIcon(Case& manager) {
    manager.HaveRefusedIcon(manager.outside.MakePictureBox().Get());
}

template <UINT kInterval>
void Tick(Case& manager) {
    manager.outside.clock.Tick(kInterval);
}

template <UINT kItem>
void Choose(Case& manager) {
    manager.Choose(kItem);
}

template <int kId>
void Press(Case& manager) {
    manager.Press(kId);
}

// What the member function does with the manager.
template <auto kMember>
void Do(Case& manager) {
    (manager.*kMember)();
}

void RemoveDefaultSize(Case& manager) {
    manager.Select(IDC_LVWBANNERS, 0);
    manager.Press(IDC_CMDREMOVESIZE);
}

constexpr auto PressApply = Do<&Case::PressApply>;

const OutgoingCall kCalls[] = {
    {"the engine is created", "CreateInstance", StartHidden},
    {"CreatePopup", "CreatePopup", StartHidden},
    {"the events are connected", "Advise", StartHidden},
    {"State", "State", StartHidden},
    {"the shell adds the first icon", "NIM_ADD", StartHidden},
    {"LogFile in the first load", "LogFile", StartHidden, {.isLoad = true}},
    {"LogFile in Cancel", "LogFile", Press<IDCANCEL>, {.isLoad = true}},
    {"LogFile in Refresh List", "LogFile", Press<IDC_CMDREFRESHLOG>},
    {"ReloadSettings", "ReloadSettings", PressApply, {.mark = Mark::Cleared}},
    {"ReloadSettings made again",
     "ReloadSettings",
     Tick<kEngineAgainTick>,
     {.prepare = Do<&Case::HaveRefusedChange>, .mark = Mark::ClearedUnlessChanged}},
    {"Start", "Start", Tick<kCommandTick>, {.prepare = Choose<mnuStartKiller>, .leavesCommands = true}},
    {"Stop", "Stop", Tick<kCommandTick>, {.prepare = Choose<mnuStopKiller>, .leavesCommands = true}},
    {"Pause", "Pause", Tick<kCommandTick>, {.prepare = Choose<mnuPauseKiller>, .leavesCommands = true}},
    {"the events are disconnected", "Unadvise", Exit},
    {"the shell removes the last icon", "NIM_DELETE", Exit},
    {"ReleasePopup", "ReleasePopup", Exit},
    {"ReleasePopup in an unload by code", "ReleasePopup", Unload},
    {"the picture of a foreign icon", "Picture", AddForeignIcon, {.prepare = RemoveIcon}},
    {"the picture in a tick", "Picture", Tick<kFrameTick>, {.prepare = AnimateForeign}},
    {"the picture at an animation's end", "Picture", Tick<kFrameTick>, {.prepare = AnimateToTheEnd}},
    {"the picture for a new taskbar", "Picture", Do<&Case::NewTaskbar>, {.prepare = HaveForeignIcon}},
    {"the picture for a busy shell", "Picture", Tick<kIconAgainTick>, {.prepare = HaveRefusedForeignIcon}},
    {"the shell adds an icon", "NIM_ADD", AddForeignIcon, {.prepare = RemoveIcon}},
    {"the shell changes an icon", "NIM_MODIFY", Tick<kFrameTick>, {.prepare = AnimateForeign}},
    {"the shell removes an icon", "NIM_DELETE", RemoveIcon},
    {"the shell adds the icon again", "NIM_ADD", Tick<kFrameTick>, {.prepare = AnimateToTheEnd}},
    {"a dialog is open", "Dialog", Press<IDC_CMDADDURL>, {.mark = Mark::Set}},
    {"a message box is open", "MessageBox", RemoveDefaultSize, {.hasOneMoment = true}},
    {"the file dialog is open",
     "FileDialog",
     Press<IDC_CMDSOUNDFILE>,
     {.mark = Mark::Set, .hasOneMoment = true}},
    {"the tray menu is open", "Menu", Choose<0>, {.hasOneMoment = true}},
};

}  // namespace

bool OutgoingCall::IsStart() const {
    return make == StartHidden;
}

bool OutgoingCall::IsExit() const {
    return make == Exit;
}

bool OutgoingCall::IsUnload() const {
    return IsExit() || make == Unload;
}

std::span<const OutgoingCall> OutgoingCalls() {
    return kCalls;
}
