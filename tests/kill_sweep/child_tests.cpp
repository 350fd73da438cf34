// What the children of the sweep run. They leave their registry behind.
#include <doctest.h>

#include "platform/text.h"
#include "store/first_run.h"
#include "tests/kill_sweep/child.h"
#include "tests/kill_sweep/subjects.h"
#include "tests/support/settings_window.h"

namespace {

void Fill(const SettingsWindow& page, const RegistryContents& contents) {
    for (const auto& [path, values] : contents) {
        const TestHive& hive = path.starts_with("HKCU") ? page.user : page.machine;
        for (const auto& [name, value] : values)
            hive.Write(FromAnsi(path.substr(5)), FromAnsi(name), value.type, value.bytes);
    }
}

[[noreturn]] void End(UINT code) {
    TerminateProcess(GetCurrentProcess(), code);
    ExitProcess(code);
}

// Runs body until the call, and no further.
template <class Body>
[[noreturn]] void RunUntilTheCall(Body&& body) {
    MemoryRegistry registry(true);
    long left = CallToEndAt();
    registry.beforeCall = [&](RegistryCall, const std::string&) {
        if (--left == 0) End(kKilled);
    };
    body();
    End(kRanThrough);
}

}  // namespace

TEST_CASE("child: first run" * doctest::skip()) {
    SettingsWindow page;
    Fill(page, Neighbours());
    RunUntilTheCall(&WriteFirstRunDefaults);
}

TEST_CASE("child: Apply" * doctest::skip()) {
    SettingsWindow page;
    Fill(page, FullStore());
    Put(page, EditedWindow());
    RunUntilTheCall([&] { page.commands.cmdApply_Click(); });
}
