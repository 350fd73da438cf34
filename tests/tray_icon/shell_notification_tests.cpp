#include <doctest.h>

#include <olectl.h>

#include "app/resource.h"
#include "platform/com/event_connection.h"
#include "tray/picture_box.h"
#include "tests/support/message_pump.h"
#include "tests/tray_icon/hook_calls.h"
#include "tests/tray_icon/tray_icon_fixture.h"
#include "tray/bas_shell_notify.h"

namespace {

using Actions = std::vector<DWORD>;

LONG HookProcedure() {
    return static_cast<LONG>(reinterpret_cast<LONG_PTR>(&TrayWindowProc));
}

const std::string kTipBytes = std::string("Calvane Sentrel\0", 16) + std::string(48, ' ');
const std::string kNoTipBytes = std::string(1, '\0') + std::string(63, ' ');

std::wstring TipOf(ShellNotification& icon) {
    Variant tip;
    VARIANT* const value = tip.Receive();
    value->vt = VT_BSTR;
    value->bstrVal = nullptr;
    icon.get_ToolTip(&value->bstrVal);
    return ToText(tip);
}

}  // namespace

TEST_CASE_FIXTURE(TrayIconFixture,
                  "setting up hooks the window and shows the resting icon with an empty tip") {
    SetUp();
    CHECK(window.Procedure() == HookProcedure());
    REQUIRE(shell.Actions() == Actions{NIM_ADD});
    const ShellCall& call = shell.calls[0];
    CHECK(call.record.size() == 88);
    CHECK(call.Number(0) == 88);
    CHECK(call.Number(4) == static_cast<DWORD>(window.Number()));
    CHECK(call.Number(8) == 1);
    CHECK(call.Number(12) == 7);
    CHECK(call.Number(16) == 1025);
    CHECK(call.Icon() == kRestHandle);
    CHECK(call.Tip() == kNoTipBytes);
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "a new tip reaches the shell with the next change of the icon, not before") {
    SetUp();
    SetTip(L"Calvane Sentrel");
    CHECK(shell.calls.size() == 1);
    REQUIRE(Animate(10) == S_OK);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 2; }));
    CHECK(shell.calls[1].action == NIM_MODIFY);
    CHECK(shell.calls[1].Tip() == kTipBytes);
}

TEST_CASE_FIXTURE(TrayIconFixture, "a new tip reaches the shell with the next add") {
    SetUp();
    icon->RemoveIcon();
    icon->AddIcon(rest.Get());
    REQUIRE(shell.Actions() == Actions{NIM_ADD, NIM_DELETE, NIM_ADD});
    CHECK(shell.calls[2].Tip() == kTipBytes);
}

TEST_CASE_FIXTURE(TrayIconFixture, "the tip is kept as it was set") {
    CHECK(TipOf(*icon.Get()).empty());
    const std::wstring tip = std::wstring(70, L'x') + L"\x2603";
    SetTip(tip);
    CHECK(TipOf(*icon.Get()) == tip);
    CHECK(icon->put_ToolTip(nullptr) == S_OK);
    CHECK(TipOf(*icon.Get()).empty());
    CHECK(icon->get_ToolTip(nullptr) == E_POINTER);
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "adding while an icon is added changes nothing, not even the resting picture") {
    SetUp();
    CHECK(icon->AddIcon(frames[0].Get()) == S_OK);
    CHECK(shell.calls.size() == 1);
    CHECK(frames[0]->References() == 1);

    REQUIRE(Animate(10, 1) == S_OK);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 4; }));
    CHECK(shell.calls.back().Icon() == kRestHandle);
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "a picture that is added after a removal is the resting picture from then on") {
    SetUp();
    icon->RemoveIcon();
    CHECK(icon->AddIcon(frames[3].Get()) == S_OK);
    CHECK(rest->References() == 1);
    REQUIRE(Animate(10, 1) == S_OK);
    REQUIRE(PumpUntil([&] { return !icon->Animating(); }));
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE, NIM_ADD, NIM_MODIFY, NIM_DELETE, NIM_ADD});
    CHECK(shell.calls.back().Icon() == kFrameHandle + 3);
}

TEST_CASE_FIXTURE(TrayIconFixture, "removing sends the record as it stands from the last add") {
    SetUp();
    CHECK(icon->RemoveIcon() == S_OK);
    REQUIRE(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
    CHECK(shell.calls[1].record == shell.calls[0].record);
}

TEST_CASE_FIXTURE(TrayIconFixture, "removing sends the record as it stands from the last change") {
    SetUp();
    REQUIRE(Animate(10) == S_OK);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 2; }));
    icon->RemoveIcon();
    REQUIRE(shell.calls.back().action == NIM_DELETE);
    CHECK(shell.calls.back().record == shell.calls[shell.calls.size() - 2].record);
}

TEST_CASE_FIXTURE(TrayIconFixture, "removing twice removes once") {
    SetUp();
    icon->RemoveIcon();
    CHECK(icon->RemoveIcon() == S_OK);
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
}

TEST_CASE_FIXTURE(TrayIconFixture, "removing what was never added does nothing") {
    CHECK(icon->RemoveIcon() == S_OK);
    CHECK(shell.calls.empty());
}

TEST_CASE_FIXTURE(TrayIconFixture, "a refused add and a refused removal count as done") {
    shell.result = [](DWORD) { return FALSE; };
    SetUp();
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(shell.Actions() == Actions{NIM_ADD});
    icon->RemoveIcon();
    icon->RemoveIcon();
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
}

TEST_CASE_FIXTURE(TrayIconFixture, "a picture box without a picture fails, and no icon is added") {
    icon->InitShellNotify(window.Number(), 1025);
    CHECK(icon->AddIcon(nullptr) == HresultOf(ErrorNumber::ObjectNotSet));
    rest->result = E_FAIL;
    CHECK(icon->AddIcon(rest.Get()) == E_FAIL);
    CHECK(shell.calls.empty());
    rest->result = S_OK;
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(shell.Actions() == Actions{NIM_ADD});
}

TEST_CASE_FIXTURE(TrayIconFixture, "the icon of a real picture box goes to the shell") {
    icon->InitShellNotify(window.Number(), 1025);
    const auto box = MakeObject<PictureBox>(L"picShellIcon", IDI_TRAY_REST);
    CHECK(icon->AddIcon(box.Get()) == S_OK);
    REQUIRE(shell.calls.size() == 1);
    ICONINFO info{};
    REQUIRE(GetIconInfo(reinterpret_cast<HICON>(static_cast<ULONG_PTR>(shell.calls[0].Icon())), &info));
    CHECK(info.fIcon);
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "setting up the same window twice hooks it once and takes the new message") {
    icon->InitShellNotify(window.Number(), 1025);
    {
        HookCalls hook;
        CHECK(icon->InitShellNotify(window.Number(), 1026) == S_OK);
        CHECK(hook.calls == std::vector<std::string>{"GetProp OldWndProc"});
    }
    icon->AddIcon(rest.Get());
    REQUIRE(shell.calls.size() == 1);
    CHECK(shell.calls[0].Number(16) == 1026);
    icon->Class_Terminate();
    CHECK(window.Procedure() != HookProcedure());
}

TEST_CASE_FIXTURE(TrayIconFixture, "a second set-up takes the new window") {
    PlainWindow second;
    icon->InitShellNotify(window.Number(), 1025);
    icon->InitShellNotify(second.Number(), 1025);
    icon->AddIcon(rest.Get());
    REQUIRE(shell.calls.size() == 1);
    CHECK(shell.calls[0].Number(4) == static_cast<DWORD>(second.Number()));
    icon->Class_Terminate();
    CHECK(second.Procedure() != HookProcedure());
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "a window that cannot be hooked is not reported and the icon is still added") {
    HookCalls hook;
    hook.failSetProp = true;
    CHECK(icon->InitShellNotify(window.Number(), 1025) == S_OK);
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(shell.Actions() == Actions{NIM_ADD});
    // The icon's messages reach the window's own procedure.
    CHECK(SendMessageA(window.Hwnd(), 1025, 1, 0x203) == PlainWindow::kAnswer);
    CHECK(window.Count(1025) == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "releasing the object removes the icon, then puts the window's procedure back") {
    const LONG before = window.Procedure();
    SetUp();
    HookCalls hook;
    bool wasHookedAtRemoval = false;
    shell.result = [&](DWORD action) {
        if (action == NIM_DELETE) wasHookedAtRemoval = hook.calls.empty();
        return TRUE;
    };
    icon.Reset();
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
    CHECK(wasHookedAtRemoval);
    CHECK(hook.calls ==
          std::vector<std::string>{"GetProp OldWndProc", "RemoveProp OldWndProc", "SetWindowLong -4"});
    CHECK(window.Procedure() == before);
    CHECK(rest->References() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture, "an object that added nothing removes nothing") {
    icon->InitShellNotify(window.Number(), 1025);
    icon.Reset();
    CHECK(shell.calls.empty());
    CHECK(window.Procedure() != HookProcedure());
}

TEST_CASE_FIXTURE(TrayIconFixture, "an object that was never set up goes quietly") {
    HookCalls hook;
    icon.Reset();
    CHECK(shell.calls.empty());
    CHECK(hook.calls == std::vector<std::string>{"GetProp OldWndProc"});
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "an icon that its owner let go of stays away whatever a client still asks for") {
    SetUp();
    const ComPtr<IDispatch> client = icon;
    icon->Class_Terminate();
    REQUIRE(shell.Actions() == Actions{NIM_ADD, NIM_DELETE});
    CHECK(window.Procedure() != HookProcedure());
    CHECK(rest->References() == 1);

    CHECK(icon->InitShellNotify(window.Number(), 1025) == S_OK);
    CHECK(window.Procedure() != HookProcedure());
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(Animate(10) == S_OK);
    CHECK(icon->RemoveIcon() == S_OK);
    icon->OnTaskbarCreated();
    icon->Class_Terminate();
    SetTip(L"still mine");
    CHECK(TipOf(*icon.Get()) == L"still mine");
    PumpFor(60);
    CHECK(shell.calls.size() == 2);
    CHECK(rest->References() == 1);
}

TEST_CASE_FIXTURE(TrayIconFixture,
                  "a picture that lets the owner's release in while it is asked adds no icon") {
    icon->InitShellNotify(window.Number(), 1025);
    rest->asked = [this] { icon->Class_Terminate(); };
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(shell.calls.empty());
}

TEST_CASE_FIXTURE(TrayIconFixture, "a script reaches every member by name") {
    struct Member {
        const wchar_t* name;
        DISPID id;
    };
    for (const Member& member : {Member{L"ToolTip", 1}, Member{L"InitShellNotify", 2}, Member{L"AddIcon", 3},
                                 Member{L"RemoveIcon", 4}, Member{L"AnimateIcon", 5}}) {
        LPOLESTR name = const_cast<LPOLESTR>(member.name);
        DISPID id = DISPID_UNKNOWN;
        CHECK(icon->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id) == S_OK);
        CHECK(id == member.id);
    }
}

TEST_CASE_FIXTURE(TrayIconFixture, "an animation can be started through the dispatch interface") {
    SetUp();
    PictureArray pictures = Slots(1);
    VARIANT arguments[4]{};
    arguments[3].vt = VT_ARRAY | VT_DISPATCH | VT_BYREF;
    arguments[3].pparray = pictures.Reference();
    for (int i = 0; i < 3; ++i)
        arguments[i].vt = VT_I4;
    arguments[2].lVal = 10;
    arguments[1].lVal = 1;
    arguments[0].lVal = window.Number();
    DISPPARAMS parameters{arguments, nullptr, 4, 0};
    CHECK(icon->Invoke(5, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr, nullptr,
                       nullptr) == S_OK);
    REQUIRE(PumpUntil([&] { return shell.calls.size() >= 4; }));
    CHECK(shell.Actions() == Actions{NIM_ADD, NIM_MODIFY, NIM_DELETE, NIM_ADD});
}

TEST_CASE_FIXTURE(TrayIconFixture, "clients can connect to MouseUp, and nothing ever raises it") {
    int raised = 0;
    EventConnection connection(static_cast<IDispatch*>(icon.Get()), __uuidof(__ShellNotification),
                               {{1, [&](const DISPPARAMS&) { ++raised; }}});
    SetUp();
    g_lngConfigHwnd = window.Number();
    for (LPARAM gesture = 0x200; gesture <= 0x209; ++gesture)
        SendMessageA(window.Hwnd(), 0x401, 1, gesture);
    Animate(10, 1);
    PumpUntil([&] { return shell.calls.size() >= 4; });
    icon->Class_Terminate();
    g_lngConfigHwnd = 0;
    CHECK(raised == 0);
}

TEST_CASE_FIXTURE(TrayIconFixture, "the icon has one event interface") {
    ComPtr<IConnectionPointContainer> container;
    REQUIRE(SUCCEEDED(icon.As(&container)));
    ComPtr<IConnectionPoint> point;
    CHECK(container->FindConnectionPoint(__uuidof(__ShellNotification), &point) == S_OK);
    point.Reset();
    CHECK(container->FindConnectionPoint(IID_IDispatch, &point) == CONNECT_E_NOCONNECTION);
}
