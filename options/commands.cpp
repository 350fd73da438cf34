#include "options/commands.h"

#include <utility>

Commands::Commands(CommandControls& controls, SettingsTransfer& transfer,
                   std::function<void(Event done)> reloadSettings, Event hide)
    : m_cmdApply(controls.cmdApply),
      m_transfer(transfer),
      m_reloadSettings(std::move(reloadSettings)),
      m_hide(std::move(hide)) {
    controls.cmdOK.Click = [this] { cmdOK_Click(); };
    controls.cmdApply.Click = [this] { cmdApply_Click(); };
    controls.cmdCancel.Click = [this] { cmdCancel_Click(); };
}

// The engine is not told: it sees what OK stores when it next reads the store by itself, or after a later
// Apply.
void Commands::cmdOK_Click() {
    m_transfer.SaveSettings();
    m_hide();
    m_cmdApply.Enabled(false);
}

// Saving marks a change, so the mark is cleared last.
void Commands::cmdApply_Click() {
    m_transfer.SaveSettings();
    m_reloadSettings([this] { m_cmdApply.Enabled(false); });
}

// The mark stays: a window that is shown again after Cancel may offer Apply although it shows the stored
// settings.
void Commands::cmdCancel_Click() {
    m_transfer.LoadSettings();
    m_hide();
}
