// One pass of writing settings from controls into the store.
#pragma once

#include "lists/list_layout.h"
#include "platform/controls/check_box.h"
#include "platform/controls/control.h"
#include "platform/controls/list_box.h"
#include "platform/controls/text_box.h"
#include "store/registry.h"

class SettingsSaver {
public:
    explicit SettingsSaver(const Registry& registry) : m_registry(registry) {}

    // Stores a check box, a text box or one of the lists; any other control has nothing to store. Never
    // throws an AutomationError.
    void Save(Control& control);

private:
    bool Delete(const wchar_t* key, long n, const wchar_t* word);
    void SaveTextBox(const TextBox& textBox);
    void SaveRows(const ListBox& list);
    void SaveEntries(const ListView& list, const ListLayout& layout);

    const Registry& m_registry;
};
