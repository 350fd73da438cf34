#include <string>
#include <vector>

#include "store/settings_schema.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

struct Hostile {
    const char* name;
    DWORD type;
    std::string bytes;
};

const Hostile kHostile[] = {
    {"letters", REG_SZ, "abc"},
    {"a blank", REG_SZ, " "},
    {"a NUL", REG_SZ, std::string(1, '\0')},
    {"many NULs", REG_SZ, std::string(300, '\0')},
    {"an overflow", REG_SZ, "1e400"},
    {"a negative overflow", REG_SZ, "-1e400"},
    {"no number", REG_SZ, "nan"},
    {"a currency", REG_SZ, "1,2,,3x"},
    {"64 KB of letters", REG_SZ, std::string(65536, 'x')},
    {"64 KB of digits", REG_SZ, std::string(65536, '9')},
    {"64 KB unterminated", REG_EXPAND_SZ, std::string(65535, '%')},
    {"bytes", REG_BINARY, std::string("\x80\xff\xfe\x01", 4)},
    {"bytes with NULs", REG_BINARY, std::string("a\0b\0c", 5)},
    {"several texts", REG_MULTI_SZ, std::string("a\0b\0\0", 5)},
    {"a short number", REG_DWORD, std::string("\x01\x00", 2)},
    {"a short big-endian number", REG_DWORD_BIG_ENDIAN, std::string("\x01", 1)},
    {"an unknown type", 4711, "abc"},
    {"no type", REG_NONE, "abc"},
    {"markup", REG_SZ, "<a href=\"x\">%s%n&amp;\r\n\t"},
};

constexpr const wchar_t* kSettings[] = {L"chkPlaySound", L"chkBeep", L"txtSpeed", L"txtPause", L"chkExtra"};

}  // namespace

TEST_CASE("a stored value that does not convert leaves its control as it was") {
    for (const Hostile& hostile : kHostile) {
        CAPTURE(std::string(hostile.name));
        SettingsWindow page;
        for (const wchar_t* const setting : kSettings) {
            page.user.Write(Schema::kSettingsKey, setting, hostile.type, hostile.bytes);
        }
        SettingsWindow::Check(page.chkPlaySound, true);
        SettingsWindow::Check(page.chkExtra, true);
        page.txtSpeed.Text(L"3");
        page.txtPause.Text(L"17");
        page.cboPauseKey.Text(L"F9");
        page.cmdApply.Enabled(false);
        page.user.Write(Schema::kSettingsKey, L"Pause Key", hostile.type, hostile.bytes);
        page.user.Write(Schema::kSettingsKey, L"Startup", hostile.type, hostile.bytes);
        page.user.Write(Schema::kSettingsKey, L"SoundFile", hostile.type, hostile.bytes);
        // An edit control may take seconds to lay out 64 KB of digits in one line.
        page.user.Write(Schema::kSettingsKey, L"txtExtra", hostile.type, hostile.bytes.substr(0, 2048));
        page.transfer.LoadSettings();
        CHECK(page.chkPlaySound.Value() == 1);
        CHECK(page.chkBeep.Value() == 0);
        CHECK(page.chkExtra.Value() == 1);
        CHECK(page.txtSpeed.Text() == L"3");
        CHECK(page.txtPause.Text() == L"17");
        CHECK(page.cboPauseKey.Text() == L"F9");
        CHECK_FALSE(page.optStartup.Value());
        CHECK_FALSE(page.changeMark.m_bLoading);
        CHECK_FALSE(page.cmdApply.Enabled());
        page.transfer.SaveSettings();
        CHECK(page.Stored(L"txtPause") == L"17000");
    }
}

TEST_CASE("numbers beyond what a control takes leave it as it was") {
    struct Row {
        const wchar_t* stored;
        short checked;         // of a box that was checked
        const wchar_t* pause;  // of a box that showed 17
        const wchar_t* speed;  // of a box that showed 3
    };
    const Row rows[] = {
        {L"2", 1, L"0.002", L"6"},
        {L"-1", 1, L"-0.001", L"6"},
        {L"0.4", 0, L"0.0004", L"6"},
        {L"1.5", 1, L"0.0015", L"6"},
        {L"32768", 1, L"32.768", L"6"},
        {L"2147483648", 1, L"2147483.648", L"3"},
        {L"99999999999999", 1, L"99999999999.999", L"3"},
        {L" 0 ", 0, L"0", L"6"},
    };
    for (const Row& row : rows) {
        CAPTURE(std::wstring(row.stored));
        SettingsWindow page;
        SettingsWindow::Check(page.chkExtra, true);
        page.txtPause.Text(L"17");
        page.txtSpeed.Text(L"3");
        for (const wchar_t* const setting : {L"txtSpeed", L"txtPause", L"chkExtra"})
            page.Store(setting, row.stored);
        page.transfer.LoadSettings();
        CHECK(page.chkExtra.Value() == row.checked);
        CHECK(page.txtPause.Text() == row.pause);
        CHECK(page.txtSpeed.Text() == row.speed);
    }
}

TEST_CASE("a number in hexadecimal digits is taken as Automation takes it") {
    SettingsWindow page;
    page.Store(L"txtSpeed", L"&H190");
    page.txtSpeed.Text(L"3");
    page.transfer.LoadSettings();
    long value = 0;
    const bool converts = ResumeNext([&] { value = ToLong(Variant(L"&H190")); });
    CHECK(page.txtSpeed.Text() == (!converts ? L"3" : value == 400 ? L"9" : L"6"));
}

TEST_CASE("numbers stored as numbers are taken") {
    SettingsWindow page;
    const auto put = [&](const wchar_t* name, DWORD type, const std::string& bytes) {
        page.user.Write(Schema::kSettingsKey, name, type, bytes);
    };
    put(L"chkPlaySound", REG_DWORD, std::string("\0\0\0\0", 4));
    put(L"chkBeep", REG_DWORD, std::string("\x01\0\0\0", 4));
    put(L"txtSpeed", REG_DWORD_BIG_ENDIAN, std::string("\0\0\x00\xc8", 4));
    put(L"txtPause", REG_DWORD, std::string("\xc4\x09\0\0", 4));
    put(L"txtExtra", REG_DWORD, std::string("\xff\xff\xff\xff", 4));
    put(L"chkExtra", REG_DWORD, std::string("\x02\0\0\0", 4));
    page.transfer.LoadSettings();
    CHECK(page.chkBeep.Value() == 1);
    CHECK(page.txtSpeed.Text() == L"10");
    CHECK(page.txtPause.Text() == L"2.5");
    CHECK(page.txtExtra.Text() == L"-1");
    CHECK(page.chkExtra.Value() == 0);
}

TEST_CASE("odd list entries are shown as far as they have a text, and never end the program") {
    for (const Hostile& hostile : kHostile) {
        CAPTURE(std::string(hostile.name));
        SettingsWindow page;
        page.Store(L"txtExtra", L"not what was read last");
        page.user.Write(Schema::kExcludeKey, L"0", L"first");
        page.user.Write(Schema::kExcludeKey, L"1", hostile.type, hostile.bytes);
        page.user.Write(Schema::kExcludeKey, L"2", L"last");
        for (const wchar_t* const field : {L"1Name", L"1Width", L"1Height", L"1Use"}) {
            page.user.Write(Schema::kBannersKey, field, hostile.type, hostile.bytes);
        }
        for (const wchar_t* const field : {L"1Name", L"1URL", L"1Use"}) {
            page.user.Write(Schema::kSearchKey, field, hostile.type, hostile.bytes);
        }
        page.transfer.LoadSettings();
        // What is too short for its type cannot be read, which ends a list.
        const bool isReadable = hostile.type != REG_DWORD && hostile.type != REG_DWORD_BIG_ENDIAN;
        CHECK(page.lstExclude.ListCount() == (isReadable ? 3 : 1));
        CHECK(page.lvwBanners.Count() == (isReadable ? 1 : 0));
        CHECK(page.lvwSearchURLs.Count() == (isReadable ? 1 : 0));
        CHECK(page.lstExclude.List(0) == L"first");
        if (isReadable) {
            CHECK(page.lstExclude.List(2) == L"last");
            CHECK_FALSE(page.lvwSearchURLs.Checked(1) != page.lvwBanners.Checked(1));
        }
        page.transfer.SaveSettings();
    }
}

TEST_CASE("a long sound file and a long extra text are kept whole") {
    SettingsWindow page;
    const std::wstring text(65000, L'y');
    page.Store(L"SoundFile", text);
    page.Store(L"txtExtra", text);
    page.transfer.LoadSettings();
    CHECK(page.popupNotice.m_strSoundFile == text);
    CHECK(page.txtExtra.Text() == text);
    page.transfer.SaveSettings();
    CHECK(page.Stored(L"SoundFile") == text);
    CHECK(page.Stored(L"txtExtra") == text);
}
