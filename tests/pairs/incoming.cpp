// What clients call: every member of every public object. What the user does at the window, over the icon and
// in its menu. What the system, the engine and the timers bring.
#include <commctrl.h>

#include "app/resource.h"
#include "platform/com/event_connection.h"
#include "tests/pairs/pairs.h"
#include "tests/support/automation.h"

namespace {

using Work = std::function<Came(Case&)>;
using Arguments = std::vector<Variant>;

Came If(bool possible) {
    return possible ? Came::In : Came::NotPossible;
}

template <auto kMember>
Came Do(Case& manager) {
    return If((manager.*kMember)());
}

// --- What clients call

using Find = ComPtr<IDispatch> (*)(const Case&);

ComPtr<IDispatch> ConfigOf(const Case&) {
    return static_cast<_Config*>(g_oConfig.Get());
}
ComPtr<IDispatch> FormOf(const Case&) {
    return static_cast<_frmConfig*>(g_frmConfig.Get());
}
ComPtr<IDispatch> IconOf(const Case& manager) {
    return manager.Icon().Get();
}
ComPtr<IDispatch> PictureOf(const Case& manager) {
    return manager.Picture();
}

// Of the client that was there first, or of another one.
Work Instance(long showType, bool isFirst = true) {
    return [=](Case& manager) {
        ComPtr<IDispatch> config;
        long type = showType;
        (isFirst ? manager.control : MakeObject<ConfigControl>())->ConfigInstance(&type, &config);
        return Came::In;
    };
}

// What comes back is let go, and a failure is no matter.
Work With(Find find, std::function<void(IDispatch*, Case&)> use) {
    return [=](Case& manager) {
        const ComPtr<IDispatch> object = find(manager);
        if (object != nullptr) ResumeNext([&] { use(object.Get(), manager); });
        return If(object != nullptr);
    };
}
Work Calls(Find find, const wchar_t* member, const Arguments& arguments = {}) {
    return With(find, [=](IDispatch* object, Case&) { Call(object, member, arguments); });
}
Work Gets(Find find, const wchar_t* property, const Arguments& arguments = {}) {
    return With(find, [=](IDispatch* object, Case&) { Get(object, property, arguments); });
}
Work Puts(Find find, const wchar_t* property, const Variant& value) {
    return With(find, [=](IDispatch* object, Case&) { Put(object, property, value); });
}
Work Listens(Find find, const IID& events) {
    return With(find, [events](IDispatch* object, Case&) { EventConnection(object, events, {}); });
}

void GetClass(IDispatch* object, Case&) {
    ComPtr<IProvideClassInfo> provider;
    ComPtr<ITypeInfo> info;
    if (SUCCEEDED(object->QueryInterface(IID_PPV_ARGS(&provider)))) provider->GetClassInfo(&info);
}

void Initialise(IDispatch* icon, Case& manager) {
    Call(icon, L"InitShellNotify", {HandleToLong(manager.Window()), long{kTrayCallback}});
}

void ReplaceIcon(IDispatch*, Case& manager) {
    manager.Icon()->RemoveIcon();
    manager.Icon()->AddIcon(manager.outside.MakePictureBox().Get());
}

// --- What the user does

Work Presses(int id) {
    return [=](Case& manager) { return If(manager.IsEnabled(id) && manager.Press(id)); };
}

// Selects a row and presses a button for it.
Work PressesFor(int list, int button, int row = 0) {
    return [=](Case& manager) {
        if (!manager.Select(list, row)) return Came::NotPossible;
        return manager.Press(button) ? Came::In : Came::InVain;
    };
}

Work Checks(int list) {
    return [=](Case& manager) {
        if (manager.RowCount(list) == 0) return Came::NotPossible;
        const HWND hwnd = manager.Child(list);
        ListView_SetCheckState(hwnd, 0, ListView_GetCheckState(hwnd, 0) == 0);
        return Came::In;
    };
}

Came SelectTab(Case& manager) {
    const HWND tab = manager.Child(IDC_TAB);
    SendMessageW(tab, TCM_SETCURFOCUS, 2, 0);
    return If(tab != nullptr);
}

Came TypeSpeed(Case& manager) {
    return If(SetWindowTextW(manager.Child(IDC_TXTSPEED), L"3") != FALSE);
}

Work Chooses(UINT item) {
    return [=](Case& manager) {
        if (!manager.TakesGestures()) return Came::NotPossible;
        if (!manager.Choose(item)) return Came::InVain;
        if (item == mnuExit) PumpPosted();
        return Came::In;
    };
}

// --- What the system, the engine and the timers bring

Work Sends(UINT message, WPARAM parameter) {
    return [=](Case& manager) {
        const HWND window = manager.Window();
        if (window == nullptr) return Came::NotPossible;
        SendMessageW(window, message, parameter, 0);
        if (message == WM_SYSCOMMAND) PumpPosted();
        return Came::In;
    };
}

Work Raises(DISPID event, const Arguments& arguments = {}) {
    return [=](Case& manager) {
        FakeEngine& engine = manager.outside.engine;
        if (engine.popup == nullptr || engine.ConnectionCount() == 0) return Came::NotPossible;
        engine.Raise(event, arguments);
        return Came::In;
    };
}

Came Tick(Case& manager, UINT interval) {
    return manager.outside.clock.Tick(interval) != 0 ? Came::In : Came::InVain;
}
Came CommandTick(Case& manager) {
    if (!manager.TakesGestures()) return Came::NotPossible;
    return manager.Choose(mnuPauseKiller) ? Tick(manager, kCommandTick) : Came::InVain;
}
// Of an animation; the fourth is the last.
template <int kTicks>
Came FrameTicks(Case& manager) {
    if (manager.Icon() == nullptr) return Came::NotPossible;
    Came came = SUCCEEDED(manager.Animate()) ? Came::In : Came::InVain;
    for (int i = 0; i < kTicks && came == Came::In; ++i)
        came = Tick(manager, kFrameTick);
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

constexpr IncomingTraits kRemovedURL{
    .mark = Mark::SetEvenWhileLoading, .editedList = IDC_LSTEXCLUDE, .edit = -1};
constexpr IncomingTraits kAddedURL{.mark = Mark::Set, .editedList = IDC_LSTEXCLUDE, .edit = +1};
constexpr IncomingTraits kRemovedSize{.mark = Mark::Set, .editedList = IDC_LVWBANNERS, .edit = -1};
constexpr IncomingTraits kRemovedSearch{.mark = Mark::Set, .editedList = IDC_LVWSEARCHURLS, .edit = -1};
constexpr IncomingTraits kShown{.showsWindow = true};
constexpr IncomingTraits kMarked{.mark = Mark::Set};
constexpr IncomingTraits kStored{.mark = Mark::Cleared};
constexpr IncomingTraits kCommand{.leavesCommands = true};

}  // namespace

const std::vector<IncomingWork>& IncomingWorks() {
    static const std::vector<IncomingWork> works{
        {"ConfigInstance(1)", Instance(1), kShown},
        {"ConfigInstance(2)", Instance(2)},
        {"ConfigInstance(3)", Instance(3), kShown},
        {"ConfigInstance of another client", Instance(1, false), kShown},
        {"ConfigHwnd", Gets(ConfigOf, L"ConfigHwnd")},
        {"ConfigForm", Gets(ConfigOf, L"ConfigForm")},
        {"ShellIconClass", Gets(ConfigOf, L"ShellIconClass")},
        {"Config's events", Listens(ConfigOf, __uuidof(__Config))},
        {"Config's class", With(ConfigOf, GetClass)},
        {"b_OKtoUnload", Gets(FormOf, L"b_OKtoUnload")},
        {"b_OKtoUnload = False", Puts(FormOf, L"b_OKtoUnload", false)},
        {"b_OKtoUnload = True", Puts(FormOf, L"b_OKtoUnload", true)},
        {"m_oShellIcon", Gets(FormOf, L"m_oShellIcon")},
        {"m_oPopup", Gets(FormOf, L"m_oPopup")},
        {"Show", Calls(FormOf, L"Show"), kShown},
        {"Hide", Calls(FormOf, L"Hide")},
        {"Visible", Gets(FormOf, L"Visible")},
        {"Visible = True", Puts(FormOf, L"Visible", true), kShown},
        {"Visible = False", Puts(FormOf, L"Visible", false)},
        {"Caption", Gets(FormOf, L"Caption")},
        {"Caption = text", Puts(FormOf, L"Caption", L"Calvane")},
        {"hWnd", Gets(FormOf, L"hWnd")},
        {"picShellIcon", Gets(FormOf, L"picShellIcon")},
        {"picTray", Gets(FormOf, L"picTray", {2L})},
        {"ControlHwnd", Calls(FormOf, L"ControlHwnd", {L"cmdApply"})},
        {"ToolTip", Gets(IconOf, L"ToolTip")},
        {"ToolTip = text", Puts(IconOf, L"ToolTip", L"Sentrel")},
        {"InitShellNotify", With(IconOf, Initialise)},
        {"AddIcon", With(IconOf, [](IDispatch*, Case& manager) { manager.AddIcon(); })},
        {"RemoveIcon and AddIcon of a foreign picture", With(IconOf, ReplaceIcon), {.takesIcon = true}},
        {"RemoveIcon", Calls(IconOf, L"RemoveIcon"), {.takesIcon = true}},
        {"AnimateIcon", With(IconOf, [](IDispatch*, Case& manager) { manager.Animate(); })},
        {"the icon's events", Listens(IconOf, __uuidof(__ShellNotification))},
        {"Name of a picture box", Gets(PictureOf, L"Name")},
        {"Picture of a picture box", Gets(PictureOf, L"Picture")},

        {"cmdOK", Presses(IDC_CMDOK), kStored},
        {"cmdApply", Do<&Case::PressApply>, kStored},
        {"cmdCancel", Presses(IDCANCEL)},
        {"optStartup", Presses(IDC_OPTSTARTUP), kMarked},
        {"optLoadWithKiller", Presses(IDC_OPTLOADWITHKILLER), kMarked},
        {"optLoadFromMenu", Presses(IDC_OPTLOADFROMMENU), kMarked},
        {"chkPlaySound", Presses(IDC_CHKPLAYSOUND), kMarked},
        {"cmdSoundFile", Presses(IDC_CMDSOUNDFILE), kMarked},
        {"cmdTestSound", Presses(IDC_CMDTESTSOUND)},
        {"chkBeep", Presses(IDC_CHKBEEP), kMarked},
        {"txtSpeed", TypeSpeed, {.typesText = true}},
        {"cmdAddURL", Presses(IDC_CMDADDURL), kMarked},
        {"cmdRemoveURL", PressesFor(IDC_LSTEXCLUDE, IDC_CMDREMOVEURL), kRemovedURL},
        {"cmdRefreshLog", Presses(IDC_CMDREFRESHLOG)},
        {"cmdAddTo", PressesFor(IDC_LSTCLOSEDWND, IDC_CMDADDTO), kAddedURL},
        {"cmdClearList", Presses(IDC_CMDCLEARLIST), kMarked},
        {"lvwBanners' check mark", Checks(IDC_LVWBANNERS), kMarked},
        {"cmdAddSize", Presses(IDC_CMDADDSIZE), kMarked},
        {"cmdRemoveSize", PressesFor(IDC_LVWBANNERS, IDC_CMDREMOVESIZE, 4), kRemovedSize},
        {"cmdRemoveSize on a default", PressesFor(IDC_LVWBANNERS, IDC_CMDREMOVESIZE)},
        {"lvwSearchURLs' check mark", Checks(IDC_LVWSEARCHURLS), kMarked},
        {"cmdAddSearch", Presses(IDC_CMDADDSEARCH), kMarked},
        {"cmdEditSearch", PressesFor(IDC_LVWSEARCHURLS, IDC_CMDEDITSEARCH), kMarked},
        {"cmdRemoveSearch", PressesFor(IDC_LVWSEARCHURLS, IDC_CMDREMOVESEARCH), kRemovedSearch},
        {"another tab", SelectTab},
        {"lblNavSite", Presses(IDC_LBLNAVSITE)},
        {"imgLogo", Presses(IDC_IMGLOGO)},
        {"the close box", Sends(WM_SYSCOMMAND, SC_CLOSE)},
        {"mnuStartKiller", Chooses(mnuStartKiller), kCommand},
        {"mnuStopKiller", Chooses(mnuStopKiller), kCommand},
        {"mnuPauseKiller", Chooses(mnuPauseKiller), kCommand},
        {"mnuShowConfig", Chooses(mnuShowConfig), kShown},
        {"mnuExit", Chooses(mnuExit), {.takesWindow = true}},
        {"the menu left without a choice", Chooses(0)},
        {"a double click on the icon", [](Case& manager) { return If(manager.Gesture(WM_LBUTTONDBLCLK)); },
         kShown},

        {"the question whether to log off", Sends(WM_QUERYENDSESSION, 0)},
        {"a log-off called off", Sends(WM_ENDSESSION, FALSE)},
        {"a log-off", Sends(WM_ENDSESSION, TRUE), {.takesWindow = true}},
        {"a new taskbar", Do<&Case::NewTaskbar>},
        {"Killed", Raises(1, {4711L, L"Win a prize"})},
        {"Paused", Raises(2)},
        {"Started", Raises(3)},
        {"Stopped", Raises(4)},
        {"a tick of tmMenu", CommandTick, kCommand},
        {"a tick of the animation", FrameTicks<1>},
        {"the last tick of an animation", FrameTicks<4>},
        {"a tick for an icon that was refused", IconAgainTick},
        {"a tick for a call that was refused", EngineAgainTick, kStored},
    };
    return works;
}
