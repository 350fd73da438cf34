#include <doctest.h>

#include <utility>

#include "app/resource.h"
#include "platform/com/event_connection.h"
#include "tests/support/automation.h"
#include "tests/tray_icon/hook_calls.h"
#include "tests/tray_icon/tray_icon_fixture.h"
#include "tray/bas_shell_notify.h"
#include "tray/picture_box.h"

namespace {

struct IconFixture : TrayIconFixture {
    static bool IsHooked(const PlainWindow& window) {
        return window.Procedure() == PtrToLong(reinterpret_cast<void*>(&TrayWindowProc));
    }

    std::wstring Tip() const {
        Variant tip;
        VARIANT* const value = tip.Receive();
        value->vt = VT_BSTR;
        value->bstrVal = nullptr;
        icon->get_ToolTip(&value->bstrVal);
        return ToText(tip);
    }
};

}  // namespace

TEST_CASE_FIXTURE(IconFixture, "setting up hooks the window and shows the resting icon with an empty tip") {
    SetUp();
    CHECK(IsHooked(window));
    REQUIRE(Story() == "add rest");
    const NotifyIconRecord record =
        MakeNotifyIconRecord(window.Hwnd(), 1025, static_cast<HICON>(LongToHandle(kRestHandle)), L"");
    CHECK(shell.calls[0].record == std::string(reinterpret_cast<const char*>(&record), sizeof(record)));
}

TEST_CASE_FIXTURE(IconFixture,
                  "a new tip reaches the shell with the next change or add of the icon, not before") {
    SetUp();
    CHECK(shell.calls.size() == 1);
    SUBCASE("change") {
        REQUIRE(Animate(10) == S_OK);
        REQUIRE(Asked(2));
        CHECK(shell.calls[1].action == NIM_MODIFY);
    }
    SUBCASE("add") {
        icon->RemoveIcon();
        icon->AddIcon(rest.Get());
        CHECK(Story() == "add rest, delete, add rest");
    }
    CHECK(shell.calls.back().Tip() == kTipBytes);
}

TEST_CASE_FIXTURE(IconFixture, "the tip is kept as it was set") {
    CHECK(Tip().empty());
    const std::wstring tip = std::wstring(70, L'x') + L"\x2603";
    SetTip(tip);
    CHECK(Tip() == tip);
    CHECK(icon->put_ToolTip(nullptr) == S_OK);
    CHECK(Tip().empty());
    CHECK(icon->get_ToolTip(nullptr) == E_POINTER);
}

TEST_CASE_FIXTURE(IconFixture,
                  "adding while an icon is added changes nothing, not even the resting picture, which is "
                  "from then on the one that is added after a removal") {
    SetUp();
    CHECK(icon->AddIcon(frames[3].Get()) == S_OK);
    CHECK(frames[3]->References() == 1);
    REQUIRE(Animate(10, 1) == S_OK);
    REQUIRE(Ends());
    CHECK(Story() == "add rest, 0, delete, add rest");
    shell.calls.clear();
    icon->RemoveIcon();
    CHECK(icon->AddIcon(frames[3].Get()) == S_OK);
    CHECK(rest->References() == 1);
    REQUIRE(Animate(10, 1) == S_OK);
    REQUIRE(Ends());
    CHECK(Story() == "delete, add 3, 0, delete, add 3");
}

TEST_CASE_FIXTURE(IconFixture, "removing sends the record as it stands from the last add or change") {
    SetUp();
    SUBCASE("add") {}
    SUBCASE("change") {
        REQUIRE(Animate(10) == S_OK);
        REQUIRE(Asked(2));
    }
    CHECK(icon->RemoveIcon() == S_OK);
    REQUIRE(shell.calls.back().action == NIM_DELETE);
    CHECK(shell.calls.back().record == shell.calls[shell.calls.size() - 2].record);
}

TEST_CASE_FIXTURE(IconFixture,
                  "what is not added is not removed; a refused add and a refused removal count as done") {
    CHECK(icon->RemoveIcon() == S_OK);
    CHECK(shell.calls.empty());
    shell.result = [](DWORD) { return FALSE; };
    SetUp();
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(Story() == "add rest");
    icon->RemoveIcon();
    CHECK(icon->RemoveIcon() == S_OK);
    CHECK(Story() == "add rest, delete");
}

TEST_CASE_FIXTURE(IconFixture, "a picture box without a picture fails, and no icon is added") {
    icon->InitShellNotify(window.Number(), 1025);
    CHECK(icon->AddIcon(nullptr) == HresultOf(ErrorNumber::ObjectNotSet));
    rest->result = E_FAIL;
    CHECK(icon->AddIcon(rest.Get()) == E_FAIL);
    CHECK(shell.calls.empty());
    rest->result = S_OK;
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(Story() == "add rest");
}

TEST_CASE_FIXTURE(IconFixture, "the icon of a real picture box goes to the shell") {
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

TEST_CASE_FIXTURE(IconFixture,
                  "a second set-up hooks a window that is hooked once only, and takes window and message") {
    PlainWindow second;
    icon->InitShellNotify(second.Number(), 1025);
    icon->InitShellNotify(window.Number(), 1025);
    {
        HookCalls hook;
        CHECK(icon->InitShellNotify(window.Number(), 1026) == S_OK);
        CHECK(hook.calls == std::vector<std::string>{"GetProp OldWndProc"});
    }
    icon->AddIcon(rest.Get());
    REQUIRE(shell.calls.size() == 1);
    CHECK(shell.calls[0].Number(4) == static_cast<DWORD>(window.Number()));
    CHECK(shell.calls[0].Number(16) == 1026);
    icon->Class_Terminate();
    CHECK_FALSE(IsHooked(window));
}

TEST_CASE_FIXTURE(IconFixture, "a window that cannot be hooked is not reported and the icon is still added") {
    HookCalls hook;
    hook.failing = {"SetProp"};
    CHECK(icon->InitShellNotify(window.Number(), 1025) == S_OK);
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(Story() == "add rest");
    CHECK_FALSE(IsHooked(window));
}

TEST_CASE_FIXTURE(IconFixture,
                  "releasing the object removes the icon, then puts the window's procedure back") {
    const LONG before = window.Procedure();
    SetUp();
    bool wasHookedAtRemoval = false;
    shell.result = [&](DWORD) {
        wasHookedAtRemoval = IsHooked(window);
        return TRUE;
    };
    icon.Reset();
    CHECK(Story() == "add rest, delete");
    CHECK(wasHookedAtRemoval);
    CHECK(window.Procedure() == before);
    CHECK(rest->References() == 1);
}

TEST_CASE_FIXTURE(IconFixture, "an object that added nothing removes nothing, and unhooks what it hooked") {
    SUBCASE("set up") {
        icon->InitShellNotify(window.Number(), 1025);
        icon.Reset();
        CHECK_FALSE(IsHooked(window));
    }
    SUBCASE("never set up") {
        icon.Reset();
    }
    CHECK(shell.calls.empty());
}

TEST_CASE_FIXTURE(IconFixture,
                  "an icon that its owner let go of stays away whatever a client still asks for") {
    SetUp();
    const ComPtr<IDispatch> client = icon;
    icon->Class_Terminate();
    CHECK_FALSE(IsHooked(window));

    CHECK(icon->InitShellNotify(window.Number(), 1025) == S_OK);
    CHECK_FALSE(IsHooked(window));
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(Animate(10) == S_OK);
    CHECK(icon->RemoveIcon() == S_OK);
    icon->OnTaskbarCreated();
    icon->Class_Terminate();
    SetTip(L"still mine");
    CHECK(Tip() == L"still mine");
    PumpFor(60);
    CHECK(Story() == "add rest, delete");
    CHECK(rest->References() == 1);
}

TEST_CASE_FIXTURE(IconFixture, "a picture that lets the owner's release in while it is asked adds no icon") {
    icon->InitShellNotify(window.Number(), 1025);
    rest->asked = [this] { icon->Class_Terminate(); };
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(shell.calls.empty());
}

TEST_CASE_FIXTURE(IconFixture, "a script reaches every member by name, and can start an animation") {
    const std::pair<const wchar_t*, DISPID> members[] = {
        {L"ToolTip", 1}, {L"InitShellNotify", 2}, {L"AddIcon", 3}, {L"RemoveIcon", 4}, {L"AnimateIcon", 5}};
    for (const auto& [name, number] : members) {
        LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
        DISPID id = DISPID_UNKNOWN;
        CHECK(icon->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id) == S_OK);
        CHECK(id == number);
    }
    SetUp();
    PictureArray pictures = Slots(1);
    Variant array;
    VARIANT* const received = array.Receive();
    received->vt = VT_ARRAY | VT_DISPATCH | VT_BYREF;
    received->pparray = pictures.Reference();
    Variant result;
    CHECK(InvokeByNumber(icon.Get(), 5, DISPATCH_METHOD, {array, 10L, 1L, window.Number()}, result) == S_OK);
    REQUIRE(Asked(4));
    CHECK(Story() == "add rest, 0, delete, add rest");
}

TEST_CASE_FIXTURE(IconFixture, "clients can connect to MouseUp, and nothing ever raises it") {
    int raised = 0;
    EventConnection connection(static_cast<IDispatch*>(icon.Get()), __uuidof(__ShellNotification),
                               {{1, [&](const DISPPARAMS&) { ++raised; }}});
    SetUp();
    g_lngConfigHwnd = window.Number();
    for (LPARAM gesture = 0x200; gesture <= 0x209; ++gesture)
        SendMessageA(window.Hwnd(), 0x401, 1, gesture);
    Animate(10, 1);
    CHECK(Asked(4));
    icon->Class_Terminate();
    g_lngConfigHwnd = 0;
    CHECK(raised == 0);
}
