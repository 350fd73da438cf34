#include "tests/pairs/outgoing_calls.h"

#include "lists/resource.h"
#include "options/resource.h"
#include "tray/picture_array.h"

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

void NewTaskbar(Case& manager) {
    manager.outside.icons.clear();
    SendMessageW(manager.Window(), RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
}

void TickFrame(Case& manager) {
    manager.outside.clock.Tick(kFrameTick);
}

// A picture of another program in each slot.
void AnimateForeign(Case& manager) {
    const auto icon = manager.Icon();
    if (icon == nullptr) return;
    PictureArray pictures(0, 3);
    for (LONG i = 0; i < 3; ++i)
        pictures.Item(i, manager.outside.MakePictureBox().Get());
    icon->AnimateIcon(pictures.Reference(), kFrameTick, 1, HandleToLong(manager.Window()));
}

// As far as the last picture but the resting icon's.
void AnimateToTheEnd(Case& manager) {
    HaveForeignIcon(manager);
    manager.Animate();
    for (int frame = 0; frame < 3; ++frame)
        TickFrame(manager);
}

void HaveRefusedForeignIcon(Case& manager) {
    RemoveIcon(manager);
    manager.outside.shellIsBusy = true;
    AddForeignIcon(manager);
    manager.outside.shellIsBusy = false;
}

void TickIconAgain(Case& manager) {
    manager.outside.clock.Tick(kIconAgainTick);
}

void TickCommand(Case& manager) {
    manager.outside.clock.Tick(kCommandTick);
}

template <UINT kItem>
void Command(Case& manager) {
    manager.Choose(kItem);
}

template <int kId>
void Press(Case& manager) {
    manager.Press(kId);
}

void PressApply(Case& manager) {
    manager.EnableApply();
    manager.Press(IDC_CMDAPPLY);
}

void ApplyRefused(Case& manager) {
    manager.outside.engine.script.results["ReloadSettings"] = RPC_E_CALL_REJECTED;
    PressApply(manager);
    manager.outside.engine.script.results.clear();
}

void TickEngineAgain(Case& manager) {
    manager.outside.clock.Tick(kEngineAgainTick);
}

void RemoveDefaultSize(Case& manager) {
    manager.SelectItem(IDC_LVWBANNERS, 0);
    manager.Press(IDC_CMDREMOVESIZE);
}

void OpenMenu(Case& manager) {
    manager.Choose(0);
}

constexpr OutgoingCall kCalls[] = {
    {.name = "the engine is created", .call = "CreateInstance", .make = StartHidden},
    {.name = "CreatePopup", .call = "CreatePopup", .make = StartHidden},
    {.name = "the events are connected", .call = "Advise", .make = StartHidden},
    {.name = "State", .call = "State", .make = StartHidden},
    {.name = "the shell adds the first icon", .call = "NIM_ADD", .make = StartHidden},
    {.name = "LogFile in the first load", .call = "LogFile", .make = StartHidden, .isLoad = true},
    {.name = "LogFile in Cancel", .call = "LogFile", .make = Press<IDCANCEL>, .isLoad = true},
    {.name = "LogFile in Refresh List", .call = "LogFile", .make = Press<IDC_CMDREFRESHLOG>},
    {.name = "ReloadSettings", .call = "ReloadSettings", .make = PressApply, .mark = Mark::Cleared},
    {.name = "ReloadSettings made again",
     .call = "ReloadSettings",
     .prepare = ApplyRefused,
     .make = TickEngineAgain,
     .mark = Mark::ClearedUnlessChanged},
    {.name = "Start", .call = "Start", .prepare = Command<mnuStartKiller>, .make = TickCommand},
    {.name = "Stop", .call = "Stop", .prepare = Command<mnuStopKiller>, .make = TickCommand},
    {.name = "Pause", .call = "Pause", .prepare = Command<mnuPauseKiller>, .make = TickCommand},
    {.name = "the events are disconnected", .call = "Unadvise", .make = Exit},
    {.name = "the shell removes the last icon", .call = "NIM_DELETE", .make = Exit},
    {.name = "ReleasePopup", .call = "ReleasePopup", .make = Exit},
    {.name = "ReleasePopup in an unload by code", .call = "ReleasePopup", .make = Unload},
    {.name = "the picture of a foreign icon",
     .call = "Picture",
     .prepare = RemoveIcon,
     .make = AddForeignIcon},
    {.name = "the picture in a tick", .call = "Picture", .prepare = AnimateForeign, .make = TickFrame},
    {.name = "the picture at an animation's end",
     .call = "Picture",
     .prepare = AnimateToTheEnd,
     .make = TickFrame},
    {.name = "the picture for a new taskbar",
     .call = "Picture",
     .prepare = HaveForeignIcon,
     .make = NewTaskbar},
    {.name = "the picture for a busy shell",
     .call = "Picture",
     .prepare = HaveRefusedForeignIcon,
     .make = TickIconAgain},
    {.name = "the shell adds an icon", .call = "NIM_ADD", .prepare = RemoveIcon, .make = AddForeignIcon},
    {.name = "the shell changes an icon", .call = "NIM_MODIFY", .prepare = AnimateForeign, .make = TickFrame},
    {.name = "the shell removes an icon", .call = "NIM_DELETE", .make = RemoveIcon},
    {.name = "the shell adds the icon again",
     .call = "NIM_ADD",
     .prepare = AnimateToTheEnd,
     .make = TickFrame},
    {.name = "a dialog is open", .call = "Dialog", .make = Press<IDC_CMDADDURL>, .mark = Mark::Set},
    {.name = "a message box is open", .call = "MessageBox", .make = RemoveDefaultSize, .hasOneMoment = true},
    {.name = "the file dialog is open",
     .call = "FileDialog",
     .make = Press<IDC_CMDSOUNDFILE>,
     .mark = Mark::Set,
     .hasOneMoment = true},
    {.name = "the tray menu is open", .call = "Menu", .make = OpenMenu, .hasOneMoment = true},
};

}  // namespace

bool OutgoingCall::IsEngine() const {
    return Outside::IsEngineCall(call);
}

bool OutgoingCall::IsStart() const {
    return make == StartHidden;
}

bool OutgoingCall::IsUnload() const {
    return make == Exit || make == Unload;
}

bool OutgoingCall::LeavesCommands() const {
    return make == TickCommand;
}

std::span<const OutgoingCall> OutgoingCalls() {
    return kCalls;
}
