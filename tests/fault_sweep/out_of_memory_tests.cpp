// Lets every single allocation fail in a load, in a save, in the first run and in a reading of the log.
#include <algorithm>

#include "platform/handle.h"
#include "store/first_run.h"
#include "tests/fault_sweep/failing_allocation.h"
#include "tests/fault_sweep/memory_sweep.h"
#include "tests/support/memory_registry.h"
#include "tests/support/settings_model.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"

namespace {

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
