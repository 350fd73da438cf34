#include "tests/pairs/incoming_work.h"

#include <commctrl.h>

#include "app/resource.h"
#include "lists/resource.h"
#include "options/resource.h"
#include "platform/com/bstr.h"
#include "platform/com/event_connection.h"
#include "tray/picture_box.h"

namespace {

Came If(bool possible) {
    return possible ? Came::In : Came::NotPossible;
}

// --- The members of the public objects

template <long kShowType>
Came Instance(Case& manager) {
    ComPtr<IDispatch> config;
    manager.Instance(kShowType, config);
    return Came::In;
}

Came AnotherControl(Case&) {
    long showType = formShow;
    ComPtr<IDispatch> config;
    MakeObject<ConfigControl>()->ConfigInstance(&showType, &config);
    return Came::In;
}

template <HRESULT (STDMETHODCALLTYPE _Config::*kMember)(VARIANT*)>
Came ConfigMember(Case&) {
    const ComPtr<Config> config = g_oConfig;
    if (config == nullptr) return Came::NotPossible;
    Variant value;
    (static_cast<_Config*>(config.Get())->*kMember)(value.Receive());
    return Came::In;
}

Came ConfigEvents(Case&) {
    const ComPtr<Config> config = g_oConfig;
    if (config == nullptr) return Came::NotPossible;
    ResumeNext([&] { EventConnection(static_cast<_Config*>(config.Get()), __uuidof(__Config), {}); });
    return Came::In;
}

Came ConfigClass(Case&) {
    const ComPtr<Config> config = g_oConfig;
    ComPtr<IProvideClassInfo> provider;
    if (config == nullptr || FAILED(config->QueryInterface(IID_PPV_ARGS(&provider))))
        return Came::NotPossible;
    ComPtr<ITypeInfo> info;
    provider->GetClassInfo(&info);
    return Came::In;
}

template <class Member>
Came OnForm(Member member) {
    const ComPtr<frmConfig> form = g_frmConfig;
    if (form == nullptr) return Came::NotPossible;
    member(*form.Get());
    return Came::In;
}

Came Show(Case&) {
    return OnForm([](_frmConfig& form) { form.Show(); });
}
Came Hide(Case&) {
    return OnForm([](_frmConfig& form) { form.Hide(); });
}
template <VARIANT_BOOL kVisible>
Came PutVisible(Case&) {
    return OnForm([](_frmConfig& form) { form.put_Visible(kVisible); });
}
Came GetVisible(Case&) {
    return OnForm([](_frmConfig& form) {
        VARIANT_BOOL value;
        form.get_Visible(&value);
    });
}
template <VARIANT_BOOL kOk>
Came PutOkToUnload(Case&) {
    return OnForm([](_frmConfig& form) { form.put_b_OKtoUnload(kOk); });
}
Came GetOkToUnload(Case&) {
    return OnForm([](_frmConfig& form) {
        VARIANT_BOOL value;
        form.get_b_OKtoUnload(&value);
    });
}
Came GetShellIcon(Case&) {
    return OnForm([](_frmConfig& form) {
        ComPtr<IDispatch> icon;
        form.get_m_oShellIcon(&icon);
    });
}
Came GetPopup(Case&) {
    return OnForm([](_frmConfig& form) {
        ComPtr<IDispatch> popup;
        form.get_m_oPopup(&popup);
    });
}
Came GetCaption(Case&) {
    return OnForm([](_frmConfig& form) {
        BstrHandle caption;
        form.get_Caption(caption.Put());
    });
}
Came PutCaption(Case&) {
    return OnForm([](_frmConfig& form) { form.put_Caption(Variant(L"Calvane").Value().bstrVal); });
}
Came GetHwnd(Case&) {
    return OnForm([](_frmConfig& form) {
        LONG value;
        form.get_hWnd(&value);
    });
}
Came GetPicShellIcon(Case&) {
    return OnForm([](_frmConfig& form) {
        ComPtr<IDispatch> picture;
        form.get_picShellIcon(&picture);
    });
}
Came GetPicTray(Case&) {
    return OnForm([](_frmConfig& form) {
        ComPtr<IDispatch> picture;
        form.get_picTray(2, &picture);
    });
}
Came ControlHwnd(Case&) {
    return OnForm([](_frmConfig& form) {
        LONG value;
        form.ControlHwnd(Variant(L"cmdApply").Value().bstrVal, &value);
    });
}

template <class Member>
Came OnIcon(const Case& manager, Member member) {
    const auto icon = manager.Icon();
    if (icon == nullptr) return Came::NotPossible;
    member(*icon.Get());
    return Came::In;
}

Came GetToolTip(Case& manager) {
    return OnIcon(manager, [](_ShellNotification& icon) {
        BstrHandle tip;
        icon.get_ToolTip(tip.Put());
    });
}
Came PutToolTip(Case& manager) {
    return OnIcon(manager,
                  [](_ShellNotification& icon) { icon.put_ToolTip(Variant(L"Sentrel").Value().bstrVal); });
}
Came InitShellNotify(Case& manager) {
    return OnIcon(manager, [&](_ShellNotification& icon) {
        icon.InitShellNotify(HandleToLong(manager.Window()), kTrayCallback);
    });
}
Came AddIcon(Case& manager) {
    return OnIcon(manager, [&](_ShellNotification& icon) {
        ComPtr<IDispatch> picture;
        manager.Form()->get_picShellIcon(&picture);
        icon.AddIcon(picture.Get());
    });
}
Came AddForeignIcon(Case& manager) {
    return OnIcon(manager, [&](_ShellNotification& icon) {
        icon.RemoveIcon();
        icon.AddIcon(manager.outside.MakePictureBox().Get());
    });
}
Came RemoveIcon(Case& manager) {
    return OnIcon(manager, [](_ShellNotification& icon) { icon.RemoveIcon(); });
}
Came AnimateIcon(Case& manager) {
    return OnIcon(manager, [&](_ShellNotification&) { manager.Animate(); });
}
Came IconEvents(Case& manager) {
    return OnIcon(manager, [](_ShellNotification& icon) {
        ResumeNext([&] { EventConnection(&icon, __uuidof(__ShellNotification), {}); });
    });
}

ComPtr<_PictureBox> PictureOf(frmConfig& form) {
    ComPtr<IDispatch> object;
    ComPtr<_PictureBox> box;
    form.get_picTray(0, &object);
    if (object != nullptr) object->QueryInterface(IID_PPV_ARGS(&box));
    return box;
}
Came PictureName(Case&) {
    return OnForm([](frmConfig& form) {
        BstrHandle name;
        if (const auto box = PictureOf(form)) box->get_Name(name.Put());
    });
}
Came Picture(Case&) {
    return OnForm([](frmConfig& form) {
        ComPtr<IDispatch> picture;
        if (const auto box = PictureOf(form)) box->get_Picture(&picture);
    });
}

// --- The user at the window

template <int kId>
Came Press(Case& manager) {
    return If(manager.Child(kId) != nullptr && manager.IsEnabled(kId) && manager.Press(kId));
}
Came PressApply(Case& manager) {
    if (manager.Child(IDC_CMDAPPLY) == nullptr) return Came::NotPossible;
    manager.EnableApply();
    return Press<IDC_CMDAPPLY>(manager);
}
Came RemoveUrl(Case& manager) {
    return manager.Select(IDC_LSTEXCLUDE, 0) ? Press<IDC_CMDREMOVEURL>(manager) : Came::NotPossible;
}
Came AddToExclude(Case& manager) {
    return manager.Select(IDC_LSTCLOSEDWND, 0) ? Press<IDC_CMDADDTO>(manager) : Came::NotPossible;
}
template <int kList, int kRow, int kButton>
Came OnItem(Case& manager) {
    return manager.SelectItem(kList, kRow) ? Press<kButton>(manager) : Came::NotPossible;
}
template <int kList>
Came CheckItem(Case& manager) {
    const HWND list = manager.Child(kList);
    if (list == nullptr || SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) == 0) return Came::NotPossible;
    LVITEMW item{};
    item.stateMask = LVIS_STATEIMAGEMASK;
    const LRESULT state = SendMessageW(list, LVM_GETITEMSTATE, 0, LVIS_STATEIMAGEMASK);
    item.state = INDEXTOSTATEIMAGEMASK((state >> 12) == 2 ? 1U : 2U);
    SendMessageW(list, LVM_SETITEMSTATE, 0, reinterpret_cast<LPARAM>(&item));
    return Came::In;
}
template <int kTab>
Came SelectTab(Case& manager) {
    const HWND tab = manager.Child(IDC_TAB);
    if (tab == nullptr) return Came::NotPossible;
    SendMessageW(tab, TCM_SETCURFOCUS, kTab, 0);
    return Came::In;
}
Came TypeSpeed(Case& manager) {
    const HWND text = manager.Child(IDC_TXTSPEED);
    if (text == nullptr) return Came::NotPossible;
    SetWindowTextW(text, L"3");
    return Came::In;
}
Came CloseBox(Case& manager) {
    const HWND window = manager.Window();
    if (window == nullptr) return Came::NotPossible;
    SendMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0);
    PumpPosted();
    return Came::In;
}

// --- The icon and its menu

template <UINT kItem>
Came Menu(Case& manager) {
    return If(manager.Choose(kItem));
}
Came Exit(Case& manager) {
    if (!manager.Choose(mnuExit)) return Came::NotPossible;
    PumpPosted();
    return Came::In;
}
Came DoubleClick(Case& manager) {
    return If(manager.Gesture(WM_LBUTTONDBLCLK));
}

// --- The system

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

// --- The engine's events

Came Killed(Case& manager) {
    return If(manager.Raise(kKilled, {4711L, L"Win a prize"}));
}
template <DISPID kEvent>
Came Event(Case& manager) {
    return If(manager.Raise(kEvent));
}

// --- Ticks

Came CommandTick(Case& manager) {
    if (!manager.Choose(mnuPauseKiller)) return Came::NotPossible;
    return If(manager.outside.clock.Tick(kCommandTick) != 0);
}
Came FrameTick(Case& manager) {
    if (manager.Icon() == nullptr || FAILED(manager.Animate())) return Came::NotPossible;
    return If(manager.outside.clock.Tick(kFrameTick) != 0);
}
Came LastFrameTick(Case& manager) {
    if (manager.Icon() == nullptr || FAILED(manager.Animate())) return Came::NotPossible;
    for (int frame = 0; frame < 4; ++frame)
        manager.outside.clock.Tick(kFrameTick);
    return Came::In;
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
    return If(manager.outside.clock.Tick(kIconAgainTick) != 0);
}
Came EngineAgainTick(Case& manager) {
    if (manager.outside.engine.popup == nullptr || manager.Child(IDC_CMDAPPLY) == nullptr)
        return Came::NotPossible;
    manager.outside.engine.script.results["ReloadSettings"] = RPC_E_CALL_REJECTED;
    manager.EnableApply();
    const bool pressed = manager.Press(IDC_CMDAPPLY);
    manager.outside.engine.script.results.clear();
    if (!pressed) return Came::NotPossible;
    manager.outside.clock.Tick(kEngineAgainTick);
    return Came::In;
}

constexpr IncomingWork kWorks[] = {
    {.name = "ConfigInstance(1)", .come = Instance<1>, .showsWindow = true},
    {.name = "ConfigInstance(2)", .come = Instance<2>},
    {.name = "ConfigInstance(3)", .come = Instance<3>, .showsWindow = true},
    {.name = "ConfigInstance of another client", .come = AnotherControl, .showsWindow = true},
    {.name = "ConfigHwnd", .come = ConfigMember<&_Config::get_ConfigHwnd>},
    {.name = "ConfigForm", .come = ConfigMember<&_Config::get_ConfigForm>},
    {.name = "ShellIconClass", .come = ConfigMember<&_Config::get_ShellIconClass>},
    {.name = "Config's events", .come = ConfigEvents},
    {.name = "Config's class", .come = ConfigClass},
    {.name = "b_OKtoUnload", .come = GetOkToUnload},
    {.name = "b_OKtoUnload = False", .come = PutOkToUnload<VARIANT_FALSE>},
    {.name = "b_OKtoUnload = True", .come = PutOkToUnload<VARIANT_TRUE>},
    {.name = "m_oShellIcon", .come = GetShellIcon},
    {.name = "m_oPopup", .come = GetPopup},
    {.name = "Show", .come = Show, .showsWindow = true},
    {.name = "Hide", .come = Hide},
    {.name = "Visible", .come = GetVisible},
    {.name = "Visible = True", .come = PutVisible<VARIANT_TRUE>, .showsWindow = true},
    {.name = "Visible = False", .come = PutVisible<VARIANT_FALSE>},
    {.name = "Caption", .come = GetCaption},
    {.name = "Caption = text", .come = PutCaption},
    {.name = "hWnd", .come = GetHwnd},
    {.name = "picShellIcon", .come = GetPicShellIcon},
    {.name = "picTray", .come = GetPicTray},
    {.name = "ControlHwnd", .come = ControlHwnd},
    {.name = "ToolTip", .come = GetToolTip},
    {.name = "ToolTip = text", .come = PutToolTip},
    {.name = "InitShellNotify", .come = InitShellNotify},
    {.name = "AddIcon", .come = AddIcon},
    {.name = "RemoveIcon and AddIcon of a foreign picture", .come = AddForeignIcon, .takesIcon = true},
    {.name = "RemoveIcon", .come = RemoveIcon, .takesIcon = true},
    {.name = "AnimateIcon", .come = AnimateIcon},
    {.name = "the icon's events", .come = IconEvents},
    {.name = "Name of a picture box", .come = PictureName},
    {.name = "Picture of a picture box", .come = Picture},
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
    {.name = "txtSpeed", .come = TypeSpeed},
    {.name = "cmdAddURL", .come = Press<IDC_CMDADDURL>, .mark = Mark::Set},
    {.name = "cmdRemoveURL", .come = RemoveUrl, .mark = Mark::SetEvenWhileLoading, .editsExclude = -1},
    {.name = "cmdRefreshLog", .come = Press<IDC_CMDREFRESHLOG>},
    {.name = "cmdAddTo", .come = AddToExclude, .mark = Mark::Set, .editsExclude = +1},
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
    {.name = "another tab", .come = SelectTab<2>},
    {.name = "lblNavSite", .come = Press<IDC_LBLNAVSITE>},
    {.name = "imgLogo", .come = Press<IDC_IMGLOGO>},
    {.name = "the close box", .come = CloseBox},
    {.name = "mnuStartKiller", .come = Menu<mnuStartKiller>, .leavesCommands = true},
    {.name = "mnuStopKiller", .come = Menu<mnuStopKiller>, .leavesCommands = true},
    {.name = "mnuPauseKiller", .come = Menu<mnuPauseKiller>, .leavesCommands = true},
    {.name = "mnuShowConfig", .come = Menu<mnuShowConfig>, .showsWindow = true},
    {.name = "mnuExit", .come = Exit, .takesWindow = true},
    {.name = "the menu left without a choice", .come = Menu<0>},
    {.name = "a double click on the icon", .come = DoubleClick, .showsWindow = true},
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

std::span<const IncomingWork> IncomingWorks() {
    return kWorks;
}
