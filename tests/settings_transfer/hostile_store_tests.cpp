// What a registry can hold where the program expects its settings, of any type and size.
#include <optional>

#include "tests/settings_transfer/transfer_page.h"

using namespace std::string_literals;

namespace {

// Each type that is read in a way of its own, and one for those that are read as text; with the text that the
// value is read as. Too short a number cannot be read.
const std::pair<StoredValue, std::optional<std::string>> kValues[] = {
    {{REG_DWORD, "\x01\0\x01"s}, std::nullopt},
    {{REG_DWORD, ""}, ""},
    {{REG_DWORD, "\x01\0\0\0"s}, "1"},
    {{REG_DWORD, "\x90\x01\0\0 and more"s}, "400"},
    {{REG_DWORD_BIG_ENDIAN, "\xff\xff\xff\xff"}, "-1"},
    {{REG_DWORD_BIG_ENDIAN, "\x01"}, std::nullopt},
    {{REG_BINARY, ""}, ""},
    {{REG_BINARY, "400"}, "400"},
    {{REG_BINARY, std::string(2000, '\xe4')}, std::string(2000, '\xe4')},
    {{REG_MULTI_SZ, "True"}, "True"},
    {{REG_SZ, "\0001"s}, "\0"s},  // not an empty value, but an empty text
    {{REG_SZ, std::string(2000, '9') + "\0001"s}, std::string(2000, '9')},
    {{0xFFFFFFFF, "1\0002"s}, "1"}};

}  // namespace

TEST_CASE_FIXTURE(TransferPage,
                  "values of any type are loaded as the texts that they are read as; those that cannot be "
                  "read count as missing, and leave the controls, the mode and the sound file as they are") {
    const auto loadedFrom = [this](const RegistryContents& store) {
        Put(*this, EditedWindow());
        registry.contents = store;
        CHECK_NOTHROW(transfer.LoadSettings());
        CHECK(registry.contents == store);
        return StateOf(*this);
    };
    Put(*this, EditedWindow());
    Put(*this, {"lstExclude=", "lvwBanners=", "lvwSearchURLs=", "txtExtra="});
    const WindowState unread = StateOf(*this);
    for (const auto& [value, text] : kValues) {
        INFO("type " << value.type << ' ' << value.bytes.substr(0, 40));
        RegistryContents hostile = UsualStore();
        RegistryContents plain = hostile;
        for (auto& [key, names] : hostile) {
            for (auto& [name, stored] : names) {
                stored = value;
                plain[key][name] = Text(text.value_or(""));
            }
        }
        CHECK(Difference(loadedFrom(hostile), text ? loadedFrom(plain) : unread) == "");
        CHECK_NOTHROW(transfer.SaveSettings());
    }
    // A single one counts as a missing one: the beep takes over Play Sound.
    registry.contents = StoreOf({"chkPlaySound=1"});
    registry.contents[kSettings]["chkBeep"] = kValues[0].first;
    chkBeep.Value(0);
    transfer.LoadSettings();
    CHECK(chkBeep.Value() == 1);
    CHECK(registry.strayHandles == 0);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(SettingsWindow, "a size that no memory holds is a value that cannot be read") {
    Store(L"txtPause", L"12000");
    txtPause.Text(L"17");
    for (const DWORD told : {0x7FFFFFFEUL, 0x7FFFFFFFUL, 0x80000000UL, 0xFFFFFFFFUL}) {
        const ImportFake<"RegQueryValueExA", decltype(&RegQueryValueExA)> query{
            "advapi32.dll", [&](HKEY, LPCSTR, LPDWORD, LPDWORD type, LPBYTE, LPDWORD size) -> LSTATUS {
                *type = REG_SZ;
                *size = told;
                return ERROR_MORE_DATA;
            }};
        CHECK_NOTHROW(transfer.LoadSettings());
        CHECK(txtPause.Text() == L"17");
        CHECK_FALSE(changeMark.m_bLoading);
    }
}
