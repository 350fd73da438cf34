// Fails every single registry call of the first run, of a load and of a save. A process that is ended by
// force leaves what calls leave that fail from some call on.
#include <algorithm>
#include <functional>

#include "store/first_run.h"
#include "tests/settings_transfer/transfer_page.h"

namespace {

struct FaultSweep : TransferPage {
    // Does the work once without a fault, and once for each fault: each of its calls, by itself and with all
    // behind it. prepare puts window and store into the same state each time.
    void Sweep(const std::function<void()>& prepare, const std::function<void()>& work,
               const std::function<void()>& check) {
        prepare();
        before = registry.contents;
        registry.beforeCall = [this](RegistryFunction, const std::string&) {
            stores.push_back(registry.contents);
        };
        registry.Watch(work);
        registry.beforeCall = nullptr;
        ideal = registry.contents;
        idealWindow = StateOf(*this);
        MESSAGE((2 * stores.size()) << " faults");
        REQUIRE(stores.size() > 90);
        for (const bool lasts : {false, true}) {
            isLasting = lasts;
            for (call = 1; call <= stores.size(); ++call) {
                INFO("call " << call << (isLasting ? " on" : ""));
                prepare();
                registry.Fail({std::nullopt, static_cast<long>(call), isLasting});
                CHECK_NOTHROW(registry.Watch(work));
                registry.Fail({});
                CHECK(registry.strayHandles == 0);
                CHECK(recorder.messages.empty());
                check();
            }
        }
        stores.clear();
    }

    // What the load got of the store: what it did not get has " (missing)" behind its name, which is none of
    // the store's then.
    RegistryContents Read() const {
        const std::string keys = "HKCU\\Software\\Calvane\\";
        RegistryContents read;
        for (const std::string& line : registry.Values()) {
            const size_t name = line.find('\\') + 1;
            const std::string key = keys + line.substr(5, name - 6);  // behind "read "
            const auto value = before.at(key).find(line.substr(name));
            if (value != before.at(key).end()) read[key].insert(*value);
        }
        return read;
    }

    // A process that ends leaves the store as the calls before left it; one failure costs one value at most,
    // and what is there beyond was there before.
    void CheckWritten() const {
        if (isLasting) {
            CHECK(Difference(registry.contents, stores[call - 1]) == "");
            return;
        }
        const NamedTexts found = TextsOf(registry.contents);
        const NamedTexts wanted = TextsOf(ideal);
        CHECK(std::ranges::count_if(wanted, [&](const auto& value) {
                  const auto written = found.find(value.first);
                  return written == found.end() || written->second != value.second;
              }) <= 1);
        CHECK(std::ranges::all_of(found, [&, old = TextsOf(before)](const auto& value) {
            return wanted.contains(value.first) || old.contains(value.first);
        }));
    }

    size_t call = 0;
    bool isLasting = false;

    // Of the work without a fault.
    RegistryContents before;
    RegistryContents ideal;
    WindowState idealWindow;
    std::vector<RegistryContents> stores;  // before each call
};

// All but the start-up mode and the mark of a change.
WindowState ListsAndOptions(WindowState state) {
    for (const char* const name :
         {"optStartup", "optLoadWithKiller", "optLoadFromMenu", "m_strStartupMode", "cmdApply"})
        state.erase(name);
    return state;
}

}  // namespace

TEST_CASE_FIXTURE(
    FaultSweep,
    "whichever registry call of the first run fails, or is the last one before the process ends, the "
    "others are made and the next start writes everything again") {
    RegistryContents owned = UsualStore();
    owned[kSettings].erase("First Time");
    for (const RegistryContents& store : {RegistryContents{}, owned}) {
        Sweep([&] { registry.contents = store; }, WriteFirstRunDefaults,
              [&] {
                  CheckWritten();
                  if (registry.contents[kSettings].contains("First Time")) return;
                  WriteFirstRunDefaults();
                  CHECK(Difference(registry.contents, ideal) == "");
              });
    }
}

TEST_CASE_FIXTURE(
    FaultSweep,
    "whichever registry call of a load fails, the rest is loaded as if its value were missing, and "
    "the next load repairs it") {
    const auto prepare = [this] {
        registry.contents = UsualStore();
        Put(*this, EditedWindow());
    };
    Sweep(
        prepare, [this] { transfer.LoadSettings(); },
        [&] {
            CHECK(registry.contents == before);
            const WindowState shown = StateOf(*this);
            transfer.LoadSettings();
            CHECK(Difference(StateOf(*this), idealWindow) == "");
            Put(*this, EditedWindow());
            registry.contents = Read();
            transfer.LoadSettings();
            CHECK(Difference(shown, StateOf(*this)) == "");
        });
}

TEST_CASE_FIXTURE(
    FaultSweep,
    "whichever registry call of a save fails, or is the last one before the process ends, the rest is "
    "saved, and a further save repairs it") {
    const auto prepare = [this] {
        registry.contents = UsualStore();
        Put(*this, EditedWindow());
        events.clear();
    };
    Sweep(
        prepare, [this] { commands.cmdOK_Click(); },
        [&] {
            CHECK(events == std::vector<std::string>{"hide"});
            CHECK(Difference(StateOf(*this), idealWindow) == "");
            CheckWritten();
            // The lists and options come back from the store as they were in the window. Not so the start-up
            // mode, which the program believes to be stored. Where a deletion stopped short of an entry that
            // the window no longer has, the gap before it stops the next one too, so that it takes one more
            // save.
            const WindowState expected = ListsAndOptions(idealWindow);
            WindowState loaded;
            for (int saves = 0; saves < 2 && loaded != expected; ++saves) {
                Put(*this, idealWindow);
                transfer.SaveSettings();
                transfer.LoadSettings();
                loaded = ListsAndOptions(StateOf(*this));
            }
            CHECK(Difference(loaded, expected) == "");
        });
}
