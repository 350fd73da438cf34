#include "tests/kill_sweep/subjects.h"

#include "platform/handle.h"
#include "platform/text.h"
#include "tests/support/stored_values.h"

namespace {

constexpr int kExcludeRows = 12;
constexpr int kBannerRows = 6;
constexpr int kSearchRows = 8;

StoredValue Text(const std::string& bytes) {
    return {REG_SZ, bytes};
}

}  // namespace

RegistryContents Neighbours() {
    return {{"HKCU\\Software\\Neighbour", {{"0", Text("zero")}, {"First Time", Text("no")}}},
            {"HKCU\\Software\\Calvane", {{"Settings", Text("a value of the root key")}}},
            {"HKCU\\Software\\Calvane\\Neighbour", {{"1Name", Text("one")}, {"1Use", Text("True")}}},
            {"HKCU\\Software\\Calvane\\Banners\\Neighbour", {{"1Name", Text("one")}}},
            {"HKLM\\Software\\Calvane\\Settings", {{"chkBeep", Text("1")}}},
            {kRun, {{"Another", Text("C:\\another.exe")}}}};
}

RegistryContents FullStore() {
    RegistryContents store = Neighbours();
    store[kSettings] = {
        {"chkPlaySound", Text("1")},      {"chkBeep", Text("0")},       {"chkStartup", Text("1")},
        {"chkStopAds", Text("True")},     {"chkStopPop", Text("1")},    {"chkTray", Text("1")},
        {"txtSpeed", Text("400")},        {"txtPause", Text("12000")},  {"chkExtra", Text("1")},
        {"txtExtra", Text("extra")},      {"Startup", Text("RunOnly")}, {"Pause Key", Text("F9")},
        {"SoundFile", Text("C:\\a.wav")}, {"First Time", Text("True")}};
    for (int row = 0; row < kExcludeRows; ++row)
        store[kExclude][std::to_string(row)] = Text("http://site-" + std::to_string(row));
    for (int row = 1; row <= kBannerRows; ++row) {
        const std::string number = std::to_string(row);
        store[kBanners][number + "Name"] = Text("Banner " + number);
        store[kBanners][number + "Width"] = Text(number + "1");
        store[kBanners][number + "Height"] = Text(number + "2");
        store[kBanners][number + "Use"] = Text(row % 2 == 0 ? "True" : "False");
    }
    for (int row = 1; row <= kSearchRows; ++row) {
        const std::string number = std::to_string(row);
        store[kSearch][number + "Name"] = Text("Search " + number);
        store[kSearch][number + "Url"] = Text("http://search-" + number + "/?q=");
        store[kSearch][number + "Use"] = Text(row % 2 == 0 ? "False" : "True");
    }
    return store;
}

WindowState EditedWindow() {
    WindowState state;
    state.beep = 1;
    state.speed = L"3";
    state.pause = L"17";
    state.extraText = L"typed";
    state.exclude = {L"http://x", L"http://y", L"http://z"};
    state.banners = {{L"A", {L"1", L"2"}, true}, {L"B", {L"3", L"4"}, false}};
    state.search = {{L"E", {L"http://e"}, true}, {L"F", {L"http://f"}, false}, {L"G", {L"http://g"}, true}};
    state.pauseKey = L"Ctrl";
    state.soundFile = L"C:\\b.wav";
    state.selectedMode = L"Startup";
    state.mode = L"RunOnly";
    return state;
}

void Walk(HKEY key, const std::string& root, RegistryContents& contents) {
    if (StoredKey values = ValuesIn(key); !values.empty()) contents[root] = std::move(values);
    std::string name(1024, '\0');
    for (DWORD index = 0;; ++index) {
        DWORD nameLength = static_cast<DWORD>(name.size());
        if (RegEnumKeyExA(key, index, name.data(), &nameLength, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            break;
        const std::string subkey = name.substr(0, nameLength);
        HKEY opened = nullptr;
        if (RegOpenKeyExW(key, FromAnsi(subkey).c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) continue;
        const RegistryKey owner(opened);
        Walk(opened, root + '\\' + subkey, contents);
    }
}

RegistryContents WithoutEmptyKeys(RegistryContents contents) {
    std::erase_if(contents, [](const auto& key) { return key.second.empty(); });
    return contents;
}
