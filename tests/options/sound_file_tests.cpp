// Choosing the sound file in the system's dialog.
#include <windows.h>
#include <commdlg.h>
#include <cderr.h>

#include <string>
#include <vector>

#include "platform/controls/common_dialog.h"
#include "platform/text.h"
#include "tests/support/error_of.h"
#include "tests/support/import_patch.h"
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
class ScriptedDialog {
public:
    struct Call {
        HWND owner;
        std::wstring title;
        std::wstring filter;  // up to and with the empty string at its end
        std::wstring file;
        DWORD capacity;
        DWORD flags;
    };

    explicit ScriptedDialog(std::vector<Reply> replies) : m_replies(std::move(replies)) { s_current = this; }
    ScriptedDialog(const ScriptedDialog&) = delete;
    ScriptedDialog& operator=(const ScriptedDialog&) = delete;

    std::vector<Call> calls;

private:
    static BOOL WINAPI Open(LPOPENFILENAMEW dialog) {
        std::wstring filter;
        for (const wchar_t* part = dialog->lpstrFilter;; part += std::wcslen(part) + 1) {
            filter.append(part).push_back(L'\0');
            if (*part == L'\0') break;
        }
        s_current->calls.push_back({dialog->hwndOwner, dialog->lpstrTitle, filter, dialog->lpstrFile,
                                    dialog->nMaxFile, dialog->Flags});
        s_current->m_last = s_current->m_replies.at(s_current->calls.size() - 1);
        if (s_current->m_last.chosen) lstrcpyW(dialog->lpstrFile, s_current->m_last.file.c_str());
        return s_current->m_last.chosen;
    }
    static DWORD WINAPI ExtendedError() { return s_current->m_last.error; }

    static inline ScriptedDialog* s_current = nullptr;
    const std::vector<Reply> m_replies;
    Reply m_last{};
    const ImportPatch m_open{"comdlg32.dll", "GetOpenFileNameW", &Open};
    const ImportPatch m_error{"comdlg32.dll", "CommDlgExtendedError", &ExtendedError};
};

}  // namespace

TEST_CASE_FIXTURE(SettingsWindow, "the dialog is asked for a wave file, starting with the present one") {
    popupNotice.m_strSoundFile = L"C:\\Sounds\\old.wav";
    ScriptedDialog dialog({Chosen(L"C:\\Sounds\\new.wav"), kCancelled});
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
        const char* meaning;
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
        ScriptedDialog dialog(row.replies);
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
    "marks a "
    "change, also when the dialog is cancelled") {
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
            ScriptedDialog dialog({row.reply});
            SettingsWindow::Click(page.cmdSoundFile);
            CHECK(page.popupNotice.m_strSoundFile == (row.reply.chosen ? row.reply.file : row.before));
            CHECK(page.cmdTestSound.Enabled() == row.testEnabled);
            CHECK(page.cmdApply.Enabled());
        }
    }
}

namespace {

// A name that no code page but Unicode holds whole.
constexpr wchar_t kForeign[] = L"C:\\Sounds\\\x4e00\x44f\x3b1.wav";
const wchar_t* g_shortPath = nullptr;

// As on a volume with short names; without, where there is no g_shortPath; or of a file that is gone, where
// it is empty.
DWORD WINAPI FakeShortPath(LPCWSTR path, LPWSTR buffer, DWORD capacity) {
    const std::wstring name = g_shortPath != nullptr ? g_shortPath : path;
    if (name.empty()) SetLastError(ERROR_FILE_NOT_FOUND);
    if (!name.empty() && capacity <= name.size()) return static_cast<DWORD>(name.size() + 1);
    if (!name.empty()) lstrcpyW(buffer, name.c_str());
    return static_cast<DWORD>(name.size());
}

}  // namespace

TEST_CASE(
    "a sound whose path the code page cannot hold is chosen by its short path, unless that is no better") {
    struct Row {
        const wchar_t* chosen;
        const wchar_t* shortPath;
        const wchar_t* kept;
    };
    const ImportPatch patch("kernel32.dll", "GetShortPathNameW", &FakeShortPath);
    for (const Row& row : {Row{kForeign, L"C:\\Sounds\\5F3A~1.WAV", L"C:\\Sounds\\5F3A~1.WAV"},
                           Row{L"C:\\a long name \xe9.wav", L"C:\\ALONGN~1.WAV", L"C:\\a long name \xe9.wav"},
                           Row{kForeign, nullptr, kForeign}, Row{kForeign, L"", kForeign},
                           Row{kForeign, L"C:\\\x4e00\\5F3A~1.WAV", kForeign}}) {
        g_shortPath = row.shortPath;
        SettingsWindow page;
        ScriptedDialog dialog({Chosen(row.chosen)});
        page.popupNotice.ChooseSoundFile();
        CHECK(page.popupNotice.m_strSoundFile == row.kept);
    }
}

TEST_CASE_FIXTURE(SettingsWindow,
                  "the short path of a chosen sound is stored, loaded and leads to the file") {
    const TestFolder folder;
    const std::wstring chosen = folder.Write(L"\x4e00\x44f\x3b1.wav", "RIFF");
    ScriptedDialog dialog({Chosen(chosen)});
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
        ScriptedDialog script({kCancelled, kFailed});
        CHECK((ErrorOf([&] { dialog.ShowOpen(nullptr); }) & 0xFFFF) == (cancelError ? 32755 : 0));
        CHECK(dialog.FileName() == L"kept.txt");
        CHECK_THROWS_AS(dialog.ShowOpen(nullptr), AutomationError);
    }
}

namespace {

// Ends the dialog as soon as it is there; its file name box holds file by then, if any is given.
struct DialogUser {
    static void CALLBACK Use(HWND, UINT, UINT_PTR, DWORD) {
        const HWND dialog = FindWindowW(L"#32770", L"Select a Sound File");
        if (dialog == nullptr || s_user->seen) return;
        HWND edit = GetDlgItem(dialog, 0x047c);  // cmb13, the file name of an Explorer-style dialog
        if (edit == nullptr) edit = GetDlgItem(dialog, 0x0480);
        if (edit == nullptr) return;
        s_user->seen = true;
        if (!s_user->file.empty())
            SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(s_user->file.c_str()));
        PostMessageW(dialog, WM_COMMAND, s_user->button, 0);
    }

    std::wstring file;
    WORD button;
    bool seen = false;
    static inline DialogUser* s_user = nullptr;
};

}  // namespace

TEST_CASE_FIXTURE(SettingsWindow,
                  "the system's own dialog opens, takes a choice, can be cancelled and keeps the folder") {
    const TestFolder folder;
    const std::wstring chosen = folder.Write(L"chosen sound.wav", "");
    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);
    popupNotice.m_strSoundFile = L"C:\\no such folder\\old.wav";
    const UINT_PTR timer = SetTimer(nullptr, 0, 50, DialogUser::Use);
    for (DialogUser person : {DialogUser{L"", IDCANCEL}, DialogUser{chosen, IDOK}}) {
        DialogUser::s_user = &person;
        const std::wstring expected = person.file.empty() ? popupNotice.m_strSoundFile : chosen;
        popupNotice.ChooseSoundFile();
        CHECK(person.seen);
        CHECK(lstrcmpiW(popupNotice.m_strSoundFile.c_str(), expected.c_str()) == 0);
    }
    KillTimer(nullptr, timer);
    wchar_t after[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, after);
    CHECK(std::wstring(after) == before);
}
