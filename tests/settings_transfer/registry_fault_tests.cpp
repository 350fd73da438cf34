// Fails every single registry call of the first run, of a load and of a save, and compares what comes of it
// with the model. A process that is ended by force leaves what calls leave that fail from some call on.
#include <functional>

#include "platform/text.h"
#include "store/first_run.h"
#include "store/server_directory.h"
#include "tests/settings_transfer/usual_store.h"
#include "tests/support/first_run_defaults.h"
#include "tests/support/message_recorder.h"
#include "tests/support/settings_model.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

constexpr RegistryFunction kFunctions[] = {
    RegistryFunction::Open, RegistryFunction::Query,       RegistryFunction::Info, RegistryFunction::Create,
    RegistryFunction::Set,  RegistryFunction::DeleteValue, RegistryFunction::Close};

std::string TextOfFault(const Fault& fault) {
    return "function " + (fault.function ? std::to_string(static_cast<int>(*fault.function)) : "any") +
           " call " + std::to_string(fault.first) + (fault.isLasting ? " on" : "");
}

// Runs body under every fault that it meets, and returns how many: each call once and each call with all
// behind it, of all functions and of each function by itself. body returns whether the fault happened. What a
// failure leaves does not depend on its code.
long Sweep(const std::function<bool(const Fault&)>& body) {
    std::vector<std::optional<RegistryFunction>> functions{std::nullopt};
    functions.insert(functions.end(), std::begin(kFunctions), std::end(kFunctions));
    CHECK_FALSE(body({}));
    long faults = 0;
    for (const auto& function : functions) {
        for (const bool isLasting : {false, true}) {
            // Each call of one function once is among each call of all functions; where all of one fail from
            // one call on, neighbours come to the same.
            if (function && !isLasting) continue;
            for (Fault fault{function, 1, isLasting}; body(fault); fault.first += function ? 5 : 1)
                ++faults;
        }
    }
    MESSAGE(faults << " faults");
    return faults;
}

// The window of the test, over a registry in memory that fails.
struct Transfer {
    // What the fault makes of the window and the store by the model, of which work is one run, is what it
    // makes of them; returns whether it happened.
    bool Agrees(const Fault& fault, const std::function<void()>& work,
                const std::function<void(SettingsModel&, WindowState&)>& workOfModel) {
        RegistryContents store = registry.contents;
        WindowState expected = StateOf(page);
        registry.Fail(fault);
        CHECK_NOTHROW(work());
        const FaultCounter counter = registry.Counter();
        registry.Fail({});
        SettingsModel model(store, fault);
        workOfModel(model, expected);
        CHECK(Difference(registry.contents, store) == "");
        CHECK(Difference(StateOf(page), expected) == "");
        CHECK(counter.Calls() == model.Calls());
        CHECK(registry.strayHandles == 0);
        CHECK(recorder.messages.empty());
        return counter.Happened();
    }

    bool Load(const Fault& fault) {
        return Agrees(
            fault, [&] { page.transfer.LoadSettings(); },
            [](SettingsModel& model, WindowState& window) { model.Load(window); });
    }

    bool PressOK(const Fault& fault) {
        page.events.clear();
        const bool happened = Agrees(
            fault, [&] { page.commands.cmdOK_Click(); },
            [&](SettingsModel& model, WindowState& window) {
                model.Save(window, ToAnsi(page.loaderPath));
                window.canApply = false;
            });
        CHECK(page.events == std::vector<std::string>{"hide"});
        return happened;
    }

    SettingsWindow page;
    const MessageRecorder recorder;
    RegistryCalls registry{RegistryCalls::Of::Memory};
};

}  // namespace

TEST_CASE_FIXTURE(
    Transfer,
    "whichever registry call of the first run fails, or is the last one before the process ends, the "
    "others are made and the next start writes everything again") {
    const std::string directory = ToAnsi(ServerDirectory());
    RegistryContents owned = UsualStore();
    owned[kSettings].erase("First Time");
    for (const RegistryContents& before : {RegistryContents{}, owned}) {
        RegistryContents ideal = before;
        SettingsModel(ideal).WriteFirstRun(directory);
        const long faults = Sweep([&](const Fault& fault) {
            INFO(TextOfFault(fault));
            registry.contents = before;
            const bool happened =
                Agrees(fault, WriteFirstRunDefaults,
                       [&](SettingsModel& model, WindowState&) { model.WriteFirstRun(directory); });
            if (!registry.contents[kSettings].contains("First Time")) {
                WriteFirstRunDefaults();
                CHECK(Difference(registry.contents, ideal) == "");
            }
            return happened;
        });
        CHECK(faults > 180);
    }
}

TEST_CASE_FIXTURE(
    Transfer, "whichever registry call of a load fails, the rest is loaded, and the next load repairs it") {
    registry.contents = UsualStore();
    WindowState ideal = EditedWindow();
    SettingsModel(registry.contents).Load(ideal);
    const long faults = Sweep([&](const Fault& fault) {
        INFO(TextOfFault(fault));
        Put(page, EditedWindow());
        const bool happened = Load(fault);
        page.transfer.LoadSettings();
        CHECK(Difference(StateOf(page), ideal) == "");
        return happened;
    });
    CHECK(registry.contents == UsualStore());
    CHECK(faults > 300);
}

TEST_CASE_FIXTURE(
    Transfer,
    "whichever registry call of a save fails, or is the last one before the process ends, the rest is "
    "saved, the next start shows it, and a further save repairs it") {
    const long faults = Sweep([&](const Fault& fault) {
        INFO(TextOfFault(fault));
        registry.contents = UsualStore();
        Put(page, EditedWindow());
        const bool happened = PressOK(fault);
        const WindowState shown = StateOf(page);
        // Another start: a window as it is designed.
        Put(page, {});
        Load({});
        // The lists and options come back from the store as they were in the window. Not so the start-up
        // mode, which the program believes to be stored. Where a deletion stopped short of an entry that the
        // window no longer has, the gap before it stops the next one too, so that it takes one more save.
        WindowState loaded;
        WindowState expected = shown;
        for (int saves = 0; saves < 2 && loaded != expected; ++saves) {
            Put(page, shown);
            page.transfer.SaveSettings();
            page.transfer.LoadSettings();
            loaded = StateOf(page);
            expected.mode = loaded.mode;
            expected.selectedMode = loaded.selectedMode;
            expected.canApply = loaded.canApply;
        }
        CHECK(Difference(loaded, expected) == "");
        return happened;
    });
    CHECK(faults > 300);
}

TEST_CASE("the system's own registry comes to what the one in memory comes to") {
    SettingsWindow page;
    for (const auto& [path, values] : UsualStore()) {
        const TestHive& hive = path.starts_with("HKLM") ? page.machine : page.user;
        for (const auto& [name, value] : values)
            hive.Write(FromAnsi(path).substr(5), FromAnsi(name), value.type, value.bytes);
    }
    RegistryCalls calls;
    for (const RegistryFunction function : kFunctions) {
        const Fault fault{function, 5, true};
        INFO(TextOfFault(fault));
        RegistryContents store = UsualStore();
        WindowState window = EditedWindow();
        Put(page, window);
        calls.Fail(fault);
        calls.Watch([&] { page.transfer.LoadSettings(); });
        SettingsModel(store, fault).Load(window);
        CHECK(Difference(StateOf(page), window) == "");
    }
    RegistryContents store = UsualStore();
    WindowState window = EditedWindow();
    Put(page, window);
    page.transfer.SaveSettings();
    SettingsModel(store).Save(window, ToAnsi(page.loaderPath));
    for (const auto& [path, values] : store) {
        const TestHive& hive = path.starts_with("HKLM") ? page.machine : page.user;
        CHECK(hive.ValueCount(FromAnsi(path).substr(5)) == values.size());
        for (const auto& [name, value] : values)
            CHECK(hive.Bytes(FromAnsi(path).substr(5), FromAnsi(name)) == value.bytes);
    }
}
