// The notice of a closed pop-up: a sound file or a beep, or neither.
#pragma once

#include <string>

#include "options/settings_controls.h"
#include "platform/controls/common_dialog.h"

// Keeps at most one of the two check boxes checked, and the sound buttons enabled to match. Shows no message,
// whatever fails.
class PopupNotice {
public:
    // The controls outlive this object. markChanged: notes an unsaved change, unless settings are being
    // loaded.
    PopupNotice(SettingsControls& controls, Event markChanged);
    PopupNotice(const PopupNotice&) = delete;
    PopupNotice& operator=(const PopupNotice&) = delete;

    // Gives the notice as the check boxes stand now, saved or not. Does not wait for the sound.
    void PlayNotice();

    // What a closed pop-up does: never both a sound and a beep, even where both boxes should be checked.
    void Announce();

    // Lets the user choose m_strSoundFile. It stays as it was when the user cancels or the dialog fails.
    void ChooseSoundFile();

    void chkPlaySound_Click();
    void chkBeep_Click();
    void cmdSoundFile_Click();
    void cmdTestSound_Click();

    CommonDialog cdlg;

    // Full path of the sound; empty when there is none.
    std::wstring m_strSoundFile;

private:
    void PlaySoundFile();

    SettingsControls& m_controls;
    const Event m_markChanged;
};
