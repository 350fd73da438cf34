// Ends a process by force at registry calls of a first run and of an Apply, and looks at what the next start
// makes of the store.
#include <doctest.h>

#include <deque>

#include "platform/text.h"
#include "store/first_run.h"
#include "store/server_directory.h"
#include "tests/kill_sweep/child.h"
#include "tests/kill_sweep/subjects.h"
#include "tests/support/settings_window.h"

namespace {

constexpr size_t kChildrenAtOnce = 4;

// The user's Software key, opened before the test's own registry stands in its place.
RegistryKey OpenRealSoftware() {
    HKEY key = nullptr;
    REQUIRE(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_ALL_ACCESS, &key) == ERROR_SUCCESS);
    return RegistryKey(key);
}

// Everything below it but the registries of running tests.
RegistryContents Others(const RegistryKey& realSoftware) {
    RegistryContents contents;
    Walk(realSoftware.Get(), "Software", contents);
    std::erase_if(contents,
                  [](const auto& entry) { return entry.first.starts_with("Software\\CalvaneTests"); });
    return contents;
}

// What belongs to others.
RegistryContents OthersIn(RegistryContents store) {
    for (const char* const key : {kSettings, kExclude, kBanners, kSearch})
        store.erase(key);
    store[kRun].erase(kRunEntry);
    return WithoutEmptyKeys(store);
}

// Runs a child for each call from first to last, to be ended there, some at a time, and gives its store to
// look.
void Sweep(const char* testCase, long first, long last, HKEY realSoftware,
           const std::function<void(long call, DWORD code, RegistryContents store)>& look) {
    std::deque<std::pair<long, Child>> running;
    for (long next = first; next <= last || !running.empty();) {
        for (; next <= last && running.size() < kChildrenAtOnce; ++next)
            running.emplace_back(next, Child(testCase, next));
        auto& [call, child] = running.front();
        const DWORD code = child.Wait();
        look(call, code, child.TakeStore(realSoftware));
        running.pop_front();
    }
}

std::string LoaderPath(const SettingsWindow& page) {
    return ToAnsi(page.loaderPath);
}

// What a new start shows, in the window and by the rules.
struct NextStart {
    WindowState shown;
    WindowState expected;
};

NextStart StartAnew(SettingsWindow& page, MemoryRegistry& registry) {
    Put(page, {});
    WriteFirstRunDefaults();
    page.transfer.LoadSettings();
    NextStart start;
    start.shown = StateOf(page);
    SettingsModel(registry.contents).Load(start.expected);
    return start;
}

// Two states as the user sees them: what an option shows that the store does not know is not among it.
std::string ListsAndOptionsDiffer(WindowState actual, const WindowState& expected) {
    actual.canApply = expected.canApply;
    actual.mode = expected.mode;
    return Difference(actual, expected);
}

// Presses Apply with what the window shows and starts again until the new start shows just that; returns how
// often that took.
int AppliesUntilWhole(SettingsWindow& page, MemoryRegistry& registry, const WindowState& wanted, int most) {
    for (int applies = 1; applies <= most; ++applies) {
        Put(page, wanted);
        page.commands.cmdApply_Click();
        if (ListsAndOptionsDiffer(StartAnew(page, registry).shown, wanted).empty()) return applies;
    }
    return most + 1;
}

}  // namespace

TEST_CASE("a first run that is ended by force at any registry call is made up for by the next start") {
    const RegistryKey realSoftware = OpenRealSoftware();
    const RegistryContents before = Others(realSoftware);
    const std::string directory = ToAnsi(ServerDirectory());
    RegistryContents ideal = Neighbours();
    SettingsModel(ideal).WriteFirstRun(directory);

    SettingsWindow page;
    MemoryRegistry registry;
    registry.contents = Neighbours();
    WriteFirstRunDefaults();
    const long calls = registry.Counter().Calls();
    CHECK(Difference(registry.contents, ideal) == "");
    WindowState idealWindow;
    SettingsModel(ideal).Load(idealWindow);

    long ended = 0;
    Sweep("child: first run", 1, calls, realSoftware.Get(),
          [&](long call, DWORD code, RegistryContents store) {
              CAPTURE(call);
              CHECK(code == kKilled);
              if (code == kKilled) ++ended;
              // All that came before the call is there, and nothing else.
              RegistryContents expected = Neighbours();
              SettingsModel(expected, {std::nullopt, call, true}).WriteFirstRun(directory);
              CHECK(Difference(WithoutEmptyKeys(store), WithoutEmptyKeys(expected)) == "");

              registry.contents = store;
              const NextStart start = StartAnew(page, registry);
              CHECK(Difference(WithoutEmptyKeys(registry.contents), WithoutEmptyKeys(ideal)) == "");
              CHECK(Difference(start.shown, idealWindow) == "");
              CHECK(AppliesUntilWhole(page, registry, EditedWindow(), 1) == 1);
              CHECK(OthersIn(registry.contents) == OthersIn(Neighbours()));
          });
    CHECK(ended == calls);

    DWORD code = 0;
    Sweep("child: first run", calls + 1, calls + 1, realSoftware.Get(),
          [&](long, DWORD theCode, const RegistryContents&) { code = theCode; });
    CHECK(code == kRanThrough);
    CHECK(Others(realSoftware) == before);
    MESSAGE("first run: " << calls << " registry calls, ended by force at " << ended
                          << " of them; complete after the next start each time");
}

TEST_CASE(
    "an Apply that is ended by force at any registry call leaves a store that the next start shows and a "
    "further Apply repairs") {
    const RegistryKey realSoftware = OpenRealSoftware();
    const RegistryContents before = Others(realSoftware);

    SettingsWindow page;
    MemoryRegistry registry;
    registry.contents = FullStore();
    Put(page, EditedWindow());
    page.commands.cmdApply_Click();
    const long calls = registry.Counter().Calls();

    long ended = 0;
    long onceEdited = 0;
    long twiceEdited = 0;
    size_t fewestRows = 1000;
    Sweep("child: Apply", 1, calls, realSoftware.Get(), [&](long call, DWORD code, RegistryContents store) {
        CAPTURE(call);
        CHECK(code == kKilled);
        if (code == kKilled) ++ended;
        RegistryContents expected = FullStore();
        WindowState window = EditedWindow();
        SettingsModel(expected, {std::nullopt, call, true}).Save(window, LoaderPath(page));
        CHECK(Difference(WithoutEmptyKeys(store), WithoutEmptyKeys(expected)) == "");

        // The next start shows what the rules make of the store, and its Apply leaves just that.
        registry.contents = store;
        const NextStart start = StartAnew(page, registry);
        CHECK(Difference(start.shown, start.expected) == "");
        CHECK(Difference(WithoutEmptyKeys(registry.contents), WithoutEmptyKeys(store)) == "");
        fewestRows = std::min(
            fewestRows, start.shown.exclude.size() + start.shown.banners.size() + start.shown.search.size());
        CHECK(AppliesUntilWhole(page, registry, start.shown, 1) == 1);
        CHECK(OthersIn(registry.contents) == OthersIn(Neighbours()));

        // The user may also enter again what was to be applied. Old rows behind a gap come back with the rows
        // that close it, once.
        registry.contents = store;
        const int applies = AppliesUntilWhole(page, registry, EditedWindow(), 2);
        CHECK(applies <= 2);
        ++(applies == 1 ? onceEdited : twiceEdited);
        CHECK(OthersIn(registry.contents) == OthersIn(Neighbours()));
    });
    CHECK(ended == calls);

    DWORD code = 0;
    Sweep("child: Apply", calls + 1, calls + 1, realSoftware.Get(),
          [&](long, DWORD theCode, const RegistryContents&) { code = theCode; });
    CHECK(code == kRanThrough);
    CHECK(Others(realSoftware) == before);
    MESSAGE("Apply: "
            << calls << " registry calls, ended by force at " << ended
            << " of them; the next start's own Apply leaves what it shows each time; the interrupted edit "
               "entered again is whole after one Apply "
            << onceEdited << " times and after two " << twiceEdited
            << " times; fewest list rows left: " << fewestRows << " of 26");
}
