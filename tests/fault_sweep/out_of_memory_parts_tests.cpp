// Lets every single allocation fail in every dialog's OK, in the icon and in the engine's handlers.
#include <algorithm>

#include "tests/engine_control/engine_fixture.h"
#include "tests/fault_sweep/failing_allocation.h"
#include "tests/fault_sweep/memory_sweep.h"
#include "tests/lists/banner_page.h"
#include "tests/lists/exclude_page.h"
#include "tests/lists/search_page.h"
#include "tests/support/shown_text.h"
#include "tests/tray_icon/tray_icon_fixture.h"

namespace {

// Presses OK with each allocation failing until the dialog accepts it. grown: by how many rows the list may
// have grown when it has not.
template <class Page>
long SweepOK(Page& page, const Control& opens, const std::function<void(HWND)>& fill,
             const std::function<void(bool isClosed)>& check) {
    long faults = 0;
    bool isDone = false;
    for (long k = 1; !isDone; ++k) {
        INFO("allocation " << k);
        bool happened = false;
        bool isClosed = false;
        const DialogScript script({[&](HWND dialog) {
            fill(dialog);
            {
                const FailingAllocation failing(k, false);
                ClickButton(dialog, IDOK);
                happened = FailingAllocation::Happened();
            }
            // A dialog that ends is hidden at once.
            isClosed = !IsWindowVisible(dialog);
            if (!isClosed) ClickButton(dialog, IDCANCEL);
        }});
        page.Click(opens);
        check(isClosed);
        CHECK(IsWindowEnabled(page.window.Hwnd()));
        if (happened) ++faults;
        if (!happened) CHECK(isClosed);
        isDone = !happened;
    }
    CHECK(page.recorder.messages.empty());
    return faults;
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

TEST_CASE("memory that runs out in a dialog's OK adds the whole row or none, and leaves the dialog open") {
    const FailingTexts texts;
    const std::wstring name = FromAnsi(LongText("name"));
    const std::wstring address = FromAnsi(LongText("http://address"));
    long faults = 0;
    SUBCASE("an address to exclude") {
        ExcludePage page;
        page.lstExclude.AddItem(L"http://other");
        faults = SweepOK(
            page, page.cmdAddURL, [&](HWND dialog) { TypeText(dialog, IDC_ADD_URL_ADDRESS, address); },
            [&](bool isClosed) {
                CHECK(page.Rows().size() == (isClosed ? 2 : 1));
                if (isClosed) {
                    CHECK(page.Rows().back() == address);
                    page.lstExclude.RemoveItem(1);
                }
            });
    }
    SUBCASE("a banner size") {
        BannerPage page;
        faults = SweepOK(
            page, page.cmdAddSize,
            [](HWND dialog) {
                TypeText(dialog, IDC_ADD_BANNER_SIZE_HEIGHT, L"1200000000");
                TypeText(dialog, IDC_ADD_BANNER_SIZE_WIDTH, L"3400000000");
            },
            [&](bool isClosed) {
                CHECK(page.lvwBanners.Count() == (isClosed ? 5 : 4));
                while (page.lvwBanners.Count() > 4) {
                    CHECK(page.Row(5) == L"User Banner 0|3400000000|1200000000|True");
                    page.lvwBanners.Remove(5);
                }
            });
    }
    SUBCASE("a new search engine") {
        SearchPage page;
        faults = SweepOK(
            page, page.cmdAddSearch,
            [&](HWND dialog) {
                TypeText(dialog, IDC_ADD_SEARCH_NAME, name);
                TypeText(dialog, IDC_ADD_SEARCH_ADDRESS, address);
            },
            [&](bool isClosed) {
                CHECK(page.lvwSearchURLs.Count() == (isClosed ? 3 : 2));
                while (page.lvwSearchURLs.Count() > 2) {
                    CHECK(page.Row(3) == name + L'|' + address + L"|True");
                    page.lvwSearchURLs.Remove(3);
                }
            });
    }
    SUBCASE("an edited search engine") {
        SearchPage page;
        page.lvwSearchURLs.Select(2);
        faults = SweepOK(
            page, page.cmdEditSearch,
            [&](HWND dialog) {
                TypeText(dialog, IDC_ADD_SEARCH_NAME, name);
                TypeText(dialog, IDC_ADD_SEARCH_ADDRESS, address);
            },
            [&](bool isClosed) {
                CHECK(page.Row(2) ==
                      (isClosed ? name + L'|' + address + L"|False" : L"Two|http://two|False"));
                page.lvwSearchURLs.Text(2, L"Two");
                page.lvwSearchURLs.SubItem(2, 1, L"http://two");
            });
    }
    CHECK(faults >= 2);
    MESSAGE("out of memory in a dialog's OK: " << faults << " faults");
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
    MESSAGE("out of memory in the icon: " << faults << " faults");
    CHECK(faults >= 1);
}

TEST_CASE(
    "memory that runs out in an engine handler is survived, and the next event and command are served") {
    long faults = 0;
    EngineFixture f;
    f.server.script.calls.reserve(100000);
    f.notices.reserve(100000);
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
    SUBCASE("events") {
        f.Connect();
        const std::wstring caption = FromAnsi(LongText("a caption"));
        faults = Sweep([&] { f.notices.clear(); },
                       [&] {
                           f.engine.m_oPopup_Killed(1, caption);
                           f.engine.m_oPopup_Paused();
                           f.engine.m_oPopup_Stopped();
                           f.engine.m_oPopup_Started();
                       },
                       [&](int ending) {
                           CHECK(ending == 0);
                           CHECK(f.Enabled() == kRunning);
                           CHECK(f.notices == Calls{"animate", "announce"});
                       });
    }
    SUBCASE("commands, the path of the log, reading the settings again") {
        f.Connect();
        f.server.script.logFile = FromAnsi(LongText("C:\\log"));
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
        CHECK(faults >= 1);
    }
    MESSAGE("out of memory in the engine's handlers: " << faults << " faults");
}
