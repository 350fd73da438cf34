// Puts everything that a registry can hold, and more, where the program expects its settings, and compares
// what a load and a save make of it with the model.
#include <random>
#include <sstream>

#include "platform/text.h"
#include "tests/settings_transfer/usual_store.h"
#include "tests/support/first_run_defaults.h"
#include "tests/support/message_recorder.h"
#include "tests/support/settings_model.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

using namespace std::string_literals;

namespace {

// What no setting of ours ever held, and what comes near to one.
std::vector<std::string> HostileBytes() {
    std::vector<std::string> bytes{"",
                                   " ",
                                   "  1  ",
                                   "1 000",
                                   "a\0b"s,
                                   "\0"s,
                                   "1\0002"s,
                                   "\0001"s,
                                   "400\r\n",
                                   "\t400",
                                   "Manual ",
                                   "<a href=\"x\">&amp;",
                                   "\x80\x81\x8d\xff",
                                   "\xc3\xa4",
                                   "\xff\xfe\x31",
                                   "\x01\0\0\0"s,
                                   "\xff\xff\xff\xff",
                                   "\0\0\0\x80"s,
                                   "\x90\x01\0\0"s,
                                   "\0\0\x01\x90"s,
                                   "\x01\0\0\0\0\0\0\0"s,
                                   "\x01\0\0"s,
                                   "\x01"};
    std::istringstream words(
        "0 1 2 -1 -0 +0 1. .5 0.5 1.5 2.5 1,5 1.000,5 1'000 1e0 1e400 -1e400 1e-400 nan inf &H10 &HFFFF &O17 "
        "0x10 #TRUE# True TRUE true False Wahr yes $5 5% (5) 5- 32767 32768 -32768 -32769 65536 2147483647 "
        "2147483648 -2147483648 -2147483649 4294967296 9223372036854775807 400 2000 400.5 5000 1000000 Shift "
        "shift F9 F11 Startup startup RunOnly Manual ab abc %PATH% %s%n");
    for (std::string word; words >> word;)
        bytes.push_back(word);
    for (const size_t size : {255, 256, 260, 1023, 65536})
        bytes.emplace_back(size, size == 1023 ? '9' : 'x');
    bytes.emplace_back(65536, '\0');
    return bytes;
}

// A single-line edit control outside of the window under test: what a text looks like in one.
std::wstring ShownInEdit(const std::wstring& text) {
    const HWND edit = CreateWindowExW(0, L"EDIT", L"", WS_POPUP | ES_AUTOHSCROLL, 0, 0, 100, 20, nullptr,
                                      nullptr, nullptr, nullptr);
    SetWindowTextW(edit, text.c_str());
    std::wstring shown(static_cast<size_t>(GetWindowTextLengthW(edit)) + 1, L'\0');
    shown.resize(static_cast<size_t>(GetWindowTextW(edit, shown.data(), static_cast<int>(shown.size()))));
    DestroyWindow(edit);
    return shown;
}

struct HostileStore {
    // Loads the store into a window that shows something else and compares both with the model.
    void CheckLoad(const RegistryContents& store) {
        WindowState expected = EditedWindow();
        Put(page, expected);
        registry.contents = store;
        CHECK_NOTHROW(page.transfer.LoadSettings());
        CHECK(registry.contents == store);
        RegistryContents read = store;
        SettingsModel model(read);
        model.editText = ShownInEdit;
        model.Load(expected);
        CHECK(Difference(StateOf(page), expected) == "");
    }

    // The store that comes of a save of what was loaded.
    void CheckSave() {
        RegistryContents expectedStore = registry.contents;
        WindowState expected = StateOf(page);
        CHECK_NOTHROW(page.transfer.SaveSettings());
        SettingsModel(expectedStore).Save(expected, ToAnsi(page.loaderPath));
        CHECK(Difference(registry.contents, expectedStore) == "");
        CHECK(Difference(StateOf(page), expected) == "");
        CHECK(registry.strayHandles == 0);
        CHECK(recorder.messages.empty());
    }

    SettingsWindow page;
    const MessageRecorder recorder;
    RegistryCalls registry{RegistryCalls::Of::Memory};
};

}  // namespace

TEST_CASE_FIXTURE(
    HostileStore,
    "every value, whatever its type and bytes, is loaded or leaves its control as the rules say") {
    const std::vector<std::string> allBytes = HostileBytes();
    for (const auto& [key, values] : UsualStore()) {
        for (const auto& [name, value] : values) {
            // Of the lists the second entry; its texts are taken for a number in no other place than its use.
            const bool isOfList = key != kSettings;
            if (isOfList && name.front() != '2' && name != "1") continue;
            INFO(key << " " << name);
            RegistryContents store = UsualStore();
            store[key].erase(name);
            CheckLoad(store);
            for (const std::string& bytes : allBytes) {
                if (isOfList && name != "2Use" && bytes.size() < 300 && bytes.find('\0') == std::string::npos)
                    continue;
                INFO("bytes " << bytes.substr(0, 40) << " (" << bytes.size() << ")");
                store[key][name] = {REG_SZ, bytes};
                CheckLoad(store);
            }
            CheckSave();
            // Beyond the types of numbers and texts, one stands for all.
            for (const DWORD type :
                 std::initializer_list<DWORD>{REG_NONE, REG_EXPAND_SZ, REG_BINARY, REG_DWORD,
                                              REG_DWORD_BIG_ENDIAN, REG_MULTI_SZ, REG_QWORD, 0xFFFFFFFF}) {
                for (const std::string& bytes :
                     {""s, "12"s, "\x01\0\0\0"s, "\0\0\x01\x90"s, "a\0b\0\0"s, std::string(2000, '\xe4')}) {
                    // The entries of the lists are read as the settings are.
                    if (isOfList && type > REG_DWORD) continue;
                    INFO("type " << type << " of " << bytes.size() << " bytes");
                    store[key][name] = {type, bytes};
                    CheckLoad(store);
                }
            }
            CheckSave();
        }
    }
}

TEST_CASE_FIXTURE(HostileStore, "stores put together by chance are loaded and saved as the rules say") {
    constexpr unsigned kSeed = 20030521;
    constexpr int kStores = 400;
    std::mt19937 random(kSeed);
    const auto below = [&](size_t limit) { return static_cast<size_t>(random()) % limit; };
    std::vector<std::string> allBytes = HostileBytes();
    std::erase_if(allBytes, [](const std::string& bytes) { return bytes.size() > 2000; });
    const auto anything = [&]() -> StoredValue {
        std::string bytes = allBytes[below(allBytes.size())];
        if (below(4) == 0) {
            bytes.resize(below(12));
            for (char& each : bytes)
                each = static_cast<char>(random());
        }
        return {below(3) == 0 ? static_cast<DWORD>(below(13)) : REG_SZ, bytes};
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
            std::erase_if(values, [&](const auto&) { return below(12) == 0; });
            for (auto& [name, value] : values) {
                if (below(3) == 0) value = anything();
            }
        }
        if (below(20) == 0) store.erase(kExclude);
        if (below(20) == 0) store.erase(kSettings);
        CheckLoad(store);
        CheckSave();
    }
}

TEST_CASE_FIXTURE(SettingsWindow, "a size that no memory holds is a value that cannot be read") {
    static DWORD s_size = 0;
    struct Fake {
        static LSTATUS WINAPI Query(HKEY, LPCSTR, LPDWORD, LPDWORD type, LPBYTE, LPDWORD size) {
            *type = REG_SZ;
            *size = s_size;
            return ERROR_MORE_DATA;
        }
    };
    Store(L"txtPause", L"12000");
    txtPause.Text(L"17");
    for (const DWORD size : {0x7FFFFFFEUL, 0x7FFFFFFFUL, 0x80000000UL, 0xFFFFFFFFUL}) {
        s_size = size;
        const ImportPatch patch("advapi32.dll", "RegQueryValueExA", &Fake::Query);
        CHECK_NOTHROW(transfer.LoadSettings());
        CHECK(txtPause.Text() == L"17");
        CHECK_FALSE(changeMark.m_bLoading);
    }
}
