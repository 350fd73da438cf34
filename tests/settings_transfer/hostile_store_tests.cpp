// Everything that a registry can hold, and more, where the program expects its settings: it is loaded as the
// text or number that it is, or not at all.
#include <functional>
#include <optional>
#include <sstream>

#include "options/speed_levels.h"
#include "platform/automation_error.h"
#include "platform/text.h"
#include "tests/settings_transfer/transfer_page.h"
#include "tests/support/first_run_defaults.h"
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

std::wstring UpToNul(const std::wstring& text) {
    return text.substr(0, text.find(L'\0'));
}

// Nothing where Automation refuses the conversion.
template <class Result>
std::optional<Result> As(Result (*convert)(const Variant&), const std::wstring& text) {
    try {
        return convert(text);
    } catch (const AutomationError&) {
        return std::nullopt;
    }
}

// Too short a number is unusable.
enum class Content { Missing, Unusable, Empty, Text };

struct Read {
    Content content = Content::Missing;
    std::wstring text;  // of a number as well
    bool IsThere() const { return content == Content::Empty || content == Content::Text; }
};

// What is read of a value; what holds no text takes over the one that was read before.
Read Decoded(const StoredValue& value, const std::wstring& before) {
    const std::string& bytes = value.bytes;
    if (bytes.empty()) return {Content::Empty, before};
    switch (value.type) {
        case REG_BINARY:
        case REG_MULTI_SZ:
            return {Content::Text, FromAnsi(bytes)};
        case REG_DWORD:
        case REG_DWORD_BIG_ENDIAN: {
            if (bytes.size() < 4) return {Content::Unusable, before};
            DWORD number = 0;
            for (size_t i = 0; i < 4; ++i)
                number = number << 8 | static_cast<BYTE>(bytes[value.type == REG_DWORD ? 3 - i : i]);
            return {Content::Text, std::to_wstring(static_cast<long>(number))};
        }
        default:
            return {Content::Text, UpToNul(FromAnsi(bytes))};
    }
}

// The banners of the usual store with another second entry, which may be the last.
void ShowBanner(WindowState& window, const std::wstring& name, const std::wstring& height, bool isUsed,
                bool goesOn) {
    window["lvwBanners"] = L"a size of banners 1|11|12|x\n" + UpToNul(name) + L"|21|" + UpToNul(height) +
                           (isUsed ? L"|x\n" : L"\n") + (goesOn ? L"a size of banners 3|31|32|x\n" : L"");
}

// Of the two lists of entries one stands for both.
struct Place {
    const char* key;
    const char* name;
    const wchar_t* before;  // what is taken over
    // What becomes of the window that shows the usual store, and the edited one before.
    void (*show)(WindowState& window, const Read& read);
};

const Place kPlaces[] = {
    {kSettings, "chkPlaySound", L"",
     [](WindowState& window, const Read& read) {
         if (As<short>(ToShort, read.text) == 1) return;
         window["chkPlaySound"] = window["cmdSoundFile"] = window["cmdTestSound"] = L"0";
     }},
    {kSettings, "chkBeep", L"1",
     [](WindowState& window, const Read& read) {
         if (As<short>(ToShort, read.text) != 1) return;
         window["chkPlaySound"] = window["cmdSoundFile"] = window["cmdTestSound"] = L"0";
         window["chkBeep"] = L"1";
     }},
    {kSettings, "txtSpeed", L"0",
     [](WindowState& window, const Read& read) {
         const std::optional<long> interval = As<long>(ToLong, read.text);
         window["txtSpeed"] = interval ? TextOf(IntervalToSpeed(*interval)) : L"3";
     }},
    {kSettings, "txtPause", L"400",
     [](WindowState& window, const Read& read) {
         const std::optional<double> milliseconds = As<double>(ToDouble, read.text);
         window["txtPause"] = milliseconds ? TextOf(*milliseconds / 1000) : L"17";
     }},
    {kExclude, "1", L"http://an-excluded-site-1",
     [](WindowState& window, const Read& read) {
         window["lstExclude"] = L"http://an-excluded-site-1\n";
         if (read.IsThere()) window["lstExclude"] += UpToNul(read.text) + L"\nhttp://an-excluded-site-3\n";
     }},
    {kBanners, "2Name", L"True",
     [](WindowState& window, const Read& read) {
         ShowBanner(window, read.text, L"22", false, true);
         if (!read.IsThere()) window["lvwBanners"] = L"a size of banners 1|11|12|x\n";
     }},
    {kBanners, "2Height", L"a size of banners 2",
     [](WindowState& window, const Read& read) {
         ShowBanner(window, L"a size of banners 2", read.text, false, true);
     }},
    {kBanners, "2Use", L"21",
     [](WindowState& window, const Read& read) {
         ShowBanner(window, L"a size of banners 2", L"22", As<bool>(ToBool, read.text) == true,
                    read.IsThere());
     }},
    {kSettings, "chkExtra", L"True",
     [](WindowState& window, const Read& read) {
         window["chkExtra"] = As<short>(ToShort, read.text) == 1 ? L"1" : L"0";
     }},
    {kSettings, "txtExtra", L"1",
     [](WindowState& window, const Read& read) { window["txtExtra"] = ShownInEdit(read.text); }},
    {kSettings, "Startup", L"",
     [](WindowState& window, const Read& read) {
         const std::wstring mode = read.content == Content::Missing ? L"Manual" : read.text;
         const bool isMode = mode == L"Startup" || mode == L"RunOnly" || mode == L"Manual";
         window["m_strStartupMode"] = isMode ? mode : L"Startup";
         window["optStartup"] = mode == L"Startup" ? L"1" : L"0";
         window["optLoadWithKiller"] = mode == L"RunOnly" ? L"1" : L"0";
         window["optLoadFromMenu"] = mode == L"Manual" || !isMode ? L"1" : L"0";
     }},
    {kSettings, "Pause Key", L"",
     [](WindowState& window, const Read& read) {
         window["cboPauseKey"] = read.content == Content::Missing ? L"Shift" : L"Ctrl";
         for (const wchar_t* const key : {L"Alt", L"Ctrl", L"Shift", L"F6", L"F7", L"F8", L"F9", L"F10"}) {
             if (lstrcmpiW(UpToNul(read.text).c_str(), key) == 0) window["cboPauseKey"] = key;
         }
     }},
    {kSettings, "SoundFile", L"",
     [](WindowState& window, const Read& read) {
         window["m_strSoundFile"] = read.content == Content::Unusable ? L"C:\\b.wav" : read.text;
     }},
};

}  // namespace

TEST_CASE_FIXTURE(
    TransferPage,
    "every value, whatever its type and bytes, is loaded or leaves its control as the rules say") {
    const std::vector<std::string> allBytes = HostileBytes();
    Put(*this, EditedWindow());
    registry.contents = UsualStore();
    transfer.LoadSettings();
    const WindowState usual = StateOf(*this);
    for (const Place& place : kPlaces) {
        CAPTURE(std::string(place.name));
        RegistryContents store = UsualStore();
        StoredKey& values = store[place.key];
        const auto checkLoad = [&](const Read& read) {
            WindowState expected = usual;
            place.show(expected, read);
            Put(*this, EditedWindow());
            registry.contents = store;
            CHECK_NOTHROW(transfer.LoadSettings());
            CHECK(registry.contents == store);
            CHECK(Difference(StateOf(*this), expected) == "");
        };
        const auto check = [&](const StoredValue& value) {
            INFO("type " << value.type << ", " << value.bytes.size() << " bytes "
                         << value.bytes.substr(0, 40));
            values[place.name] = value;
            checkLoad(Decoded(value, place.before));
        };
        values.erase(place.name);
        checkLoad({Content::Missing, place.before});
        // The texts of the lists are taken for a number in no other place than their use.
        const bool isOfList = place.key != kSettings;
        for (const std::string& bytes : allBytes) {
            if (!isOfList || place.name == "2Use"s || bytes.size() >= 300 ||
                bytes.find('\0') != std::string::npos || bytes.empty())
                check({REG_SZ, bytes});
        }
        CHECK_NOTHROW(transfer.SaveSettings());
        // Beyond the types of numbers and texts, one stands for all; the entries of the lists are read as the
        // settings are.
        for (const DWORD type :
             std::initializer_list<DWORD>{REG_NONE, REG_EXPAND_SZ, REG_BINARY, REG_DWORD,
                                          REG_DWORD_BIG_ENDIAN, REG_MULTI_SZ, REG_QWORD, 0xFFFFFFFF}) {
            for (const std::string& bytes : {""s, "\x01"s, "12"s, "\x01\0\0\0"s, "\0\0\x01\x90"s, "a\0b\0\0"s,
                                             std::string(2000, '\xe4')}) {
                if (!isOfList || type <= REG_DWORD) check({type, bytes});
            }
        }
        CHECK_NOTHROW(transfer.SaveSettings());
    }
    CHECK(registry.strayHandles == 0);
    CHECK(recorder.messages.empty());
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
