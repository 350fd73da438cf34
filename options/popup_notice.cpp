#include "options/popup_notice.h"

#include <utility>

#include "options/wave_file.h"
#include "platform/automation_error.h"
#include "platform/text.h"

namespace {

void Beep() {
    MessageBeep(MB_OK);
}

}  // namespace

PopupNotice::PopupNotice(SettingsControls& controls, Event markChanged)
    : m_controls(controls), m_markChanged(std::move(markChanged)) {
    m_controls.chkPlaySound.Click = [this] { chkPlaySound_Click(); };
    m_controls.chkBeep.Click = [this] { chkBeep_Click(); };
    m_controls.cmdSoundFile.Click = [this] { cmdSoundFile_Click(); };
    m_controls.cmdTestSound.Click = [this] { cmdTestSound_Click(); };
}

void PopupNotice::PlayNotice() {
    if (m_controls.chkPlaySound.Value() == 1) PlaySoundFile();
    if (m_controls.chkBeep.Value() == 1) Beep();
}

void PopupNotice::Announce() {
    if (m_controls.chkPlaySound.Value() == 1) {
        PlaySoundFile();
    } else if (m_controls.chkBeep.Value() == 1) {
        Beep();
    }
}

void PopupNotice::ChooseSoundFile() {
    ResumeNext([&] {
        cdlg.FileName(m_strSoundFile);
        cdlg.DialogTitle(L"Select a Sound File");
        cdlg.CancelError(true);
        cdlg.Filter(L"WAV File|*.WAV");
        cdlg.ShowOpen(GetAncestor(m_controls.cmdSoundFile.Hwnd(), GA_ROOT));
        if (!cdlg.FileName().empty()) m_strSoundFile = PlayablePath(cdlg.FileName());
    });
}

void PopupNotice::chkPlaySound_Click() {
    if (m_controls.chkPlaySound.Value() == 1) {
        m_controls.cmdSoundFile.Enabled(true);
        // Without a sound file the test button keeps its state.
        if (!m_strSoundFile.empty()) m_controls.cmdTestSound.Enabled(true);
        m_controls.chkBeep.Value(0);
    } else {
        m_controls.cmdSoundFile.Enabled(false);
        m_controls.cmdTestSound.Enabled(false);
    }
    m_markChanged();
}

void PopupNotice::chkBeep_Click() {
    if (m_controls.chkBeep.Value() == 1) m_controls.chkPlaySound.Value(0);
    m_markChanged();
}

void PopupNotice::cmdSoundFile_Click() {
    ChooseSoundFile();
    m_controls.cmdTestSound.Enabled(m_controls.chkPlaySound.Value() == 1 && !m_strSoundFile.empty());
    m_markChanged();
}

void PopupNotice::cmdTestSound_Click() {
    PlayNotice();
}

void PopupNotice::PlaySoundFile() {
    if (!m_strSoundFile.empty()) PlayWaveFile(ToAnsi(m_strSoundFile));
}
