// Lets every single allocation fail in every dialog's OK, in the icon and in the engine's handlers.
#include <algorithm>

#include "tests/engine_control/engine_fixture.h"
#include "tests/lists/list_pages.h"
#include "tests/out_of_memory/memory_sweep.h"
#include "tests/support/shown_text.h"
#include "tests/tray_icon/tray_icon_fixture.h"

namespace {

constexpr wchar_t kName[] = L"a name that is too long for a string object";
constexpr wchar_t kAddress[] = L"http://an-address-that-is-too-long-for-a-string-object";

// Presses OK with each allocation failing until the dialog accepts it; check is told whether the dialog
// closed.
template <class Page>
void SweepOK(Page& page, const Control& opens, std::initializer_list<std::pair<int, const wchar_t*>> texts,
             const std::function<void(bool isClosed)>& check) {
    const FailingTexts failingTexts;
    long faults = 0;
    bool happened = true;
    for (long k = 1; happened; ++k) {
        INFO("allocation " << k);
        bool isClosed = false;
        page.Play(opens, {[&](HWND dialog) {
                      for (const auto& [id, text] : texts)
                          TypeText(dialog, id, text);
                      {
                          const FailingAllocation failing(k);
                          ClickButton(dialog, IDOK);
                          happened = FailingAllocation::Happened();
                      }
                      // A dialog that ends is hidden at once.
                      isClosed = !IsWindowVisible(dialog);
                      if (!isClosed) ClickButton(dialog, IDCANCEL);
                  }});
        check(isClosed);
        CHECK(IsWindowEnabled(page.window.Hwnd()));
        CHECK((happened || isClosed));
        ++faults;
    }
    CHECK(page.recorder.messages.empty());
    CHECK(faults > 2);
}

// The texts of SysAllocString, which the fake engine hands its path out with, that nobody has freed.
class UnfreedTexts {
public:
    UnfreedTexts() {
        s_texts.clear();
        s_allocate = m_allocate.Original<decltype(&SysAllocString)>();
        s_free = m_free.Original<decltype(&SysFreeString)>();
    }

    size_t Count() const { return s_texts.size(); }

private:
    static BSTR WINAPI Allocate(const OLECHAR* text) {
        const BSTR copy = s_allocate(text);
        s_texts.push_back(copy);
        return copy;
    }
    static void WINAPI Free(BSTR text) {
        std::erase(s_texts, text);
        s_free(text);
    }

    static inline decltype(&SysAllocString) s_allocate = nullptr;
    static inline decltype(&SysFreeString) s_free = nullptr;
    static inline std::vector<BSTR> s_texts;
    const ImportPatch m_allocate{"oleaut32.dll", "SysAllocString", &Allocate};
    const ImportPatch m_free{"oleaut32.dll", "SysFreeString", &Free};
};

}  // namespace

// Whether the dialog has closed is whether the whole row is there.
TEST_CASE_FIXTURE(ExcludePage,
                  "memory that runs out in the OK of an address adds the row or leaves the dialog open") {
    SweepOK(*this, cmdAddURL, {{IDC_TXTURL, kAddress}}, [&](bool isClosed) {
        CHECK(Rows() == (isClosed ? Texts{kAddress} : Texts{}));
        lstExclude.Clear();
    });
}

TEST_CASE_FIXTURE(BannerPage,
                  "memory that runs out in the OK of a size adds the row or leaves the dialog open") {
    SweepOK(*this, cmdAddSize, {{IDC_TXTHEIGHT, L"1200000000"}, {IDC_TXTWIDTH, L"3400000000"}},
            [&](bool isClosed) {
                CHECK(lvwBanners.Count() == (isClosed ? 5 : 4));
                if (!isClosed) return;
                CHECK(Row(5) == L"User Banner 0|3400000000|1200000000|x");
                lvwBanners.Remove(5);
            });
}

TEST_CASE_FIXTURE(SearchPage,
                  "memory that runs out in the OK of an engine changes the row or leaves the dialog open") {
    const std::wstring row = kName + (L'|' + std::wstring(kAddress));
    SUBCASE("a new one") {
        SweepOK(*this, cmdAddSearch, {{IDC_TXTNAME, kName}, {IDC_TXTURL, kAddress}}, [&](bool isClosed) {
            CHECK(lvwSearchURLs.Count() == (isClosed ? 3 : 2));
            if (!isClosed) return;
            CHECK(Row(3) == row + L"|x");
            lvwSearchURLs.Remove(3);
        });
    }
    SUBCASE("an edited one") {
        lvwSearchURLs.Select(2);
        SweepOK(*this, cmdEditSearch, {{IDC_TXTNAME, kName}, {IDC_TXTURL, kAddress}}, [&](bool isClosed) {
            CHECK(Row(2) == (isClosed ? row : L"Two|http://two"));
            lvwSearchURLs.Text(2, L"Two");
            lvwSearchURLs.SubItem(2, 1, L"http://two");
        });
    }
}

TEST_CASE(
    "memory that runs out when the icon is added or animated is reported, and the next call is not the worse "
    "for it") {
    long faults = 0;
    {
        TrayIconFixture tray;
        tray.icon->InitShellNotify(tray.window.Number(), 1025);
        const FailingTexts texts;
        HRESULT result = S_OK;
        faults +=
            Sweep([&] { tray.icon->RemoveIcon(); }, [&] { result = tray.icon->AddIcon(tray.rest.Get()); },
                  [&](int ending) {
                      CHECK(ending == 0);
                      CHECK((result == S_OK || result == E_OUTOFMEMORY));
                      CHECK(tray.icon->AddIcon(tray.rest.Get()) == S_OK);
                  });
        PictureArray slots = tray.Slots();
        faults +=
            Sweep([&] { CHECK(tray.Animate(1000) == S_OK); },
                  [&] { result = tray.icon->AnimateIcon(slots.Reference(), 1000, 1, tray.window.Number()); },
                  [&](int ending) {
                      CHECK(ending == 0);
                      CHECK((result == S_OK || result == E_OUTOFMEMORY));
                      // Two ticks of the animation show two frames.
                      const size_t before = tray.shell.calls.size();
                      CHECK(tray.Animate(1000) == S_OK);
                      tray.icon->m_tmrAni_TimerFired(0);
                      tray.icon->m_tmrAni_TimerFired(0);
                      REQUIRE(tray.shell.calls.size() == before + 2);
                      CHECK(tray.shell.calls.back().Icon() == static_cast<DWORD>(kFrameHandle + 1));
                  });
        slots.Clear();
        tray.icon->Class_Terminate();
        CHECK(tray.rest->References() == 1);
        for (const auto& frame : tray.frames)
            CHECK(frame->References() == 1);
    }
    CHECK(faults >= 1);
}

TEST_CASE("memory that runs out in an engine handler is survived, and the next command is served") {
    long faults = 0;
    EngineFixture f;
    f.server.script.calls.reserve(100000);
    const FailingTexts texts;

    SUBCASE("connecting") {
        faults = Sweep([] {}, [&] { f.Connect(); },
                       [&](int ending) {
                           CHECK(ending == 0);
                           f.engine.Disconnect(f.window.Hwnd(), 0x1234);
                           CHECK(f.server.popup == nullptr);
                           f.Connect();
                           CHECK(f.server.ConnectionCount() == 1);
                           CHECK(f.Enabled() == kRunning);
                           f.engine.Disconnect(f.window.Hwnd(), 0x1234);
                           CHECK(f.server.popup == nullptr);
                       });
    }
    SUBCASE("commands, the path of the log, reading the settings again") {
        f.Connect();
        f.server.script.logFile = kAddress;
        std::wstring path;
        const UnfreedTexts unfreed;
        faults = Sweep([&] { path.clear(); },
                       [&] {
                           f.engine.mnuStopKiller_Click();
                           f.engine.tmMenu_Timer();
                           f.engine.mnuPauseKiller_Click();
                           f.engine.tmMenu_Timer();
                           f.engine.mnuStartKiller_Click();
                           f.engine.tmMenu_Timer();
                           f.engine.ReloadSettings([] {});
                           path = f.engine.LogFile();
                       },
                       [&](int) {
                           CHECK_FALSE(f.engine.bStartPending);
                           CHECK_FALSE(f.engine.bStopPending);
                           CHECK_FALSE(f.engine.bPausePending);
                           CHECK_FALSE(f.engine.tmMenu().Running());
                           CHECK(f.Enabled() == kRunning);
                           CHECK(f.engine.LogFile() == f.server.script.logFile);
                           CHECK(unfreed.Count() == 0);
                       });
    }
    CHECK(faults >= 1);
}
