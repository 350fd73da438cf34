// Lets every single allocation fail, of the program's own and of its texts for Automation, in everything that
// runs with errors ignored and in every dialog's OK.
#include <algorithm>
#include <new>

#include "platform/automation_error.h"
#include "store/first_run.h"
#include "tests/engine_control/engine_fixture.h"
#include "tests/fault_sweep/failing_allocation.h"
#include "tests/lists/banner_page.h"
#include "tests/lists/exclude_page.h"
#include "tests/lists/search_page.h"
#include "tests/support/memory_registry.h"
#include "tests/support/settings_model.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"
#include "tests/tray_icon/tray_icon_fixture.h"

namespace {

// Texts for Automation come from a heap of their own.
class FailingTexts {
public:
    FailingTexts() : m_patch("oleaut32.dll", "SysAllocStringLen", &Allocate) {
        s_original = m_patch.Original<Function>();
    }

private:
    using Function = decltype(&SysAllocStringLen);
    static BSTR WINAPI Allocate(const OLECHAR* text, UINT length) {
        return FailingAllocation::IsNext() ? nullptr : s_original(text, length);
    }
    static Function s_original;
    const ImportPatch m_patch;
};
FailingTexts::Function FailingTexts::s_original = nullptr;

// Runs body with each allocation failing, once and from there on, until it has no such allocation. prepare
// and check have memory; check is told how body ended: 0 for well, 1 for an AutomationError, 2 for bad_alloc.
long Sweep(const std::function<void()>& prepare, const std::function<void()>& body,
           const std::function<void(int ending)>& check) {
    long faults = 0;
    for (const bool isLasting : {false, true}) {
        // Where all fail from one on, neighbours come to the same.
        for (long k = 1;; k += isLasting ? 7 : 1) {
            INFO("allocation " << k << (isLasting ? " and all behind it" : ""));
            prepare();
            int ending = 0;
            {
                const FailingAllocation failing(k, isLasting);
                try {
                    body();
                } catch (const AutomationError&) {
                    ending = 1;
                } catch (const std::bad_alloc&) {
                    ending = 2;
                }
            }
            const bool happened = FailingAllocation::Happened();
            check(ending);
            if (!happened) {
                CHECK(ending == 0);
                break;
            }
            ++faults;
        }
    }
    return faults;
}

std::string LongText(const char* name) {
    return std::string(name) + " with a name that is too long for a string object to keep within itself";
}

constexpr char kSettings[] = "HKCU\\Software\\Calvane\\Settings";
constexpr char kExclude[] = "HKCU\\Software\\Calvane\\Exclude";
constexpr char kBanners[] = "HKCU\\Software\\Calvane\\Banners";
constexpr char kSearch[] = "HKCU\\Software\\Calvane\\Search";

RegistryContents LongStore() {
    const auto text = [](const std::string& bytes) { return StoredValue{REG_SZ, bytes}; };
    RegistryContents store{{kSettings,
                            {{"chkPlaySound", text("1")},
                             {"chkBeep", text("0")},
                             {"txtSpeed", text("400")},
                             {"txtPause", text("12000")},
                             {"chkExtra", text("1")},
                             {"txtExtra", text(LongText("extra"))},
                             {"Startup", text("RunOnly")},
                             {"Pause Key", text("F9")},
                             {"SoundFile", text(LongText("C:\\sound"))}}}};
    for (int n = 1; n <= 3; ++n) {
        const std::string number = std::to_string(n);
        store[kExclude][std::to_string(n - 1)] = text(LongText(("http://site" + number).c_str()));
        store[kBanners][number + "Name"] = text(LongText(("banner" + number).c_str()));
        store[kBanners][number + "Width"] = text(number + "1");
        store[kBanners][number + "Height"] = text(number + "2");
        store[kBanners][number + "Use"] = text("True");
        store[kSearch][number + "Name"] = text(LongText(("engine" + number).c_str()));
        store[kSearch][number + "Url"] = text(LongText(("http://engine" + number).c_str()));
        store[kSearch][number + "Use"] = text("True");
    }
    return store;
}

}  // namespace

TEST_CASE("memory that runs out in a load spoils nothing but what it was needed for") {
    SettingsWindow page;
    TestFolder folder;
    const std::wstring path =
        folder.Write(L"closed.log", LongText("http://a") + "\r\n" + LongText("http://b") + "\r\n");
    page.logFile = [&] { return path; };
    MemoryRegistry registry;
    registry.contents = LongStore();
    const FailingTexts texts;
    page.transfer.LoadSettings();
    const WindowState ideal = StateOf(page);
    REQUIRE(page.lstClosedWnd.ListCount() == 2);

    const long faults = Sweep(
        [&] {
            Put(page, {});
            page.cmdApply.Enabled(false);
        },
        [&] { page.transfer.LoadSettings(); },
        [&](int ending) {
            const WindowState state = StateOf(page);
            CHECK(ending == 0);
            CHECK_FALSE(state.isLoading);
            CHECK_FALSE(state.canApply);
            if (!FailingAllocation::IsLasting()) {
                // What could not be had ends a list or is a field of one row; no other row goes without its
                // fields.
                const size_t incomplete = static_cast<size_t>(
                    std::count_if(state.banners.begin(), state.banners.end(), [&](const ListRow& row) {
                        return std::find(ideal.banners.begin(), ideal.banners.end(), row) ==
                               ideal.banners.end();
                    }));
                CHECK(incomplete <= 1);
            }
            page.transfer.LoadSettings();
            CHECK(Difference(StateOf(page), ideal) == "");
            CHECK(page.lstClosedWnd.ListCount() == 2);
        });
    CHECK(registry.contents == LongStore());
    CHECK(faults > 200);
    MESSAGE("out of memory in a load: " << faults << " faults");
}

TEST_CASE("memory that runs out in a save never empties a list of the store, and the next save repairs it") {
    SettingsWindow page;
    MemoryRegistry registry;
    registry.contents = LongStore();
    page.transfer.LoadSettings();
    const FailingTexts texts;
    const WindowState window = StateOf(page);
    const long faults = Sweep(
        [&] {
            registry.contents = LongStore();
            Put(page, window);
        },
        [&] { page.commands.cmdOK_Click(); },
        [&](int ending) {
            CHECK(ending == 0);
            CHECK_FALSE(page.cmdApply.Enabled());
            CHECK_FALSE(page.changeMark.m_bLoading);
            CHECK(page.events == std::vector<std::string>{"hide"});
            page.events.clear();
            if (!FailingAllocation::IsLasting()) {
                // One failure costs one value.
                long missing = 0;
                for (const auto& [key, values] : LongStore()) {
                    for (const auto& [name, value] : values)
                        missing += registry.contents[key].contains(name) ? 0 : 1;
                }
                CHECK(missing <= 1);
            }
            Put(page, window);
            page.transfer.SaveSettings();
            CHECK(Difference(registry.contents, LongStore()) == "");
        });
    CHECK(faults > 200);
    MESSAGE("out of memory in a save: " << faults << " faults");
}

TEST_CASE("memory that runs out in the first run is an error, and the next start writes every default") {
    MemoryRegistry registry;
    WriteFirstRunDefaults();
    const RegistryContents ideal = registry.contents;
    const FailingTexts texts;
    const long faults = Sweep([&] { registry.contents.clear(); }, [] { WriteFirstRunDefaults(); },
                              [&](int ending) {
                                  CHECK((ending != 0) == FailingAllocation::Happened());
                                  CHECK(registry.contents[kSettings].contains("First Time") == (ending == 0));
                                  WriteFirstRunDefaults();
                                  CHECK(Difference(registry.contents, ideal) == "");
                              });
    CHECK(faults > 100);
    MESSAGE("out of memory in the first run: " << faults << " faults");
}

TEST_CASE(
    "memory that runs out while the log is read leaves its newest lines, and the log is not kept open") {
    SettingsWindow page;
    TestFolder folder;
    std::string bytes;
    std::vector<std::wstring> expected;
    for (int i = 1; i <= 30; ++i) {
        bytes += LongText(("http://" + std::to_string(i)).c_str()) + std::string(3000, 'x') + "\r\n";
        if (i > 5)
            expected.insert(expected.begin(),
                            FromAnsi(bytes.substr(bytes.find_last_of('\n', bytes.size() - 2) + 1)));
        if (i > 5) expected.front().resize(expected.front().size() - 2);
    }
    const std::wstring path = folder.Write(L"closed.log", bytes);
    page.logFile = [&] { return path; };
    const auto rows = [&] {
        std::vector<std::wstring> texts;
        for (int i = 0; i < page.lstClosedWnd.ListCount(); ++i)
            texts.push_back(page.lstClosedWnd.List(i));
        return texts;
    };
    const long faults = Sweep([] {}, [&] { page.closedLog.ReadClosedLog(); },
                              [&](int) {
                                  const auto shown = rows();
                                  CHECK(shown.size() <= expected.size());
                                  CHECK(std::equal(shown.begin(), shown.end(), expected.begin()));
                                  const FileHandle alone(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr,
                                                                     OPEN_EXISTING, 0, nullptr));
                                  CHECK(static_cast<bool>(alone));
                              });
    page.closedLog.ReadClosedLog();
    CHECK(rows() == expected);
    CHECK(faults > 50);
    MESSAGE("out of memory in a reading of the log: " << faults << " faults");
}

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
    "memory that runs out when the icon is added or animated is answered, and the next call is not the worse "
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
        faults = Sweep([&] { path.clear(); },
                       [&] {
                           f.engine.mnuStopKiller_Click();
                           f.engine.tmMenu_Timer();
                           f.engine.mnuPauseKiller_Click();
                           f.engine.tmMenu_Timer();
                           f.engine.mnuStartKiller_Click();
                           f.engine.tmMenu_Timer();
                           f.engine.ReloadSettings();
                           path = f.engine.LogFile();
                       },
                       [&](int) {
                           CHECK_FALSE(f.engine.bStartPending);
                           CHECK_FALSE(f.engine.bStopPending);
                           CHECK_FALSE(f.engine.bPausePending);
                           CHECK_FALSE(f.engine.tmMenu().Running());
                           CHECK(f.Enabled() == kRunning);
                           CHECK(f.engine.LogFile() == f.server.script.logFile);
                       });
        CHECK(faults >= 1);
    }
    MESSAGE("out of memory in the engine's handlers: " << faults << " faults");
}
