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
bool SettingsLoader::Read(const wchar_t* key, std::wstring_view name) {
    bool isRead = false;
    ResumeNext([&] {
        isRead = m_registry.Read(HKEY_CURRENT_USER, key, std::wstring(name), m_value, m_valueType, m_class);
    });
    return isRead;
}

bool SettingsLoader::Read(const wchar_t* key, long n, const wchar_t* word) {
    bool isRead = false;
    ResumeNext([&] { isRead = Read(key, Numbered(n, word)); });
    return isRead;
}

void SettingsLoader::LoadCheckBox(CheckBox& checkBox) {
    Read(Schema::kSettingsKey, checkBox.Name());
    ResumeNext([&] { checkBox.Value(ToShort(m_value)); });
}

void SettingsLoader::LoadTextBox(TextBox& textBox) {
    Read(Schema::kSettingsKey, textBox.Name());
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
    for (long n = 0; Read(Schema::kExcludeKey, n, L""); ++n) {
        ResumeNext([&] { list.AddItem(ToText(m_value)); });
    }
}

void SettingsLoader::LoadEntries(ListView& list, const ListLayout& layout) {
    layout.setupColumns(list);
    const RedrawPause pause(list);
    const auto& fields = layout.subItemFields;
    std::vector<std::wstring> subItems(fields.size());
    bool goesOn = true;
    for (long i = 1; goesOn && Read(layout.key, i, Schema::kName); ++i) {
        // Behind a row that could not be added the others move up, and none takes its fields.
        int position = 0;
        ResumeNext([&] { position = list.Add(i, ToText(m_value)); });
        // The last column's field is read first. It matters where fields are missing.
        for (size_t field = fields.size(); field-- > 0;) {
            Read(layout.key, i, fields[field]);
            subItems[field].clear();
            ResumeNext([&] { subItems[field] = ToText(m_value); });
        }
        // An entry without a use is shown, but ends the list.
        goesOn = Read(layout.key, i, Schema::kUse);
        for (size_t field = 0; field < fields.size(); ++field) {
            ResumeNext([&] { list.SubItem(position, static_cast<int>(field) + 1, subItems[field]); });
        }
        ResumeNext([&] { list.Checked(position, ToBool(m_value)); });
    }
}
