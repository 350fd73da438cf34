// Moves every option and list between the store and the window's controls, which are the only copy in memory.
#pragma once

#include "lists/closed_log.h"
#include "options/change_mark.h"
#include "options/general_options.h"
#include "options/popup_notice.h"
#include "platform/controls/combo_box.h"
#include "platform/controls/control.h"

// Goes through the controls in their order. Every check box and text box of the table is stored under its own
// name; the lists are the controls named lstExclude, lvwBanners and lvwSearchURLs. Reports nothing: what
// fails is skipped, a control whose stored value does not fit keeps what it shows, and a text that does not
// convert is not stored.
class SettingsTransfer {
public:
    SettingsTransfer(ControlTable controls, ChangeMark& changeMark, PopupNotice& popupNotice,
                     GeneralOptions& generalOptions, ClosedLog& closedLog, ComboBox& cboPauseKey)
        : m_controls(controls),
          m_changeMark(changeMark),
          m_popupNotice(popupNotice),
          m_generalOptions(generalOptions),
          m_closedLog(closedLog),
          m_cboPauseKey(cboPauseKey) {}

    // From the store into the controls, without marking a change. The lists are replaced.
    void LoadSettings();

    // From the controls into the store. This is no transaction, and it marks a change at its end.
    void SaveSettings();

private:
    const ControlTable m_controls;
    ChangeMark& m_changeMark;
    PopupNotice& m_popupNotice;
    GeneralOptions& m_generalOptions;
    ClosedLog& m_closedLog;
    ComboBox& m_cboPauseKey;
};
