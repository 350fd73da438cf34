// Choosing the sound file in the system's dialog.
#include <windows.h>
#include <commdlg.h>
#include <cderr.h>

#include <string>
#include <vector>

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
    bool chosen;
    std::wstring file;
    DWORD error;
};

const Reply kCancelled{false, L"", 0};
const Reply kRefusedName{false, L"", FNERR_INVALIDFILENAME};
const Reply kFailed{false, L"", CDERR_INITIALIZATION};

Reply Chosen(const std::wstring& file) {
    return {true, file, 0};
}

// Serves GetOpenFileNameW from a list and notes how it was asked.
struct ScriptedDialog {
    struct Call {
        HWND owner;
        std::wstring title;
        std::wstring filter;  // with the empty string at its end
        std::wstring file;
        DWORD capacity;
        DWORD flags;
    };

    const std::vector<Reply> replies;
    std::vector<Call> calls{};

    const ImportFake<"GetOpenFileNameW", decltype(&GetOpenFileNameW)> open{
        "comdlg32.dll", [this](LPOPENFILENAMEW dialog) {
            const wchar_t* end = dialog->lpstrFilter;
            while (*end != L'\0')
                end += std::wcslen(end) + 1;
            calls.push_back({dialog->hwndOwner,
                             dialog->lpstrTitle,
                             {dialog->lpstrFilter, end + 1},
                             dialog->lpstrFile,
                             dialog->nMaxFile,
                             dialog->Flags});
            const Reply& reply = replies.at(calls.size() - 1);
            if (reply.chosen) lstrcpyW(dialog->lpstrFile, reply.file.c_str());
            return BOOL{reply.chosen};
        }};
    const ImportFake<"CommDlgExtendedError", decltype(&CommDlgExtendedError)> extendedError{
        "comdlg32.dll", [this] { return replies.at(calls.size() - 1).error; }};
};

}  // namespace

TEST_CASE_FIXTURE(SettingsWindow, "the dialog is asked for a wave file, starting with the present one") {
    popupNotice.m_strSoundFile = L"C:\\Sounds\\old.wav";
    ScriptedDialog dialog{{Chosen(L"C:\\Sounds\\new.wav"), kCancelled}};
    popupNotice.ChooseSoundFile();
    REQUIRE(dialog.calls.size() == 1);
    const ScriptedDialog::Call& call = dialog.calls[0];
    CHECK(call.owner == window.Hwnd());
    CHECK(call.title == L"Select a Sound File");
    CHECK(call.filter == std::wstring(L"WAV File\0*.WAV\0\0", 16));
    CHECK(call.file == L"C:\\Sounds\\old.wav");
    CHECK(call.capacity >= 32768);
    CHECK(call.flags == (OFN_HIDEREADONLY | OFN_EXPLORER | OFN_NOCHANGEDIR));
    CHECK(popupNotice.m_strSoundFile == L"C:\\Sounds\\new.wav");
    // Cancelling it is an error for the program.
    CHECK_THROWS_AS(popupNotice.cdlg.ShowOpen(nullptr), AutomationError);
}

TEST_CASE("the start name and the path that is kept, for each way in which the dialog ends") {
    struct Row {
        std::string meaning;
        std::wstring before;
        std::vector<Reply> replies;
        std::vector<std::wstring> starts;
        std::wstring after;
    };
    const std::wstring old = L"C:\\Sounds\\old.wav";
    const std::wstring noName = L"C:\\\"not a name\"\\";
    const std::wstring tooLong(70000, L'a');
    const Row rows[] = {
        {"without a file it starts with an empty name", L"", {kCancelled}, {L""}, L""},
        {"cancelling keeps the old path", old, {kCancelled}, {old}, old},
        {"so does an error of the dialog", old, {kFailed}, {old}, old},
        {"and an empty result", old, {Chosen(L"")}, {old}, old},
        {"a name that it refuses does not keep it from opening",
         noName,
         {kRefusedName, Chosen(L"C:\\new.wav")},
         {noName, L""},
         L"C:\\new.wav"},
        {"one that refuses even the empty name is given up",
         old,
         {kRefusedName, kRefusedName},
         {old, L""},
         old},
        {"a path longer than any path starts it with an empty name", tooLong, {kCancelled}, {L""}, tooLong},
    };
    for (const Row& row : rows) {
        CAPTURE(row.meaning);
        SettingsWindow page;
        page.popupNotice.m_strSoundFile = row.before;
        ScriptedDialog dialog{row.replies};
        page.popupNotice.ChooseSoundFile();
        std::vector<std::wstring> starts;
        for (const ScriptedDialog::Call& call : dialog.calls)
            starts.push_back(call.file);
        CHECK(starts == row.starts);
        CHECK((page.popupNotice.m_strSoundFile == row.after));
    }
}

TEST_CASE(
    "the file button enables the test button exactly when Play Sound is checked and there is a file, and "
    "marks a change, also when the dialog is cancelled") {
    struct Row {
        bool playSound;
        Reply reply;
        const wchar_t* before;
        bool testEnabled;
    };
    const Row rows[] = {
        {true, Chosen(L"C:\\new.wav"), L"", true},   {true, kCancelled, L"", false},
        {true, kCancelled, L"C:\\old.wav", true},    {true, kFailed, L"C:\\old.wav", true},
        {false, Chosen(L"C:\\new.wav"), L"", false}, {false, kCancelled, L"C:\\old.wav", false},
    };
    for (const Row& row : rows) {
        for (const bool enabledBefore : {false, true}) {
            CAPTURE(row.playSound);
            CAPTURE(row.reply.file);
            CAPTURE(std::wstring(row.before));
            CAPTURE(enabledBefore);
            SettingsWindow page;
            SettingsWindow::Check(page.chkPlaySound, row.playSound);
            page.popupNotice.m_strSoundFile = row.before;
            page.cmdTestSound.Enabled(enabledBefore);
            ScriptedDialog dialog{{row.reply}};
            SettingsWindow::Click(page.cmdSoundFile);
            CHECK(page.popupNotice.m_strSoundFile == (row.reply.chosen ? row.reply.file : row.before));
            CHECK(page.cmdTestSound.Enabled() == row.testEnabled);
            CHECK(page.cmdApply.Enabled());
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
                if (length == 0) {
                    SetLastError(ERROR_FILE_NOT_FOUND);
                    return length;
                }
                if (length >= capacity) return length + 1;
                lstrcpyW(buffer, row.shortPath.c_str());
                return length;
            }};
        SettingsWindow page;
        ScriptedDialog dialog{{Chosen(row.chosen)}};
        page.popupNotice.ChooseSoundFile();
        CHECK(page.popupNotice.m_strSoundFile == row.kept);
    }
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "the short path of a chosen sound is stored, loaded and leads to the file") {
    const TestFolder folder;
    const std::wstring chosen = folder.Write(L"\x4e00\x44f\x3b1.wav", "RIFF");
    ScriptedDialog dialog{{Chosen(chosen)}};
    popupNotice.ChooseSoundFile();
    transfer.SaveSettings();
    transfer.LoadSettings();
    CHECK(popupNotice.m_strSoundFile != chosen);
    CHECK(GetFileAttributesA(ToAnsi(popupNotice.m_strSoundFile).c_str()) != INVALID_FILE_ATTRIBUTES);
}

TEST_CASE(
    "cancelling raises error 32755 only where that is asked for, a dialog that cannot be shown always an "
    "error") {
    for (const bool cancelError : {false, true}) {
        CAPTURE(cancelError);
        CommonDialog dialog;
        dialog.FileName(L"kept.txt");
        dialog.Filter(L"Text|*.txt");
        dialog.DialogTitle(L"Title");
        if (cancelError) dialog.CancelError(true);
        ScriptedDialog script{{kCancelled, kFailed}};
        CHECK((ErrorOf([&] { dialog.ShowOpen(nullptr); }) & 0xFFFF) == (cancelError ? 32755 : 0));
        CHECK(dialog.FileName() == L"kept.txt");
        CHECK_THROWS_AS(dialog.ShowOpen(nullptr), AutomationError);
    }
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "the system's own dialog opens, takes a choice, can be cancelled and keeps the folder") {
    const TestFolder folder;
    const std::wstring chosen = folder.Write(L"chosen sound.wav", "");
    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);
    popupNotice.m_strSoundFile = L"C:\\no such folder\\old.wav";
    {
        const DialogScript cancels({[](HWND dialog) {
            CHECK(ShownText(dialog) == L"Select a Sound File");
            PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        }});
        popupNotice.ChooseSoundFile();
    }
    CHECK(popupNotice.m_strSoundFile == L"C:\\no such folder\\old.wav");
    {
        const DialogScript chooses({[&](HWND dialog) {
            HWND name = GetDlgItem(dialog, 0x047c);  // cmb13, the file name of an Explorer-style dialog
            if (name == nullptr) name = GetDlgItem(dialog, 0x0480);
            SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(chosen.c_str()));
            PostMessageW(dialog, WM_COMMAND, IDOK, 0);
        }});
        popupNotice.ChooseSoundFile();
    }
    CHECK(lstrcmpiW(popupNotice.m_strSoundFile.c_str(), chosen.c_str()) == 0);
    wchar_t after[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, after);
    CHECK(std::wstring(after) == before);
}
