// The Exclude page: the web sites whose pop-up windows the engine leaves alone.
#pragma once

#include "platform/controls/button.h"
#include "platform/controls/control.h"
#include "platform/controls/list_box.h"

class ExcludeList {
public:
    // The controls outlive this object. markChanged: notes an unsaved change, unless settings are being
    // loaded.
    ExcludeList(ListBox& lstExclude, Button& cmdAddURL, Button& cmdRemoveURL, Button& cmdApply,
                Event markChanged);
    ExcludeList(const ExcludeList&) = delete;
    ExcludeList& operator=(const ExcludeList&) = delete;

    void cmdAddURL_Click();
    void cmdRemoveURL_Click();
    void lstExclude_Click();

private:
    ListBox& m_lstExclude;
    Button& m_cmdAddURL;
    Button& m_cmdRemoveURL;
    Button& m_cmdApply;
    const Event m_markChanged;
};
