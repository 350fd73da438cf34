// Lets every single allocation fail in every dialog's OK, in the icon and in the engine's handlers.
#include "tests/engine_control/engine_fixture.h"
#include "tests/lists/list_pages.h"
#include "tests/out_of_memory/memory_sweep.h"
#include "tests/tray_icon/tray_icon_fixture.h"

namespace {

constexpr wchar_t kName[] = L"a name that is too long for a string object";
constexpr wchar_t kAddress[] = L"http://an-address-that-is-too-long-for-a-string-object";

// Presses OK with each fault until the dialog accepts it; check is told whether the dialog closed.
template <class Page>
void SweepOK(Page& page, const Control& opens, const IdTexts& texts,
             const std::function<void(bool isClosed)>& check) {
    for (Faults faults(3); faults.Next();) {
        CAPTURE(faults.Name());
        bool isClosed = false;
        page.Play(opens, {[&](HWND dialog) {
                      Enter(texts)(dialog);
                      faults.In([&] { ClickButton(dialog, IDOK); });
                      // A dialog that ends is hidden at once.
                      isClosed = !IsWindowVisible(dialog);
                      if (!isClosed) ClickButton(dialog, IDCANCEL);
                  }});
        check(isClosed);
        CHECK(IsWindowEnabled(page.window.Hwnd()));
        CHECK((faults.Happened() || isClosed));
    }
    CHECK(page.recorder.messages.empty());
}

// The texts of SysAllocString, which the fake engine hands its path out with, that nobody has freed.
struct UnfreedTexts {
    std::vector<BSTR> texts;
    const ImportFake<"SysAllocString", decltype(&SysAllocString)> allocate{
        "oleaut32.dll", [this](const OLECHAR* text) { return texts.emplace_back(allocate.Original(text)); }};
    const ImportFake<"SysFreeString", decltype(&SysFreeString)> release{"oleaut32.dll", [this](BSTR text) {
                                                                            std::erase(texts, text);
                                                                            release.Original(text);
                                                                        }};
};

}  // namespace

// Whether the dialog has closed is whether the whole row is there.
TEST_CASE("memory that runs out in the OK of a dialog adds or changes the row or leaves the dialog open") {
    SUBCASE("an address") {
        ExcludePage page;
        SweepOK(page, page.cmdAddURL, {{IDC_TXTURL, kAddress}}, [&](bool isClosed) {
            CHECK(page.Rows() == (isClosed ? Texts{kAddress} : Texts{}));
            page.lstExclude.Clear();
        });
    }
    SUBCASE("a size") {
        BannerPage page;
        SweepOK(page, page.cmdAddSize, {{IDC_TXTHEIGHT, L"1200000000"}, {IDC_TXTWIDTH, L"3400000000"}},
                [&](bool isClosed) {
                    CHECK(page.RowCount() == (isClosed ? 5 : 4));
                    if (!isClosed) return;
                    CHECK(page.Row(5) == L"User Banner 0|3400000000|1200000000|x");
                    page.lvwBanners.Remove(5);
                });
    }
    SearchPage page;
    const std::wstring row = kName + (L'|' + std::wstring(kAddress));
    const IdTexts texts{{IDC_TXTNAME, kName}, {IDC_TXTURL, kAddress}};
    SUBCASE("a new engine") {
        SweepOK(page, page.cmdAddSearch, texts, [&](bool isClosed) {
            CHECK(page.RowCount() == (isClosed ? 3 : 2));
            if (!isClosed) return;
            CHECK(page.Row(3) == row + L"|x");
            page.lvwSearchURLs.Remove(3);
        });
    }
    SUBCASE("an edited engine") {
        page.Select(page.lvwSearchURLs, 2);
        SweepOK(page, page.cmdEditSearch, texts, [&](bool isClosed) {
            CHECK(page.Row(2) == (isClosed ? row : L"Two|http://two"));
            page.lvwSearchURLs.Text(2, L"Two");
            page.lvwSearchURLs.SubItem(2, 1, L"http://two");
        });
    }
}

TEST_CASE(
    "memory that runs out when the icon is added or animated is reported, and the next call is not the worse "
    "for it") {
    TrayIconFixture tray;
    tray.icon->InitShellNotify(tray.window.Number(), 1025);
    HRESULT result = S_OK;
    for (Faults faults(0); faults.Next();) {
        CAPTURE(faults.Name());
        tray.icon->RemoveIcon();
        CHECK(faults.In([&] { result = tray.icon->AddIcon(tray.rest.Get()); }));
        CHECK((result == S_OK || result == E_OUTOFMEMORY));
        CHECK(tray.icon->AddIcon(tray.rest.Get()) == S_OK);
    }
    PictureArray slots = tray.Slots();
    for (Faults faults(0); faults.Next();) {
        CAPTURE(faults.Name());
        CHECK(tray.Animate() == S_OK);
        CHECK(faults.In(
            [&] { result = tray.icon->AnimateIcon(slots.Reference(), kInterval, 1, tray.window.Number()); }));
        CHECK((result == S_OK || result == E_OUTOFMEMORY));
        // Two ticks of the animation show two frames.
        const size_t before = tray.shell.calls.size();
        CHECK(tray.Animate() == S_OK);
        tray.icon->m_tmrAni_TimerFired(0);
        tray.icon->m_tmrAni_TimerFired(0);
        REQUIRE(tray.shell.calls.size() == before + 2);
        CHECK(tray.shell.calls.back().Icon() == static_cast<DWORD>(kFrameHandle + 1));
    }
    slots.Clear();
    tray.icon->Class_Terminate();
    CHECK(tray.rest->References() == 1);
    CHECK(tray.HasFramesAlone());
}

TEST_CASE("memory that runs out in an engine handler is survived, and the next command is served") {
    EngineFixture f;
    f.server.script.calls.reserve(100000);

    SUBCASE("connecting") {
        for (Faults faults(1); faults.Next();) {
            CAPTURE(faults.Name());
            CHECK(faults.In([&] { f.Connect(); }));
            f.Disconnect();
            CHECK(f.server.popup == nullptr);
            f.Connect();
            CHECK(f.server.ConnectionCount() == 1);
            CHECK(f.Enabled() == kRunning);
            f.Disconnect();
            CHECK(f.server.popup == nullptr);
        }
    }
    SUBCASE("commands, the path of the log, reading the settings again") {
        f.Connect();
        f.server.script.logFile = kAddress;
        const UnfreedTexts unfreed;
        for (Faults faults(1); faults.Next();) {
            CAPTURE(faults.Name());
            faults.In([&] {
                f.engine.mnuStopKiller_Click();
                f.engine.tmMenu_Timer();
                f.engine.mnuPauseKiller_Click();
                f.engine.tmMenu_Timer();
                f.engine.mnuStartKiller_Click();
                f.engine.tmMenu_Timer();
                f.engine.ReloadSettings([] {});
                f.engine.LogFile();
            });
            CHECK_FALSE(f.AnyPending());
            CHECK_FALSE(f.engine.tmMenu().Running());
            CHECK(f.Enabled() == kRunning);
            CHECK(f.engine.LogFile() == f.server.script.logFile);
            CHECK(unfreed.texts.empty());
        }
    }
}
