#include <doctest.h>

#include "platform/com/bstr.h"
#include "platform/com/event_connection.h"
#include "tests/support/automation.h"
#include "tests/support/shown_text.h"
#include "tests/tray_icon/tray_icon_fixture.h"
#include "tray/bas_shell_notify.h"

namespace {

struct IconFixture : TickingIcon {
    bool IsHooked() const {
        return window.Procedure() == PtrToLong(reinterpret_cast<void*>(&TrayWindowProc));
    }

    std::wstring Tip() const {
        BstrHandle tip;
        CHECK(icon->get_ToolTip(tip.Put()) == S_OK);
        return std::wstring(ViewOf(tip.Get()));
    }
};

}  // namespace

TEST_CASE_FIXTURE(IconFixture,
                  "setting up hooks the window, once, and the resting icon gets the last window and message, "
                  "and an empty tip") {
    const LONG before = window.Procedure();
    const PlainWindow other;
    for (const LONG number : {other.Number(), window.Number()})
        CHECK(icon->InitShellNotify(number, 1026) == S_OK);
    SetUp();
    CHECK(IsHooked());
    REQUIRE(Story() == "add rest");
    const NotifyIconRecord record =
        MakeNotifyIconRecord(window.Hwnd(), 1025, static_cast<HICON>(LongToHandle(kRestHandle)), L"");
    CHECK(shell.calls[0].record == std::string(reinterpret_cast<const char*>(&record), sizeof(record)));
    icon->Class_Terminate();
    CHECK(window.Procedure() == before);
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
    REQUIRE(Animate(Slots(1)) == S_OK);
    CHECK(RunToEnd() == "0; delete, add rest");
    icon->RemoveIcon();
    CHECK(icon->AddIcon(frames[3].Get()) == S_OK);
    CHECK(rest->References() == 1);
    REQUIRE(Animate(Slots(1)) == S_OK);
    CHECK(RunToEnd() == "0; delete, add 3");
}

TEST_CASE_FIXTURE(IconFixture,
                  "what is not added is not removed; a refused add and a refused removal count as done") {
    CHECK(icon->RemoveIcon() == S_OK);
    CHECK(shell.calls.empty());
    shell.result = [](DWORD) { return FALSE; };
    SetUp();
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(Story() == "add rest");
    CHECK(icon->RemoveIcon() == S_OK);
    CHECK(icon->RemoveIcon() == S_OK);
    CHECK(Story() == "add rest, delete");
}

TEST_CASE_FIXTURE(IconFixture,
                  "a picture box without a picture fails, and no icon is added, nor where asking for the "
                  "picture lets the owner's release in") {
    icon->InitShellNotify(window.Number(), 1025);
    CHECK(icon->AddIcon(nullptr) == HresultOf(ErrorNumber::ObjectNotSet));
    rest->result = E_FAIL;
    CHECK(icon->AddIcon(rest.Get()) == E_FAIL);
    CHECK(shell.calls.empty());
    rest->result = S_OK;
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    icon->RemoveIcon();
    CHECK(Story() == "add rest, delete");
    rest->asked = [this] { icon->Class_Terminate(); };
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(Story() == "add rest, delete");
}

TEST_CASE_FIXTURE(IconFixture, "a window that cannot be hooked is not reported and the icon is still added") {
    const ImportFake<"SetPropA", decltype(&SetPropA)> fails{"user32.dll",
                                                            [](HWND, LPCSTR, HANDLE) { return FALSE; }};
    CHECK(icon->InitShellNotify(window.Number(), 1025) == S_OK);
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(Story() == "add rest");
    CHECK_FALSE(IsHooked());
}

TEST_CASE_FIXTURE(IconFixture,
                  "releasing the object removes what it added, then puts the window's procedure back") {
    std::string story;
    bool wasHooked = true;
    shell.result = [&](DWORD) {
        wasHooked = IsHooked();
        return TRUE;
    };
    SUBCASE("the icon is added") {
        SetUp();
        story = "add rest, delete";
    }
    SUBCASE("set up") {
        icon->InitShellNotify(window.Number(), 1025);
    }
    SUBCASE("never set up") {}
    icon.Reset();
    CHECK(Story() == story);
    CHECK(wasHooked);
    CHECK_FALSE(IsHooked());
    CHECK(rest->References() == 1);
}

TEST_CASE_FIXTURE(IconFixture,
                  "an icon that its owner let go of stays away whatever a client still asks for") {
    SetUp();
    const ComPtr<IDispatch> client = icon;
    icon->Class_Terminate();
    CHECK_FALSE(IsHooked());

    CHECK(icon->InitShellNotify(window.Number(), 1025) == S_OK);
    CHECK_FALSE(IsHooked());
    CHECK(icon->AddIcon(rest.Get()) == S_OK);
    CHECK(Animate() == S_OK);
    CHECK(icon->RemoveIcon() == S_OK);
    icon->OnTaskbarCreated();
    icon->Class_Terminate();
    SetTip(L"still mine");
    CHECK(Tip() == L"still mine");
    CHECK_FALSE(clock.AnyRuns());
    CHECK(Story() == "add rest, delete");
    CHECK(rest->References() == 1);
}

TEST_CASE_FIXTURE(IconFixture, "a script calls every member by its name, and passes its array by reference") {
    Call(icon.Get(), L"InitShellNotify", {window.Number(), 1025L});
    Call(icon.Get(), L"AddIcon", {rest.Get()});
    Put(icon.Get(), L"ToolTip", L"Calvane");
    CHECK(ToText(Get(icon.Get(), L"ToolTip")) == L"Calvane");
    PictureArray pictures = Slots();
    Variant array;
    VARIANT* const received = array.Receive();
    received->vt = VT_ARRAY | VT_DISPATCH | VT_BYREF;
    received->pparray = pictures.Reference();
    Call(icon.Get(), L"AnimateIcon", {array, kInterval, 1L, window.Number()});
    CHECK(RunToEnd() == kRun);
    Call(icon.Get(), L"RemoveIcon");
    CHECK(Story(5) == "add rest, delete");
}

TEST_CASE_FIXTURE(IconFixture, "clients can connect to MouseUp, and nothing ever raises it") {
    int raised = 0;
    EventConnection connection(static_cast<IDispatch*>(icon.Get()), __uuidof(__ShellNotification),
                               {{1, [&](const DISPPARAMS&) { ++raised; }}});
    SetUp();
    g_lngConfigHwnd = window.Number();
    for (LPARAM gesture = 0x200; gesture <= 0x209; ++gesture)
        SendMessageA(window.Hwnd(), 0x401, 1, gesture);
    Animate(Slots(1));
    CHECK(RunToEnd() == "0; delete, add rest");
    icon->Class_Terminate();
    g_lngConfigHwnd = 0;
    CHECK(raised == 0);
}
