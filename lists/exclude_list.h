// The Exclude page: the web sites whose pop-up windows the engine leaves alone.
#pragma once

#include <array>

#include "lists/resource.h"
#include "platform/controls/button.h"
#include "platform/controls/label.h"
#include "platform/controls/list_box.h"

struct ExcludeControls {
    Label Label5{L"Label5", IDC_LABEL5};
    ListBox lstExclude{L"lstExclude", IDC_LSTEXCLUDE};
    Button cmdAddURL{L"cmdAddURL", IDC_CMDADDURL};
    Button cmdRemoveURL{L"cmdRemoveURL", IDC_CMDREMOVEURL};
    const std::array<Control*, 4> all{&Label5, &lstExclude, &cmdAddURL, &cmdRemoveURL};
};

class ExcludeList {
public:
    // The controls outlive this object. markChanged: notes an unsaved change, unless settings are being
    // loaded. enableApply: notes one even then: a removal always counts.
    ExcludeList(ExcludeControls& controls, Event enableApply, Event markChanged);
    ExcludeList(const ExcludeList&) = delete;
    ExcludeList& operator=(const ExcludeList&) = delete;

    void cmdAddURL_Click();
    void cmdRemoveURL_Click();
    void lstExclude_Click();

private:
    ExcludeControls& m_controls;
    const Event m_enableApply;
    const Event m_markChanged;
};
