#include "options/settings_saver.h"

#include <limits>
#include <string>

#include "options/list_layouts.h"
#include "options/speed_levels.h"
#include "platform/automation_error.h"
#include "store/settings_schema.h"
#include "store/stored_value.h"

using Schema::Numbered;

namespace {

constexpr long long kMillisecondsPerSecond = 1000;

// Throws AutomationError 6 when the product has no 32-bit form.
long Milliseconds(long seconds) {
    const long long product = seconds * kMillisecondsPerSecond;
    if (product < std::numeric_limits<long>::min() || product > std::numeric_limits<long>::max()) {
        RaiseError(ErrorNumber::Overflow);
    }
    return static_cast<long>(product);
}

}  // namespace

void SettingsSaver::Save(Control& control) {
    ResumeNext([&] {
        const ListLayout* const layout = LayoutOf(control.Name());
        switch (control.Kind()) {
            case ControlKind::CheckBox:
                return WriteValue(m_registry, Schema::kSettingsKey, std::wstring(control.Name()),
                                  static_cast<CheckBox&>(control).Value());
            case ControlKind::TextBox:
                return SaveTextBox(static_cast<TextBox&>(control));
            case ControlKind::ListBox:
                if (control.Name() == kExcludeControl) SaveRows(static_cast<ListBox&>(control));
                return;
            case ControlKind::ListView:
                if (layout != nullptr) SaveEntries(static_cast<ListView&>(control), *layout);
                return;
            default:
                return;
        }
    });
}

// Whatever keeps a value from being deleted, the list is written: it must not be lost half way.
bool SettingsSaver::Delete(const wchar_t* key, long n, const wchar_t* word) {
    bool isDeleted = false;
    ResumeNext([&] { isDeleted = m_registry.Delete(HKEY_CURRENT_USER, key, Numbered(n, word)); });
    return isDeleted;
}

// The number is made first: what does not convert leaves the stored one.
void SettingsSaver::SaveTextBox(const TextBox& textBox) {
    Variant value(textBox.Text());
    if (textBox.Name() == Schema::kPause) {
        value = Milliseconds(ToLong(value));
    } else if (textBox.Name() == Schema::kSpeed) {
        value = SpeedToInterval(ToLong(value));
    }
    WriteValue(m_registry, Schema::kSettingsKey, std::wstring(textBox.Name()), value);
}

// What is stored behind a gap in the numbers stays there.
void SettingsSaver::SaveRows(const ListBox& list) {
    long n = 0;
    while (Delete(Schema::kExcludeKey, n, L""))
        ++n;
    const int count = list.ListCount();
    for (int row = 0; row < count; ++row) {
        ResumeNext([&] { WriteValue(m_registry, Schema::kExcludeKey, Numbered(row, L""), list.List(row)); });
    }
}

void SettingsSaver::SaveEntries(const ListView& list, const ListLayout& layout) {
    // The use is deleted last and decides whether there is a next entry to delete.
    bool goesOn = true;
    for (long i = 1; goesOn; ++i) {
        for (const ListColumn& column : layout.columns)
            Delete(layout.key, i, column.field);
        goesOn = Delete(layout.key, i, Schema::kUse);
    }
    const int count = list.Count();
    for (int i = 1; i <= count; ++i) {
        int subItem = 0;  // 0 is the text of the row
        for (const ListColumn& column : layout.columns) {
            ResumeNext([&] {
                WriteValue(m_registry, layout.key, Numbered(i, column.field), list.SubItem(i, subItem));
            });
            ++subItem;
        }
        ResumeNext([&] { WriteValue(m_registry, layout.key, Numbered(i, Schema::kUse), list.Checked(i)); });
    }
}
