// What a registry can hold where the program expects its settings, of any type and size.
#include <optional>

#include "tests/settings_transfer/transfer_page.h"
#include "tests/support/settings_keys.h"

using namespace std::string_literals;

namespace {

// Too short a number cannot be read.
const StoredValue kTooShort{REG_DWORD, "\x01\0\x01"s};

// Each type that is read in a way of its own, and one for those that are read as text; with the text that the
// value is read as.
const std::pair<StoredValue, std::optional<std::string>> kValues[] = {
    {kTooShort, std::nullopt},
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
                  "a value of any type is loaded as the text that it is read as, one that cannot be read as "
                  "a missing one") {
    const auto loadedFrom = [this](const RegistryContents& store) {
        Put(*this, EditedWindow());
        registry.contents = store;
        CHECK_NOTHROW(transfer.LoadSettings());
        CHECK(registry.contents == store);
        return StateOf(*this);
    };
    for (const auto& [key, names] : UsualStore()) {
        for (const auto& [name, usual] : names) {
            for (const auto& [value, text] : kValues) {
                INFO(key << ' ' << name << " type " << value.type << ' ' << value.bytes.substr(0, 40));
                RegistryContents hostile = UsualStore();
                hostile[key][name] = value;
                RegistryContents plain = UsualStore();
                if (text)
                    plain[key][name] = Text(*text);
                else if (key != kSettings || name.starts_with("chk") || name.starts_with("txt"))
                    plain[key].erase(name);
                else
                    continue;  // the next case's subject
                CHECK(Difference(loadedFrom(hostile), loadedFrom(plain)) == "");
            }
            CHECK_NOTHROW(transfer.SaveSettings());
        }
    }
    CHECK(registry.strayHandles == 0);
    CHECK(recorder.messages.empty());
}

TEST_CASE_FIXTURE(
    TransferPage,
    "settings that cannot be read leave the controls, the mode and the sound file as they are") {
    Put(*this, EditedWindow());
    WindowState expected = StateOf(*this);
    for (const char* const emptied : {"lstExclude", "lvwBanners", "lvwSearchURLs", "txtExtra"})
        expected[emptied].clear();
    registry.contents = {{kSettings, UsualStore()[kSettings]}};
    for (auto& [name, value] : registry.contents[kSettings])
        value = kTooShort;
    transfer.LoadSettings();
    CHECK(Difference(StateOf(*this), expected) == "");
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
