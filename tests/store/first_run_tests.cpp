// The defaults that a fresh installation gets, and the order in which they are written. What becomes of them
// when calls fail is the registry faults' subject.
#include "store/first_run.h"

#include <doctest.h>

#include "platform/text.h"
#include "store/server_directory.h"
#include "tests/support/import_fake.h"
#include "tests/support/registry_calls.h"
#include "tests/support/shown_text.h"

using namespace std::string_literals;
using Lines = std::vector<std::string>;

TEST_CASE("an empty store gets its defaults one by one in their order, the mark last") {
    RegistryCalls registry(RegistryCalls::Of::Memory);
    Lines expected;
    const auto writes = [&](const std::string& key, const Lines& values) {
        for (const std::string& value : values)
            expected.push_back("write " + key + '\\' + value);
    };
    writes("Settings", {"chkBeep=0", "chkPlaySound=1", "chkStartup=1", "chkStopAds=True", "chkStopPop=True",
                        "chkTray=1", "txtPause=5000", "txtSpeed=1000"});
    writes("Settings", {"SoundFile=" + ToAnsi(ServerDirectory()) + "\\Arc.wav"});
    writes("Banners", {"1Name=Full Banner", "1Width=468", "1Height=60", "1Use=True"});
    writes("Banners", {"2Name=Half Banner", "2Width=234", "2Height=60", "2Use=False"});
    writes("Banners", {"3Name=Quarter Banner", "3Width=120", "3Height=60", "3Use=False"});
    writes("Banners", {"4Name=Button", "4Width=88", "4Height=31", "4Use=False"});
    writes("Search", {"1Name=Yahoo", "1Url=http://search.yahoo.com/bin/search?p=", "1Use=True"});
    writes("Search", {"2Name=Alta Vista", "2Url=http://www.altavista.com/sites/search/web?q=", "2Use=True"});
    writes("Search",
           {"3Name=MSN", "3Url=http://search.msn.com/results.asp?RS=CHECKED&FORM=MSNH&v=1&q=", "3Use=True"});
    writes("Search", {"4Name=Google", "4Url=http://www.google.com/search?q=", "4Use=True"});
    writes("Search", {"5Name=Teoma", "5Url=http://s.teoma.com/search?q=", "5Use=True"});
    writes("Search", {"6Name=Overture",
                      "6Url=http://www.overture.com/d/search/?type=home&tm=1&Keywords=", "6Use=True"});
    writes("Settings", {"Startup=RunOnly", "Pause Key=Shift", "First Time=True"});
    registry.Watch(&WriteFirstRunDefaults);
    CHECK(registry.Values() == expected);
    CHECK(registry.Count(RegistryFunction::Set) == 46);
    CHECK(registry.contents.size() == 3);  // no exclude list
}

TEST_CASE("a start that finds the mark, whatever that holds, writes nothing, whatever is missing") {
    RegistryCalls registry(RegistryCalls::Of::Memory);
    for (const StoredValue& mark : {Text("False"), Text(""), Text("\0"s), StoredValue{REG_DWORD, "\0\0\0\0"s},
                                    StoredValue{REG_DWORD, "\x01"s}, StoredValue{REG_MULTI_SZ, ""}}) {
        CAPTURE(mark.type);
        CAPTURE(mark.bytes.size());
        const RegistryContents marked{{kSettings, {{"First Time", mark}}}};
        registry.contents = marked;
        registry.Watch(&WriteFirstRunDefaults);
        CHECK(registry.contents == marked);
        CHECK(registry.Values() == Lines{"read Settings\\First Time"});
    }
}

TEST_CASE("without the mark every default is written over what is there, and further entries survive") {
    RegistryCalls registry(RegistryCalls::Of::Memory);
    WriteFirstRunDefaults();
    const RegistryContents defaults = registry.contents;
    RegistryContents before{{kSettings, {{"Another", Text("value")}}},
                            {kBanners, {{"5Name", Text("My size")}, {"5Width", Text("10")}}},
                            {kSearch, {{"7Name", Text("My engine")}}},
                            {kExclude, {{"0", Text("http://example.com")}}}};
    RegistryContents after = before;
    for (const auto& [key, values] : defaults) {
        for (const auto& [name, value] : values) {
            before[key][name] = {REG_DWORD, "\x01\x02\x03\x04"};
            after[key][name] = value;
        }
    }
    before[kSettings].erase("First Time");
    registry.contents = before;
    WriteFirstRunDefaults();
    CHECK(registry.contents == after);
}

TEST_CASE("a server in a drive's root gets a sound file with a doubled separator") {
    RegistryCalls registry(RegistryCalls::Of::Memory);
    const ImportFake<"GetModuleFileNameW", decltype(&GetModuleFileNameW)> root{
        "kernel32.dll", [](HMODULE, LPWSTR path, DWORD size) -> DWORD {
            wcsncpy(path, L"C:\\server.exe", size);
            return 13;
        }};
    WriteFirstRunDefaults();
    CHECK(registry.contents[kSettings]["SoundFile"] == Text("C:\\\\Arc.wav"));
}
