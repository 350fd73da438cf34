#include <windows.h>
#include <commdlg.h>
#include <cderr.h>

#include <string>
#include <vector>

#include "platform/automation_error.h"
#include "platform/controls/common_dialog.h"
#include "platform/text.h"
#include "tests/support/import_patch.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"

namespace {

struct DialogCall {
    HWND owner;
    std::wstring title;
    std::wstring filter;  // up to and with the empty string at its end
    std::wstring file;
    DWORD capacity;
    DWORD flags;
};

struct Reply {
    bool chosen;
    std::wstring file;
    DWORD error;
};

// Serves GetOpenFileNameW from a list and notes how it was asked.
struct DialogScript {
    std::vector<Reply> replies;
    std::vector<DialogCall> calls;
    DWORD error = 0;
};

DialogScript* g_script = nullptr;

BOOL WINAPI FakeGetOpenFileName(LPOPENFILENAMEW dialog) {
    std::wstring filter;
    for (const wchar_t* part = dialog->lpstrFilter;; part += std::wcslen(part) + 1) {
        filter.append(part).push_back(L'\0');
        if (*part == L'\0') break;
    }
    g_script->calls.push_back(
        {dialog->hwndOwner, dialog->lpstrTitle, filter, dialog->lpstrFile, dialog->nMaxFile, dialog->Flags});
    const Reply reply = g_script->replies.at(g_script->calls.size() - 1);
    g_script->error = reply.error;
    if (reply.chosen) lstrcpyW(dialog->lpstrFile, reply.file.c_str());
    return reply.chosen;
}

DWORD WINAPI FakeExtendedError() {
    return g_script->error;
}

class ScriptedDialog : public DialogScript {
public:
    explicit ScriptedDialog(std::vector<Reply> all) {
        replies = std::move(all);
        g_script = this;
    }
    ~ScriptedDialog() { g_script = nullptr; }

private:
    ImportPatch m_open{"comdlg32.dll", "GetOpenFileNameW", &FakeGetOpenFileName};
    ImportPatch m_error{"comdlg32.dll", "CommDlgExtendedError", &FakeExtendedError};
};

const Reply kCancelled{false, L"", 0};
const Reply kRefusedName{false, L"", FNERR_INVALIDFILENAME};
const Reply kFailed{false, L"", CDERR_INITIALIZATION};

Reply Chosen(const std::wstring& file) {
    return {true, file, 0};
}

long NumberOf(const AutomationError& error) {
    return error.Code() & 0xFFFF;
}

}  // namespace

TEST_CASE("the dialog is asked for a wave file, starting with the present one") {
    SettingsWindow page;
    page.popupNotice.m_strSoundFile = L"C:\\Sounds\\old.wav";
    ScriptedDialog dialog({Chosen(L"C:\\Sounds\\new.wav")});
    page.popupNotice.ChooseSoundFile();
    REQUIRE(dialog.calls.size() == 1);
    const DialogCall& call = dialog.calls[0];
    CHECK(call.owner == page.window.Hwnd());
    CHECK(call.title == L"Select a Sound File");
    CHECK(call.filter == std::wstring(L"WAV File\0*.WAV\0\0", 16));
    CHECK(call.file == L"C:\\Sounds\\old.wav");
    CHECK(call.capacity >= 32768);
    CHECK(call.flags == (OFN_HIDEREADONLY | OFN_EXPLORER | OFN_NOCHANGEDIR));
    CHECK(page.popupNotice.m_strSoundFile == L"C:\\Sounds\\new.wav");
}

TEST_CASE("without a sound file the dialog starts with an empty name") {
    SettingsWindow page;
    ScriptedDialog dialog({kCancelled});
    page.popupNotice.ChooseSoundFile();
    REQUIRE(dialog.calls.size() == 1);
    CHECK(dialog.calls[0].file.empty());
    CHECK(page.popupNotice.m_strSoundFile.empty());
}

TEST_CASE("cancelling, an error of the dialog and an empty result keep the old path") {
    for (const Reply& reply : {kCancelled, kFailed, Chosen(L"")}) {
        SettingsWindow page;
        page.popupNotice.m_strSoundFile = L"C:\\Sounds\\old.wav";
        ScriptedDialog dialog({reply});
        page.popupNotice.ChooseSoundFile();
        CHECK(dialog.calls.size() == 1);
        CHECK(page.popupNotice.m_strSoundFile == L"C:\\Sounds\\old.wav");
    }
}

TEST_CASE("the dialog for the sound file makes an error of cancelling") {
    SettingsWindow page;
    ScriptedDialog dialog({kCancelled, kCancelled});
    page.popupNotice.ChooseSoundFile();
    CHECK_THROWS_AS(page.popupNotice.cdlg.ShowOpen(nullptr), AutomationError);
}

TEST_CASE("a start file that the dialog refuses does not keep it from opening") {
    SettingsWindow page;
    page.popupNotice.m_strSoundFile = L"C:\\\"not a name\"\\";
    ScriptedDialog dialog({kRefusedName, Chosen(L"C:\\new.wav")});
    page.popupNotice.ChooseSoundFile();
    REQUIRE(dialog.calls.size() == 2);
    CHECK(dialog.calls[0].file == L"C:\\\"not a name\"\\");
    CHECK(dialog.calls[1].file.empty());
    CHECK(page.popupNotice.m_strSoundFile == L"C:\\new.wav");
}

TEST_CASE("a dialog that refuses even the empty name is given up, and the path stays") {
    SettingsWindow page;
    page.popupNotice.m_strSoundFile = L"C:\\old.wav";
    ScriptedDialog dialog({kRefusedName, kRefusedName});
    page.popupNotice.ChooseSoundFile();
    CHECK(dialog.calls.size() == 2);
    CHECK(page.popupNotice.m_strSoundFile == L"C:\\old.wav");
}

TEST_CASE("a path longer than any path starts the dialog with an empty name") {
    SettingsWindow page;
    page.popupNotice.m_strSoundFile = std::wstring(70000, L'a');
    ScriptedDialog dialog({kCancelled});
    page.popupNotice.ChooseSoundFile();
    REQUIRE(dialog.calls.size() == 1);
    CHECK(dialog.calls[0].file.empty());
    CHECK(page.popupNotice.m_strSoundFile.size() == 70000);
}

TEST_CASE("the file button enables the test button exactly when Play Sound is checked and there is a file") {
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
            page.popupNotice.cmdSoundFile_Click();
            CHECK(page.cmdTestSound.Enabled() == row.testEnabled);
            CHECK(page.cmdApply.Enabled());
        }
    }
}

namespace {

// A name that no code page but Unicode holds whole.
constexpr wchar_t kForeign[] = L"C:\\Sounds\\\x4e00\x44f\x3b1.wav";

const wchar_t* g_shortPath = nullptr;

// As on a volume with short names, or, where there is no g_shortPath, without.
DWORD WINAPI FakeShortPath(LPCWSTR path, LPWSTR buffer, DWORD capacity) {
    const std::wstring name = g_shortPath != nullptr ? g_shortPath : path;
    if (capacity <= name.size()) return static_cast<DWORD>(name.size() + 1);
    lstrcpyW(buffer, name.c_str());
    return static_cast<DWORD>(name.size());
}

DWORD WINAPI NoShortPath(LPCWSTR, LPWSTR, DWORD) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    return 0;
}

std::wstring PathAfterChoosing(const std::wstring& file) {
    SettingsWindow page;
    ScriptedDialog dialog({Chosen(file)});
    page.popupNotice.ChooseSoundFile();
    return page.popupNotice.m_strSoundFile;
}

}  // namespace

TEST_CASE("a sound whose path the code page cannot hold is chosen by its short path") {
    const ImportPatch patch("kernel32.dll", "GetShortPathNameW", &FakeShortPath);
    g_shortPath = L"C:\\Sounds\\5F3A~1.WAV";
    CHECK(PathAfterChoosing(kForeign) == g_shortPath);
    // What the code page holds stays as it was chosen, long as it is.
    CHECK(PathAfterChoosing(L"C:\\Sounds\\a long name \xe9.wav") == L"C:\\Sounds\\a long name \xe9.wav");
}

TEST_CASE("a sound whose short path the code page cannot hold either, or that has none, keeps its path") {
    {
        const ImportPatch patch("kernel32.dll", "GetShortPathNameW", &FakeShortPath);
        g_shortPath = nullptr;
        CHECK(PathAfterChoosing(kForeign) == kForeign);
        g_shortPath = L"C:\\\x4e00\\5F3A~1.WAV";
        CHECK(PathAfterChoosing(kForeign) == kForeign);
    }
    const ImportPatch patch("kernel32.dll", "GetShortPathNameW", &NoShortPath);
    CHECK(PathAfterChoosing(kForeign) == kForeign);
}

TEST_CASE("the short path of a chosen sound is stored, loaded and leads to the file") {
    const TestFolder folder;
    const std::wstring chosen = folder.Write(L"\x4e00\x44f\x3b1.wav", "RIFF");
    SettingsWindow page;
    ScriptedDialog dialog({Chosen(chosen)});
    page.popupNotice.ChooseSoundFile();
    page.transfer.SaveSettings();
    page.transfer.LoadSettings();
    CHECK(page.popupNotice.m_strSoundFile != chosen);
    CHECK(GetFileAttributesA(ToAnsi(page.popupNotice.m_strSoundFile).c_str()) != INVALID_FILE_ATTRIBUTES);
}

TEST_CASE("the file button is pressed like any other button") {
    SettingsWindow page;
    ScriptedDialog dialog({Chosen(L"C:\\new.wav")});
    SettingsWindow::Click(page.chkPlaySound);
    SettingsWindow::Click(page.cmdSoundFile);
    CHECK(page.popupNotice.m_strSoundFile == L"C:\\new.wav");
    CHECK(page.cmdTestSound.Enabled());
}

TEST_CASE("cancelling raises error 32755 only where that is asked for") {
    CommonDialog dialog;
    dialog.FileName(L"kept.txt");
    dialog.Filter(L"Text|*.txt");
    dialog.DialogTitle(L"Title");
    {
        ScriptedDialog script({kCancelled});
        dialog.ShowOpen(nullptr);
    }
    dialog.CancelError(true);
    ScriptedDialog script({kCancelled});
    long number = 0;
    try {
        dialog.ShowOpen(nullptr);
    } catch (const AutomationError& error) {
        number = NumberOf(error);
    }
    CHECK(number == 32755);
    CHECK(dialog.FileName() == L"kept.txt");
}

TEST_CASE("a dialog that cannot be shown raises an error whether or not cancelling does") {
    for (const bool cancelError : {false, true}) {
        CommonDialog dialog;
        dialog.Filter(L"Text|*.txt");
        dialog.DialogTitle(L"Title");
        dialog.CancelError(cancelError);
        ScriptedDialog script({kFailed});
        CHECK_THROWS_AS(dialog.ShowOpen(nullptr), AutomationError);
    }
}

namespace {

// Ends the dialog with this title as soon as it is there; its file name box holds file by then, if any is
// given.
struct DialogUser {
    std::wstring file;
    WORD button;
    bool seen = false;
    std::wstring start;
};

DialogUser* g_dialogUser = nullptr;

void CALLBACK UseDialog(HWND, UINT, UINT_PTR, DWORD) {
    const HWND dialog = FindWindowW(L"#32770", L"Select a Sound File");
    if (dialog == nullptr || g_dialogUser->seen) return;
    HWND edit = GetDlgItem(dialog, 0x047c);  // cmb13, the file name of an Explorer-style dialog
    if (edit == nullptr) edit = GetDlgItem(dialog, 0x0480);
    if (edit == nullptr) return;
    g_dialogUser->seen = true;
    wchar_t start[MAX_PATH] = L"";
    SendMessageW(edit, WM_GETTEXT, MAX_PATH, reinterpret_cast<LPARAM>(start));
    g_dialogUser->start = start;
    if (!g_dialogUser->file.empty()) {
        SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(g_dialogUser->file.c_str()));
    }
    PostMessageW(dialog, WM_COMMAND, g_dialogUser->button, 0);
}

}  // namespace

TEST_CASE("the system's own dialog opens, takes a choice and can be cancelled") {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    const std::wstring chosen = std::wstring(folder) + L"chosen sound.wav";
    CloseHandle(CreateFileW(chosen.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);

    SettingsWindow page;
    page.popupNotice.m_strSoundFile = L"C:\\no such folder\\old.wav";
    const UINT_PTR timer = SetTimer(nullptr, 0, 50, UseDialog);
    DialogUser cancels{L"", IDCANCEL, false, L""};
    g_dialogUser = &cancels;
    page.popupNotice.ChooseSoundFile();
    CHECK(cancels.seen);
    CHECK(page.popupNotice.m_strSoundFile == L"C:\\no such folder\\old.wav");

    DialogUser chooses{chosen, IDOK, false, L""};
    g_dialogUser = &chooses;
    page.popupNotice.ChooseSoundFile();
    KillTimer(nullptr, timer);
    g_dialogUser = nullptr;
    CHECK(chooses.seen);
    CHECK(lstrcmpiW(page.popupNotice.m_strSoundFile.c_str(), chosen.c_str()) == 0);

    wchar_t after[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, after);
    CHECK(std::wstring(after) == before);
    DeleteFileW(chosen.c_str());
}
