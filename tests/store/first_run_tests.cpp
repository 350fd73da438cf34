// The defaults that a fresh installation gets, and the order in which they are written. What becomes of them
// when calls fail is the registry faults' subject.
#include "store/first_run.h"

#include <doctest.h>

#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/support/first_run_defaults.h"
#include "tests/support/shown_text.h"

using namespace std::string_literals;
using Lines = std::vector<std::string>;

namespace {

// A registry in memory, in which the manager starts for the first time.
struct FirstRun {
    // What comes of the contents.
    void Check(const RegistryContents& before, const RegistryContents& after) {
        registry.contents = before;
        WriteFirstRunDefaults();
        CHECK(registry.contents == after);
    }

    RegistryCalls registry{RegistryCalls::Of::Memory};
    const std::vector<Default> rows = FirstRunDefaults(ToAnsi(ServerDirectory()));
    const RegistryContents defaults = [this] {
        RegistryContents contents;
        for (const Default& row : rows)
            contents[row.key][row.name] = Text(row.text);
        return contents;
    }();
};

}  // namespace

TEST_CASE_FIXTURE(FirstRun,
                  "an empty store gets twelve settings, four banner sizes, six engines and no exclude list") {
    Check({}, defaults);
    CHECK(registry.contents.at(kSettings).size() == 12);
    CHECK(registry.contents.at(kBanners).size() == 16);
    CHECK(registry.contents.at(kSearch).size() == 18);
    CHECK_FALSE(registry.contents.contains(kExclude));
}

TEST_CASE_FIXTURE(FirstRun, "the defaults are written one by one in their order, the mark last, each once") {
    Lines expected{R"(RegOpenKeyExA(HKCU, "Software\Calvane\Settings", 0, 0x19))"};
    size_t key = 0;
    for (const Default& row : rows) {
        expected.push_back("RegCreateKeyExA(HKCU, " + Quoted(row.key + 5) +
                           R"(, 0, "", 0, 0x2, {50, no descriptor, inherited}))");
        expected.push_back("RegSetValueExA(key" + std::to_string(++key) + ", " + Quoted(row.name) +
                           ", 0, type 1, " + Quoted(row.text) + ", no NUL behind)");
    }
    CHECK(registry.Watch(&WriteFirstRunDefaults) == expected);
    CHECK(registry.Count(RegistryFunction::Set) == 46);
}

TEST_CASE_FIXTURE(FirstRun, "a second start reads the mark and writes nothing, whatever is missing by then") {
    RegistryContents owned = defaults;
    owned[kSettings].erase("txtPause");
    owned[kBanners]["1Use"] = Text("False");
    Check(owned, owned);
    CHECK(registry.Watch(&WriteFirstRunDefaults).size() == 6);
    CHECK(registry.Values() == Lines{"read Settings\\First Time"});
}

TEST_CASE_FIXTURE(FirstRun, "the mark counts by its presence alone, whatever it holds") {
    for (const StoredValue& mark :
         {Text("True"), Text("False"), Text(""), Text("\0"s), Text("0"), StoredValue{REG_EXPAND_SZ, "%x%"},
          StoredValue{REG_BINARY, "\0\x01"s}, StoredValue{REG_BINARY, ""}, StoredValue{REG_MULTI_SZ, ""},
          StoredValue{REG_DWORD, "\0\0\0\0"s}, StoredValue{REG_DWORD, ""}, StoredValue{REG_DWORD, "\x01"s},
          StoredValue{REG_NONE, ""}, StoredValue{REG_DWORD_BIG_ENDIAN, "1"}, StoredValue{11, "12345678"}}) {
        CAPTURE(mark.type);
        CAPTURE(mark.bytes.size());
        const RegistryContents marked{{kSettings, {{"First Time", mark}}}};
        Check(marked, marked);
    }
}

TEST_CASE_FIXTURE(
    FirstRun, "without the mark every default is written over what is there, and further entries survive") {
    RegistryContents others{{kSettings, {{"Another", Text("value")}}},
                            {kBanners, {{"5Name", Text("My size")}, {"5Width", Text("10")}}},
                            {kSearch, {{"7Name", Text("My engine")}}},
                            {kExclude, {{"0", Text("http://example.com")}}}};
    RegistryContents before = others;
    RegistryContents after = others;
    for (const Default& row : rows) {
        before[row.key][row.name] = {REG_DWORD, "\x01\x02\x03\x04"};
        after[row.key][row.name] = Text(row.text);
    }
    before[kSettings].erase("First Time");
    Check(before, after);
}

TEST_CASE_FIXTURE(FirstRun, "a server in a drive's root gets a sound file with a doubled separator") {
    struct Fake {
        static DWORD WINAPI FileName(HMODULE, LPWSTR path, DWORD size) {
            wcsncpy(path, L"C:\\server.exe", size);
            return 13;
        }
    };
    const ImportPatch patch("kernel32.dll", "GetModuleFileNameW", &Fake::FileName);
    WriteFirstRunDefaults();
    CHECK(registry.contents[kSettings]["SoundFile"] == Text("C:\\\\Arc.wav"));
}
