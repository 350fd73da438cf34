// The only record that something was changed since the last save: whether the Apply button is enabled.
#pragma once

#include "platform/controls/button.h"
#include "platform/generation.h"

class ChangeMark {
public:
    explicit ChangeMark(Button& cmdApply) : m_cmdApply(cmdApply) {}

    // Enables the Apply button, except while the settings are being loaded into the controls: the handlers
    // that call this also run when a control is set from code.
    void MarkChanged() {
        if (!m_bLoading) EnableApply();
    }

    // Even while they are being loaded.
    void EnableApply() {
        m_changes.Begin();
        m_cmdApply.Enabled(true);
    }

    // Of the last change.
    Generation::Mark LastChange() const noexcept { return m_changes.Current(); }

    bool m_bLoading = false;

private:
    Button& m_cmdApply;
    Generation m_changes;
};
