#include "options/commands.h"

#include <utility>

Commands::Commands(CommandControls& controls, const ChangeMark& changeMark, SettingsTransfer& transfer,
                   std::function<void(Event done)> reloadSettings, Event hide)
    : m_cmdApply(controls.cmdApply),
      m_changeMark(changeMark),
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

// Saving marks a change, so the mark is cleared last. A busy engine is told after this has returned: what is
// changed until then stays marked.
void Commands::cmdApply_Click() {
    m_transfer.SaveSettings();
    m_lastApplied.reset();
    m_reloadSettings([this] {
        if (!m_lastApplied || m_lastApplied->IsCurrent()) m_cmdApply.Enabled(false);
    });
    m_lastApplied.emplace(m_changeMark.LastChange());
}

// The mark stays: a window that is shown again after Cancel may offer Apply although it shows the stored
// settings.
void Commands::cmdCancel_Click() {
    m_transfer.LoadSettings();
    m_hide();
}
