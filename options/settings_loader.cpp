#include "options/settings_loader.h"

#include <string>
#include <vector>

#include "options/list_layouts.h"
#include "options/speed_levels.h"
#include "platform/automation_error.h"
#include "store/settings_schema.h"
#include "store/stored_value.h"

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
            case ControlKind::UpDown:
                return static_cast<UpDown&>(control).FollowBuddy();
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
    ResumeNext([&] { isRead = ReadValue(m_registry, key, std::wstring(name), m_value); });
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
    SetupColumns(list, layout);
    const RedrawPause pause(list);
    std::vector<std::wstring> texts(layout.columns.size());
    bool goesOn = true;
    for (long i = 1; goesOn && Read(layout.key, i, layout.columns[0].field); ++i) {
        // Behind a row that could not be added the others move up, and none takes its fields.
        int position = 0;
        ResumeNext([&] { position = list.Add(ToText(m_value)); });
        // The last column's field is read first. It matters where fields are missing.
        for (size_t column = texts.size(); --column > 0;) {
            Read(layout.key, i, layout.columns[column].field);
            texts[column].clear();
            ResumeNext([&] { texts[column] = ToText(m_value); });
        }
        // An entry without a use is shown, but ends the list.
        goesOn = Read(layout.key, i, Schema::kUse);
        for (size_t column = 1; column < texts.size(); ++column) {
            ResumeNext([&] { list.SubItem(position, static_cast<int>(column), texts[column]); });
        }
        ResumeNext([&] { list.Checked(position, ToBool(m_value)); });
    }
}
