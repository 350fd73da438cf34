// Puts everything that a registry can hold, and more, where the program expects its settings, and compares
// what a load makes of it with the model.
#include <random>

#include "platform/text.h"
#include "store/registry.h"
#include "store/settings_schema.h"
#include "tests/hostile_store/hostile_bytes.h"
#include "tests/support/memory_registry.h"
#include "tests/support/message_recorder.h"
#include "tests/support/settings_model.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

using namespace std::string_literals;

namespace {

constexpr char kSettings[] = "HKCU\\Software\\Calvane\\Settings";
constexpr char kExclude[] = "HKCU\\Software\\Calvane\\Exclude";
constexpr char kBanners[] = "HKCU\\Software\\Calvane\\Banners";
constexpr char kSearch[] = "HKCU\\Software\\Calvane\\Search";

// A single-line edit control outside of the window under test: what a text looks like in one.
class PlainEdit {
public:
    PlainEdit()
        : m_hwnd(CreateWindowExW(0, L"EDIT", L"", WS_POPUP | ES_AUTOHSCROLL, 0, 0, 100, 20, nullptr, nullptr,
                                 nullptr, nullptr)) {}
    PlainEdit(const PlainEdit&) = delete;
    PlainEdit& operator=(const PlainEdit&) = delete;
    ~PlainEdit() { DestroyWindow(m_hwnd); }

    std::wstring Shown(const std::wstring& text) const {
        SetWindowTextW(m_hwnd, text.c_str());
        std::wstring shown(static_cast<size_t>(GetWindowTextLengthW(m_hwnd)) + 1, L'\0');
        shown.resize(
            static_cast<size_t>(GetWindowTextW(m_hwnd, shown.data(), static_cast<int>(shown.size()))));
        return shown;
    }

private:
    const HWND m_hwnd;
};

StoredValue Text(const std::string& bytes) {
    return {REG_SZ, bytes};
}

RegistryContents UsualStore() {
    return {{kSettings,
             {{"chkPlaySound", Text("1")},
              {"chkBeep", Text("0")},
              {"txtSpeed", Text("400")},
              {"txtPause", Text("12000")},
              {"chkExtra", Text("1")},
              {"txtExtra", Text("extra")},
              {"Startup", Text("RunOnly")},
              {"Pause Key", Text("F9")},
              {"SoundFile", Text("C:\\a.wav")}}},
            {kExclude, {{"0", Text("http://a")}, {"1", Text("http://b")}, {"2", Text("http://c")}}},
            {kBanners,
             {{"1Name", Text("One")},
              {"1Width", Text("11")},
              {"1Height", Text("12")},
              {"1Use", Text("True")},
              {"2Name", Text("Two")},
              {"2Width", Text("21")},
              {"2Height", Text("22")},
              {"2Use", Text("False")}}},
            {kSearch,
             {{"1Name", Text("S1")},
              {"1URL", Text("http://s1")},
              {"1Use", Text("True")},
              {"2Name", Text("S2")},
              {"2URL", Text("http://s2")},
              {"2Use", Text("False")}}}};
}

// A window that shows what no store of these tests holds.
WindowState OtherWindow() {
    WindowState state;
    state.beep = 1;
    state.speed = L"3";
    state.pause = L"17";
    state.extraText = L"typed";
    state.exclude = {L"http://x"};
    state.banners = {{L"A", {L"1", L"2"}, true}};
    state.search = {{L"E", {L"http://e"}, true}};
    state.pauseKey = L"Ctrl";
    state.soundFile = L"C:\\b.wav";
    state.selectedMode = L"Manual";
    state.mode = L"Startup";
    return state;
}

class HostileStore {
public:
    // Loads the store into a window that shows something else, saves it again, and compares both with the
    // model.
    void Check(const RegistryContents& store) {
        WindowState expected = OtherWindow();
        Put(page, expected);
        registry.contents = store;
        CHECK_NOTHROW(page.transfer.LoadSettings());
        CHECK(registry.contents == store);
        RegistryContents expectedStore = store;
        SettingsModel model(expectedStore);
        model.editText = [this](const std::wstring& text) { return edit.Shown(text); };
        model.Load(expected);
        CHECK(Difference(StateOf(page), expected) == "");
        ++loads;
    }

    // The store that comes of a save of what was loaded.
    void CheckSave() {
        RegistryContents expectedStore = registry.contents;
        WindowState expected = StateOf(page);
        CHECK_NOTHROW(page.transfer.SaveSettings());
        SettingsModel(expectedStore).Save(expected, ToAnsi(page.loaderPath));
        CHECK(Difference(registry.contents, expectedStore) == "");
        CHECK(Difference(StateOf(page), expected) == "");
        ++saves;
    }

    SettingsWindow page;
    const MessageRecorder recorder;
    MemoryRegistry registry;
    const PlainEdit edit;
    long loads = 0;
    long saves = 0;
};

}  // namespace

TEST_CASE("every value, whatever its type and bytes, is loaded or leaves its control as the rules say") {
    HostileStore f;
    const RegistryContents usual = UsualStore();
    for (const auto& [key, values] : usual) {
        for (const auto& [name, value] : values) {
            // Of the lists, the first entry: the stores put together by chance have the others.
            if (name.starts_with('2')) continue;
            INFO(key << " " << name);
            RegistryContents store = usual;
            store[key].erase(name);
            f.Check(store);
            for (const std::string& bytes : HostileBytes()) {
                INFO("bytes " << bytes.substr(0, 40) << " (" << bytes.size() << ")");
                store[key][name] = {REG_SZ, bytes};
                f.Check(store);
            }
            f.CheckSave();
            for (DWORD type = 0; type <= 12; ++type) {
                for (const char* const bytes : {"", "12"}) {
                    INFO("type " << type << " bytes " << std::string(bytes));
                    store[key][name] = {type == 12 ? 0xFFFFFFFF : type, bytes};
                    f.Check(store);
                }
                // Beyond the types of numbers and texts, one stands for all.
                if (type > REG_MULTI_SZ && type != REG_QWORD) continue;
                for (const std::string& bytes :
                     {"\x01\x00\x00\x00"s, "\x00\x00\x00\x01"s, "\x00\x00\x01\x90"s, "a\0b\0\0"s,
                      "1\0\x31\0\0"s, std::string(2000, '\xe4')}) {
                    INFO("type " << type << " of " << bytes.size() << " bytes");
                    store[key][name] = {type, bytes};
                    f.Check(store);
                }
            }
            f.CheckSave();
        }
    }
    CHECK(f.registry.strayHandles == 0);
    CHECK(f.recorder.messages.empty());
    CHECK(f.loads > 2000);
    MESSAGE("hostile values: " << f.loads << " loads, " << f.saves << " saves");
}

TEST_CASE("stores put together by chance are loaded and saved as the rules say") {
    constexpr unsigned kSeed = 20030521;
    constexpr int kStores = 2000;
    std::mt19937 random(kSeed);
    const auto below = [&](size_t limit) { return static_cast<size_t>(random()) % limit; };
    HostileStore f;
    std::vector<std::string> bytes;
    for (const std::string& each : HostileBytes()) {
        if (each.size() < 2000) bytes.push_back(each);
    }
    const auto anything = [&]() -> StoredValue {
        std::string value = bytes[below(bytes.size())];
        if (below(4) == 0) {
            value.resize(below(12));
            for (char& each : value)
                each = static_cast<char>(random());
        }
        return {below(3) == 0 ? static_cast<DWORD>(below(13)) : REG_SZ, value};
    };
    for (int i = 0; i < kStores; ++i) {
        INFO("store " << i << " of seed " << kSeed);
        RegistryContents store = UsualStore();
        for (auto& [key, values] : store) {
            for (int n = 0; n <= 4; ++n) {
                for (const char* const field : {"", "Name", "Width", "Height", "URL", "Use"}) {
                    if (below(3) == 0) values[std::to_string(n) + field] = anything();
                }
            }
            for (auto value = values.begin(); value != values.end();) {
                if (below(12) == 0) {
                    value = values.erase(value);
                    continue;
                }
                if (below(3) == 0) value->second = anything();
                ++value;
            }
        }
        if (below(20) == 0) store.erase(kExclude);
        if (below(20) == 0) store.erase(kSettings);
        f.Check(store);
        f.CheckSave();
    }
    CHECK(f.registry.strayHandles == 0);
    CHECK(f.recorder.messages.empty());
    MESSAGE("stores by chance: " << f.loads << " loads and saves, seed " << kSeed);
}

TEST_CASE(
    "a value that changes between the question for its size and its reading is read whole or not at all") {
    MemoryRegistry registry;
    long changes = 0;
    for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_BINARY}, DWORD{REG_DWORD}}) {
        for (const size_t before : {size_t{0}, size_t{1}, size_t{4}, size_t{100}, size_t{65536}}) {
            for (const size_t after :
                 {size_t{0}, size_t{1}, size_t{3}, size_t{4}, size_t{101}, size_t{70000}}) {
                INFO("type " << type << ", " << before << " bytes, then " << after);
                registry.contents = {{kSettings, {{"V", {type, std::string(before, 'x')}}}}};
                int queries = 0;
                registry.beforeCall = [&](RegistryCall function, const std::string&) {
                    if (function == RegistryCall::Query && ++queries == 2) {
                        registry.contents[kSettings]["V"].bytes = std::string(after, 'y');
                    }
                };
                Variant value(L"default");
                long valueType = 0;
                std::wstring keyClass;
                bool isRead = false;
                bool isRaised = false;
                try {
                    isRead = Registry().Read(HKEY_CURRENT_USER, Schema::kSettingsKey, L"V", value, valueType,
                                             keyClass);
                } catch (const AutomationError&) {
                    isRaised = true;
                }
                const std::wstring text = ToText(value);
                if (isRaised) {
                    CHECK((type == REG_DWORD && after <= before && after > 0 && after < 4));
                } else if (after > before) {
                    CHECK_FALSE(isRead);
                    CHECK(text == L"default");
                } else {
                    CHECK(isRead);
                    if (after == 0) CHECK(text == L"default");
                    if (after > 0 && type != REG_DWORD) CHECK(text == std::wstring(after, L'y'));
                }
                ++changes;
            }
        }
    }
    // Deleted in between, with its key too.
    registry.contents = {{kSettings, {{"V", {REG_SZ, "x"}}}}};
    int queries = 0;
    registry.beforeCall = [&](RegistryCall function, const std::string&) {
        if (function == RegistryCall::Query && ++queries == 2) registry.contents.clear();
    };
    Variant value(L"default");
    long valueType = 0;
    std::wstring keyClass;
    CHECK_FALSE(Registry().Read(HKEY_CURRENT_USER, Schema::kSettingsKey, L"V", value, valueType, keyClass));
    CHECK(ToText(value) == L"default");
    MESSAGE("values that change while they are read: " << changes + 1);
}

TEST_CASE("a size that no memory holds is a value that cannot be read") {
    static DWORD s_size = 0;
    struct Fake {
        static LSTATUS WINAPI Query(HKEY, LPCSTR, LPDWORD, LPDWORD type, LPBYTE, LPDWORD size) {
            *type = REG_SZ;
            *size = s_size;
            return ERROR_MORE_DATA;
        }
    };
    SettingsWindow page;
    page.Store(L"txtPause", L"12000");
    page.txtPause.Text(L"17");
    for (const DWORD size : {0x7FFFFFFEUL, 0x7FFFFFFFUL, 0x80000000UL, 0xFFFFFFFFUL}) {
        s_size = size;
        const ImportPatch patch("advapi32.dll", "RegQueryValueExA", &Fake::Query);
        CHECK_NOTHROW(page.transfer.LoadSettings());
        CHECK(page.txtPause.Text() == L"17");
        CHECK_FALSE(page.changeMark.m_bLoading);
    }
}

TEST_CASE("the system's registry gives hostile values as the model says") {
    SettingsWindow page;
    const PlainEdit edit;
    long loads = 0;
    for (const std::string& bytes : HostileBytes()) {
        // The size of text that is empty or ends in a NUL is the system's own affair.
        if (bytes.empty() || bytes.back() == '\0') continue;
        for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_BINARY}, DWORD{REG_DWORD}}) {
            INFO("type " << type << " bytes " << bytes.substr(0, 40));
            RegistryContents store{{kSettings, {}}};
            for (const char* const name : {"chkPlaySound", "chkBeep", "txtSpeed", "txtPause", "chkExtra",
                                           "txtExtra", "Startup", "Pause Key", "SoundFile"}) {
                store[kSettings][name] = {type, bytes};
                page.user.Write(Schema::kSettingsKey, FromAnsi(name), type, bytes);
            }
            WindowState expected = OtherWindow();
            Put(page, expected);
            page.transfer.LoadSettings();
            SettingsModel model(store);
            model.editText = [&](const std::wstring& text) { return edit.Shown(text); };
            model.Load(expected);
            CHECK(Difference(StateOf(page), expected) == "");
            ++loads;
        }
    }
    MESSAGE("the system's registry: " << loads << " loads");
}
