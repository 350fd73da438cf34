// A start, a load and a save make the calls that the store's rules ask for, and not one more.
#include "store/settings_schema.h"
#include "tests/call_counts/counted_manager.h"

namespace {

// What a first run writes: 12 settings, 4 banner sizes, 6 search engines.
constexpr int kDefaults = 12 + 4 * kBannerFields + 6 * kSearchFields;

struct Lengths {
    int exclude;
    int banners;
    int search;
};

constexpr Lengths kLengths[] = {{0, 0, 0}, {1, 1, 1}, {7, 0, 3}, {40, 12, 9}};

// Something that no list reads keeps the key of an empty list there.
void StoreLists(const TestHive& user, const Lengths& lengths) {
    for (const wchar_t* const key : {Schema::kExcludeKey, Schema::kBannersKey, Schema::kSearchKey}) {
        user.DeleteTree(key);
        user.Write(key, L"kept", L"");
    }
    for (int n = 0; n < lengths.exclude; ++n)
        user.Write(Schema::kExcludeKey, std::to_wstring(n), L"http://example.com");
    for (int n = 1; n <= lengths.banners; ++n) {
        for (const wchar_t* const field : {L"Name", L"Width", L"Height"})
            user.Write(Schema::kBannersKey, std::to_wstring(n) + field, L"60");
        user.Write(Schema::kBannersKey, std::to_wstring(n) + L"Use", L"True");
    }
    for (int n = 1; n <= lengths.search; ++n) {
        for (const wchar_t* const field : {L"Name", L"Url"})
            user.Write(Schema::kSearchKey, std::to_wstring(n) + field, L"http://example.com");
        user.Write(Schema::kSearchKey, std::to_wstring(n) + L"Use", L"False");
    }
}

int ValuesOf(const Lengths& lengths) {
    return lengths.exclude + kBannerFields * lengths.banners + kSearchFields * lengths.search;
}

// Each list is read to its first missing value.
constexpr int kListEnds = 3;

CallCounts LoadOf(const Lengths& lengths) {
    return StoreWork{.read = kOptions + ValuesOf(lengths) + kOtherSettings, .missing = kListEnds}.Calls();
}

// Each list is deleted to its first missing value, or entry; then it is written. The startup mode is as it
// was read and is not written.
CallCounts SaveOf(const Lengths& stored, const Lengths& shown) {
    const int entryAfterLast = 1 + kBannerFields + kSearchFields;
    return StoreWork{.written = kOptions + ValuesOf(shown) + kOtherSettings - 1,
                     .deleted = ValuesOf(stored) + entryAfterLast}
        .Calls();
}

}  // namespace

TEST_CASE_FIXTURE(CountedManager,
                  "a first start asks for the mark, writes each default once and reads each setting once") {
    counter.Count([&] { config = inside.Instance(FormHide); });
    // The Settings key is not there at first, the Exclude key not even after the defaults have been written;
    // the other two lists are read to their ends.
    CHECK(counter.Registry() ==
          StoreWork{.read = kOptions + 4 * kBannerFields + 6 * kSearchFields + kOtherSettings,
                    .missing = 2,
                    .missingKeys = 2,
                    .written = kDefaults}
              .Calls());
    CHECK(engine.script.calls == EngineCalls{"CreateInstance", "CreatePopup", "Advise", "State", "LogFile"});
    CHECK(counter.Files() == ReadingOf(0));
    CHECK(shell.Actions() == std::vector<DWORD>{NIM_ADD});
    CHECK(counter.Shell() == CallCounts{{"Shell_NotifyIconA", 1}});
    CHECK(counter.Timers().empty());
}

TEST_CASE_FIXTURE(CountedManager, "a later start asks for the mark and reads each setting once") {
    Start();
    config.Reset();
    g_oConfig.Reset();
    g_frmConfig.Reset();
    g_lngConfigHwnd = 0;
    Forget();
    StoreLists(inside.user, {3, 2, 1});
    counter.Count([&] { config = inside.Instance(FormHide); });
    CHECK(
        counter.Registry() ==
        StoreWork{.read = 1 + kOptions + ValuesOf({3, 2, 1}) + kOtherSettings, .missing = kListEnds}.Calls());
    CHECK(engine.script.calls == EngineCalls{"CreateInstance", "CreatePopup", "Advise", "State", "LogFile"});
    CHECK(counter.Files() == ReadingOf(0));
    CHECK(counter.Shell() == CallCounts{{"Shell_NotifyIconA", 1}});
    CHECK(counter.Timers().empty());
}

TEST_CASE_FIXTURE(CountedManager, "further clients and the showing of the window read and write nothing") {
    Start();
    counter.Count([&] {
        for (const long showType : {2L, 1L, 3L, 1L, 0L})
            inside.Instance(showType);
    });
    CHECK(counter.Registry().empty());
    CHECK(counter.Files().empty());
    CHECK(counter.Shell().empty());
    CHECK(counter.Timers().empty());
    CHECK(engine.script.calls.empty());
}

TEST_CASE_FIXTURE(CountedManager, "Cancel reads each setting once, and the log") {
    Start();
    for (const Lengths& lengths : kLengths) {
        CAPTURE(lengths.exclude);
        StoreLists(inside.user, lengths);
        Press(L"cmdCancel");
        CHECK(counter.Registry() == LoadOf(lengths));
        CHECK(counter.Files() == ReadingOf(0));
        CHECK(engine.script.calls == EngineCalls{"LogFile"});
        CHECK(counter.Shell().empty());
        CHECK(counter.Timers().empty());
    }
}

TEST_CASE_FIXTURE(CountedManager,
                  "Apply deletes each list and writes each setting once, and tells the engine") {
    Start();
    for (const Lengths& shown : kLengths) {
        for (const Lengths& stored : kLengths) {
            CAPTURE(shown.exclude);
            CAPTURE(stored.exclude);
            StoreLists(inside.user, shown);
            Press(L"cmdCancel");
            StoreLists(inside.user, stored);
            Press(L"cmdApply");
            CHECK(counter.Registry() == SaveOf(stored, shown));
            CHECK(engine.script.calls == EngineCalls{"ReloadSettings"});
            CHECK(counter.Files().empty());
            CHECK(counter.Shell().empty());
            CHECK(counter.Timers().empty());
        }
    }
}

TEST_CASE_FIXTURE(CountedManager, "OK makes the same calls of the store as Apply, and none of the engine") {
    Start();
    StoreLists(inside.user, {7, 2, 3});
    Press(L"cmdCancel");
    Press(L"cmdOK");
    CHECK(counter.Registry() == SaveOf({7, 2, 3}, {7, 2, 3}));
    CHECK(engine.script.calls.empty());
    CHECK(counter.Files().empty());
    CHECK(counter.Shell().empty());
    CHECK(counter.Timers().empty());
}

TEST_CASE_FIXTURE(CountedManager,
                  "a startup mode that changed is written with the next Apply, and only then") {
    const TestHive machine(HKEY_LOCAL_MACHINE);
    machine.Write(Schema::kRunKey, L"kept", L"");
    Start();
    StoreLists(inside.user, {});
    Press(L"cmdCancel");
    CallCounts unchanged = SaveOf({}, {});
    const auto with = [&](const StoreWork& more) {
        CallCounts sum = unchanged;
        for (const auto& [name, count] : more.Calls())
            sum[name] += count;
        return sum;
    };
    // From the default, RunOnly: the mode and the Run value; then the mode, and the Run value goes.
    SendMessageW(Control(L"optStartup"), BM_CLICK, 0, 0);
    Press(L"cmdApply");
    CHECK(counter.Registry() == with({.written = 2}));
    Press(L"cmdApply");
    CHECK(counter.Registry() == unchanged);
    SendMessageW(Control(L"optLoadFromMenu"), BM_CLICK, 0, 0);
    Press(L"cmdApply");
    CHECK(counter.Registry() == with({.written = 1, .deleted = 1}));
    SendMessageW(Control(L"optLoadWithKiller"), BM_CLICK, 0, 0);
    Press(L"cmdApply");
    CHECK(counter.Registry() == with({.written = 1}));
}
