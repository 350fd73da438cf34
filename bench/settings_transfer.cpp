// Loading and saving all settings, with lists of many lengths, beside the bare registry calls that the
// store's rules ask for.
#include <windows.h>
#include <commctrl.h>
#include <objbase.h>

#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "app/config_controls.h"
#include "bench/support/bare_store.h"
#include "bench/support/comparison.h"
#include "options/settings_transfer.h"
#include "platform/automation_error.h"
#include "store/settings_schema.h"
#include "tests/support/registry_calls.h"
#include "tests/support/test_hive.h"
#include "tests/support/test_window.h"

namespace {

constexpr int kManyRows = 1000;

// A store to measure with: how many rows its lists have, and how often each side runs.
struct Lengths {
    const char* name;
    int exclude;
    int banners;
    int rounds;
    int repeats;
};

constexpr Lengths kLengths[] = {{"empty lists", 0, 0, 15, 10},
                                {"100 exclude rows", 100, 0, 15, 2},
                                {"1,000 exclude rows", 1000, 0, 9, 1},
                                {"10,000 exclude rows", 10000, 0, 5, 1},
                                {"1,000 banner rows", 0, 1000, 9, 1}};

// They take minutes, nearly all of them in the system's registry.
constexpr Lengths kLongLengths[] = {{"30,000 exclude rows", 30000, 0, 1, 1},
                                    {"100,000 exclude rows", 100000, 0, 1, 1}};

constexpr double kWanted = 1.15;

// The controls of the configuration window and what moves settings into and out of them.
struct ConfigWindow {
    ConfigWindow() { controls.SetUp(); }

    TestHive machine{HKEY_LOCAL_MACHINE};
    TestHive user{HKEY_CURRENT_USER};
    ConfigControls controls;
    TestWindow window{Join({controls.All()})};
    std::wstring loaderPath = L"C:\\Calvane\\CalvaneConfigLoader.exe";
    ChangeMark changeMark{controls.commands.cmdApply};
    const Event markChanged = [this] { changeMark.MarkChanged(); };
    PopupNotice popupNotice{controls.settings, markChanged};
    GeneralOptions generalOptions{controls.settings, loaderPath, markChanged};
    ClosedLog closedLog{controls.log, controls.exclude.lstExclude,
                        []() -> std::wstring { RaiseError(ErrorNumber::ObjectNotSet); }, markChanged};
    SettingsTransfer transfer{controls.All(), changeMark, popupNotice,
                              generalOptions, closedLog,  controls.settings.cboPauseKey};
};

void WriteStore(const TestHive& user, const Lengths& lengths) {
    for (const wchar_t* const key :
         {Schema::kSettingsKey, Schema::kExcludeKey, Schema::kBannersKey, Schema::kSearchKey})
        user.DeleteTree(key);
    for (const Schema::Setting& setting : Schema::kOptionDefaults)
        user.Write(Schema::kSettingsKey, setting.name, setting.text);
    for (const Schema::Setting& setting : Schema::kClosingDefaults)
        user.Write(Schema::kSettingsKey, setting.name, setting.text);
    for (int n = 0; n < lengths.exclude; ++n)
        user.Write(Schema::kExcludeKey, std::to_wstring(n),
                   L"http://site" + std::to_wstring(n) + L".example");
    for (int n = 1; n <= lengths.banners; ++n) {
        const std::wstring number = std::to_wstring(n);
        user.Write(Schema::kBannersKey, number + Schema::kName, L"User Banner " + number);
        user.Write(Schema::kBannersKey, number + Schema::kWidth, number);
        user.Write(Schema::kBannersKey, number + Schema::kHeight, L"60");
        user.Write(Schema::kBannersKey, number + Schema::kUse, n % 2 == 0 ? L"True" : L"False");
    }
}

// The rows put into the lists without the store, as a load puts them there.
void FillLists(ConfigWindow& config, const Lengths& lengths) {
    ListBox& exclude = config.controls.exclude.lstExclude;
    ListView& banners = config.controls.banners.lvwBanners;
    {
        const RedrawPause pause(exclude);
        exclude.Clear();
        for (int n = 0; n < lengths.exclude; ++n)
            exclude.AddItem(L"http://site12345.example");
    }
    SetupBannerColumns(banners);
    const RedrawPause pause(banners);
    for (int n = 1; n <= lengths.banners; ++n) {
        const int position = banners.Add(L"User Banner 12345");
        banners.SubItem(position, 1, L"468");
        banners.SubItem(position, 2, L"60");
        banners.Checked(position, n % 2 == 0);
    }
}

void Expect(bool isTrue, const char* what) {
    if (!isTrue) throw std::runtime_error(what);
}

size_t CallsOf(const std::function<void()>& work) {
    return RegistryCalls().Watch(work).size();
}

void CompareAt(const Lengths& lengths) {
    ConfigWindow config;
    WriteStore(config.user, lengths);
    // What the bare calls write is what they read, so that both sides leave the same store.
    const StoredValues values = BareStore::Load();
    Expect(static_cast<int>(values.exclude.size()) == lengths.exclude, "the bare calls miss rows");
    Expect(static_cast<int>(values.banners.size()) == lengths.banners, "the bare calls miss banners");

    const size_t loadCalls = CallsOf([&] { config.transfer.LoadSettings(); });
    Expect(CallsOf([&] { BareStore::Load(); }) == loadCalls, "the bare load makes other calls");
    const size_t saveCalls = CallsOf([&] { config.transfer.SaveSettings(); });
    Expect(CallsOf([&] { BareStore::Save(values); }) == saveCalls, "the bare save makes other calls");

    Report({.what = "Loading the settings",
            .size = lengths.name,
            .measured = {"`LoadSettings`", [&] { config.transfer.LoadSettings(); }},
            .beside = {"its registry calls alone (" + std::to_string(loadCalls) + ")",
                       [&] { BareStore::Load(); }},
            .rounds = lengths.rounds,
            .wanted = kWanted,
            .repeats = lengths.repeats,
            .warmUps = lengths.rounds > 1 ? 1 : 0});
    if (lengths.exclude + lengths.banners >= kManyRows) {
        Report({.what = "Loading the settings",
                .size = lengths.name,
                .measured = {"of that, the lists' own messages", [&] { FillLists(config, lengths); }},
                .beside = {"its registry calls alone (" + std::to_string(loadCalls) + ")",
                           [&] { BareStore::Load(); }},
                .rounds = lengths.rounds});
        config.transfer.LoadSettings();
    }
    Expect(config.controls.exclude.lstExclude.ListCount() == lengths.exclude, "rows are missing");
    Expect(config.controls.banners.lvwBanners.Count() == lengths.banners, "banners are missing");
    Report({.what = "Saving the settings",
            .size = lengths.name,
            .measured = {"`SaveSettings`", [&] { config.transfer.SaveSettings(); }},
            .beside = {"its registry calls alone (" + std::to_string(saveCalls) + ")",
                       [&] { BareStore::Save(values); }},
            .rounds = lengths.rounds,
            .wanted = kWanted,
            .repeats = lengths.repeats,
            .warmUps = lengths.rounds > 1 ? 1 : 0});
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const INITCOMMONCONTROLSEX classes{
        sizeof(classes), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES | ICC_LINK_CLASS | ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&classes);
    const bool isLong = count > 2 && std::wstring_view(arguments[2]) == L"long";
    return RunBenchmark([&] {
        for (const Lengths& lengths : isLong ? std::span<const Lengths>(kLongLengths) : kLengths)
            CompareAt(lengths);
    });
}
