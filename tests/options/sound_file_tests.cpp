// Choosing the sound file in the system's dialog.
#include <windows.h>
#include <commdlg.h>
#include <cderr.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "options/wave_file.h"
#include "platform/controls/common_dialog.h"
#include "platform/text.h"
#include "tests/support/dialog_script.h"
#include "tests/support/error_of.h"
#include "tests/support/import_fake.h"
#include "tests/support/other_process.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"

namespace {

struct Reply {
    std::optional<std::wstring> chosen;
    DWORD error = 0;
};

const Reply kCancelled;
const Reply kRefusedName{std::nullopt, FNERR_INVALIDFILENAME};
const Reply kFailed{std::nullopt, CDERR_INITIALIZATION};

// Serves GetOpenFileNameW from a list, and notes with which names it was to start. It is asked for a wave
// file.
struct ScriptedDialog {
    const std::vector<Reply> replies;
    std::vector<std::wstring> starts{};
    HWND owner = nullptr;

    const ImportFake<"GetOpenFileNameW", decltype(&GetOpenFileNameW)> open{
        "comdlg32.dll", [this](LPOPENFILENAMEW dialog) {
            constexpr wchar_t kFilter[] = L"WAV File\0*.WAV\0";
            CHECK(std::equal(std::begin(kFilter), std::end(kFilter), dialog->lpstrFilter));
            CHECK(std::wstring(dialog->lpstrTitle) == L"Select a Sound File");
            CHECK(dialog->nMaxFile >= 32768);
            CHECK(dialog->Flags == (OFN_HIDEREADONLY | OFN_EXPLORER | OFN_NOCHANGEDIR));
            owner = dialog->hwndOwner;
            starts.push_back(dialog->lpstrFile);
            const Reply& reply = replies.at(starts.size() - 1);
            if (reply.chosen) lstrcpyW(dialog->lpstrFile, reply.chosen->c_str());
            return BOOL{reply.chosen.has_value()};
        }};
    const ImportFake<"CommDlgExtendedError", decltype(&CommDlgExtendedError)> extendedError{
        "comdlg32.dll", [this] { return replies.at(starts.size() - 1).error; }};
};

}  // namespace

TEST_CASE(
    "the start name, the path that is kept and whether it can be tested, which takes Play Sound, for each "
    "way in which the dialog ends; a change is marked in any case") {
    using Names = std::vector<std::wstring>;
    const std::wstring old = L"C:\\Sounds\\old.wav";
    const std::wstring noName = L"C:\\\"not a name\"\\";
    const std::wstring tooLong(70000, L'a');
    const std::tuple<std::string, std::wstring, std::vector<Reply>, Names, std::wstring> rows[] = {
        {"a first file", L"", {Reply{L"C:\\new.wav"}}, {L""}, L"C:\\new.wav"},
        {"without a file it starts with an empty name", L"", {kCancelled}, {L""}, L""},
        {"cancelling keeps the old path", old, {kCancelled}, {old}, old},
        {"so does an error of the dialog", old, {kFailed}, {old}, old},
        {"and an empty result", old, {Reply{L""}}, {old}, old},
        {"a name that it refuses does not keep it from opening",
         noName,
         {kRefusedName, Reply{L"C:\\new.wav"}},
         {noName, L""},
         L"C:\\new.wav"},
        {"one that refuses even the empty name is given up",
         old,
         {kRefusedName, kRefusedName},
         {old, L""},
         old},
        {"a path longer than any path starts it with an empty name", tooLong, {kCancelled}, {L""}, tooLong},
    };
    for (const auto& [what, before, replies, starts, after] : rows) {
        for (const bool playSound : {false, true}) {
            for (const bool canTestBefore : {false, true}) {
                CAPTURE(what);
                CAPTURE(playSound);
                CAPTURE(canTestBefore);
                SettingsWindow page;
                SettingsWindow::Check(page.chkPlaySound, playSound);
                page.popupNotice.m_strSoundFile = before;
                page.cmdTestSound.Enabled(canTestBefore);
                ScriptedDialog dialog{replies};
                SettingsWindow::Click(page.cmdSoundFile);
                CHECK(dialog.starts == starts);
                CHECK(dialog.owner == page.window.Hwnd());
                CHECK((page.popupNotice.m_strSoundFile == after));
                CHECK(page.cmdTestSound.Enabled() == (playSound && !after.empty()));
                CHECK(page.cmdApply.Enabled());
            }
        }
    }
}

TEST_CASE(
    "a sound whose path the code page cannot hold is chosen by its short path, unless that is no better") {
    // A name that no code page but Unicode holds whole.
    constexpr wchar_t kForeign[] = L"C:\\Sounds\\\x4e00\x44f\x3b1.wav";
    struct Row {
        std::string what;
        std::wstring chosen;
        std::wstring shortPath;
        std::wstring kept;
    };
    for (const Row& row :
         {Row{"better", kForeign, L"C:\\Sounds\\5F3A~1.WAV", L"C:\\Sounds\\5F3A~1.WAV"},
          Row{"not needed", L"C:\\a long name \xe9.wav", L"C:\\ALONGN~1.WAV", L"C:\\a long name \xe9.wav"},
          Row{"a volume without short names", kForeign, kForeign, kForeign},
          Row{"a file that is gone", kForeign, L"", kForeign},
          Row{"no better", kForeign, L"C:\\\x4e00\\5F3A~1.WAV", kForeign}}) {
        CAPTURE(row.what);
        const ImportFake<"GetShortPathNameW", decltype(&GetShortPathNameW)> volume{
            "kernel32.dll", [&](LPCWSTR, LPWSTR buffer, DWORD capacity) {
                const auto length = static_cast<DWORD>(row.shortPath.size());
                if (length != 0 && length >= capacity) return length + 1;
                std::copy_n(row.shortPath.c_str(), length + (capacity != 0 ? 1 : 0), buffer);
                return length;
            }};
        CHECK(PlayablePath(row.chosen) == row.kept);
    }
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "the short path of a chosen sound is stored, loaded and leads to the file") {
    const TestFolder folder;
    const std::wstring chosen = folder.Write(L"\x4e00\x44f\x3b1.wav", "RIFF");
    ScriptedDialog dialog{{Reply{chosen}}};
    popupNotice.ChooseSoundFile();
    transfer.SaveSettings();
    transfer.LoadSettings();
    CHECK(popupNotice.m_strSoundFile != chosen);
    CHECK(GetFileAttributesA(ToAnsi(popupNotice.m_strSoundFile).c_str()) != INVALID_FILE_ATTRIBUTES);
}

TEST_CASE_FIXTURE(
    SettingsWindow,
    "cancelling raises error 32755 where that is asked for, as for a sound, a dialog that cannot be shown "
    "always an error") {
    const ScriptedDialog script{{Reply{L"kept.wav"}, kCancelled, kFailed, kCancelled, kFailed}};
    popupNotice.ChooseSoundFile();
    CommonDialog& dialog = popupNotice.cdlg;
    for (const HRESULT error : {32755, 0}) {
        CHECK((ErrorOf([&] { dialog.ShowOpen(nullptr); }) & 0xFFFF) == error);
        CHECK(dialog.FileName() == L"kept.wav");
        CHECK_THROWS_AS(dialog.ShowOpen(nullptr), AutomationError);
        dialog.CancelError(false);
    }
}

TEST_CASE_FIXTURE(SettingsWindow, "the system's own dialog opens, takes a choice and can be cancelled") {
    const TestFolder folder;
    const std::wstring chosen = folder.Write(L"chosen sound.wav", "");
    popupNotice.m_strSoundFile = L"C:\\no such folder\\old.wav";
    const auto choose = [this](const DialogScript::Step& step) {
        const DialogScript script({step});
        popupNotice.ChooseSoundFile();
    };
    choose([](HWND dialog) {
        CHECK(ShownText(dialog) == L"Select a Sound File");
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    });
    CHECK(popupNotice.m_strSoundFile == L"C:\\no such folder\\old.wav");
    choose([&](HWND dialog) {
        HWND name = GetDlgItem(dialog, 0x047c);  // cmb13, the file name of an Explorer-style dialog
        if (name == nullptr) name = GetDlgItem(dialog, 0x0480);
        SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(chosen.c_str()));
        PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    });
    CHECK(lstrcmpiW(popupNotice.m_strSoundFile.c_str(), chosen.c_str()) == 0);
}
