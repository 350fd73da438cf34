#include "options/settings_loader.h"

#include <vector>

#include "options/speed_levels.h"
#include "platform/automation_error.h"

using Schema::Numbered;

namespace {

constexpr double kMillisecondsPerSecond = 1000;

}  // namespace

void SettingsLoader::Load(Control& control) {
    ResumeNext([&] {
        const ListLayout* const layout = LayoutOf(control.Name());
        switch (control.Kind()) {
            case ControlKind::CheckBox:
                return LoadCheckBox(static_cast<CheckBox&>(control));
            case ControlKind::TextBox:
                return LoadTextBox(static_cast<TextBox&>(control));
            case ControlKind::ListBox:
                if (control.Name() == kExcludeControl) LoadRows(static_cast<ListBox&>(control));
                return;
            case ControlKind::ListView:
                if (layout != nullptr) LoadEntries(static_cast<ListView&>(control), *layout);
                return;
            default:
                return;
        }
    });
}

// A value that is too short for its type raises an error in the registry's codec: it counts as missing.
bool SettingsLoader::Read(const wchar_t* key, const std::wstring& name) {
    bool isRead = false;
    ResumeNext(
        [&] { isRead = m_registry.Read(HKEY_CURRENT_USER, key, name, m_value, m_valueType, m_class); });
    return isRead;
}

void SettingsLoader::LoadCheckBox(CheckBox& checkBox) {
    Read(Schema::kSettingsKey, std::wstring(checkBox.Name()));
    ResumeNext([&] { checkBox.Value(ToShort(m_value)); });
}

void SettingsLoader::LoadTextBox(TextBox& textBox) {
    Read(Schema::kSettingsKey, std::wstring(textBox.Name()));
    ResumeNext([&] {
        if (textBox.Name() == Schema::kPause) {
            textBox.Text(TextOf(ToDouble(m_value) / kMillisecondsPerSecond));
        } else if (textBox.Name() == Schema::kSpeed) {
            textBox.Text(TextOf(IntervalToSpeed(ToLong(m_value))));
        } else {
            textBox.Text(ToText(m_value));
        }
    });
}

void SettingsLoader::LoadRows(ListBox& list) {
    const RedrawPause pause(list);
    list.Clear();
    for (long n = 0; Read(Schema::kExcludeKey, Numbered(n, L"")); ++n) {
        ResumeNext([&] { list.AddItem(ToText(m_value)); });
    }
}

void SettingsLoader::LoadEntries(ListView& list, const ListLayout& layout) {
    layout.setupColumns(list);
    const RedrawPause pause(list);
    const auto& fields = layout.subItemFields;
    std::vector<std::wstring> subItems(fields.size());
    bool goesOn = true;
    for (long i = 1; goesOn && Read(layout.key, Numbered(i, Schema::kName)); ++i) {
        ResumeNext([&] { list.Add(i, ToText(m_value)); });
        // The last column's field is read first. It matters where fields are missing.
        for (size_t field = fields.size(); field-- > 0;) {
            Read(layout.key, Numbered(i, fields[field]));
            subItems[field] = ToText(m_value);
        }
        // An entry without a use is shown, but ends the list.
        goesOn = Read(layout.key, Numbered(i, Schema::kUse));
        for (size_t field = 0; field < fields.size(); ++field) {
            ResumeNext([&] { list.SubItem(i, static_cast<int>(field) + 1, subItems[field]); });
        }
        ResumeNext([&] { list.Checked(i, ToBool(m_value)); });
    }
}
