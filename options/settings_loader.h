// One pass of reading settings from the store into controls.
#pragma once

#include <string_view>

#include "lists/list_layout.h"
#include "platform/controls/check_box.h"
#include "platform/controls/control.h"
#include "platform/controls/list_box.h"
#include "platform/controls/text_box.h"
#include "platform/controls/up_down.h"
#include "platform/com/variant.h"
#include "store/registry.h"

// All controls of a pass share the variable that is read into, and a missing or empty value leaves it as it
// is: a control without a stored value is given the value read before it, if that converts, and keeps its own
// otherwise.
class SettingsLoader {
public:
    explicit SettingsLoader(const Registry& registry) : m_registry(registry) {}

    // Fills a check box, a text box or one of the stored lists; any other control stays as it is. Never
    // throws an AutomationError.
    void Load(Control& control);

private:
    bool Read(const wchar_t* key, std::wstring_view name);
    bool Read(const wchar_t* key, long n, const wchar_t* word);
    void LoadCheckBox(CheckBox& checkBox);
    void LoadTextBox(TextBox& textBox);
    void LoadRows(ListBox& list);
    void LoadEntries(ListView& list, const ListLayout& layout);

    const Registry& m_registry;
    Variant m_value{L""};
};
