#include "platform/com/registry_journal.h"

#include <algorithm>

#include "platform/automation_error.h"
#include "platform/handle.h"

namespace {

bool IsEmpty(HKEY key) {
    DWORD keys = 0;
    DWORD values = 0;
    ThrowIfWin32Failed(RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                                        nullptr, nullptr, nullptr, nullptr));
    return keys == 0 && values == 0;
}

}  // namespace

RegistryJournal::~RegistryJournal() {
    std::for_each(m_steps.rbegin(), m_steps.rend(), [this](const Step& step) { Undo(step); });
}

void RegistryJournal::Write(const RegistryEntry& entry) {
    // Noted before anything is written: what cannot be noted could not be undone.
    Step& step = m_steps.emplace_back(Step{.key = entry.key, .name = entry.name, .oldData = {}});
    RegistryKey key;
    DWORD disposition = 0;
    ThrowIfWin32Failed(RegCreateKeyExW(m_root, entry.key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                       KEY_READ | KEY_WRITE, nullptr, key.Put(), &disposition));
    step.keyMade = disposition == REG_CREATED_NEW_KEY;
    if (entry.keyOnly) return;

    const wchar_t* const name = entry.name.c_str();
    DWORD size = 0;
    if (RegQueryValueExW(key.Get(), name, nullptr, &step.oldType, nullptr, &size) == ERROR_SUCCESS) {
        step.oldData.resize(size);
        ThrowIfWin32Failed(RegQueryValueExW(key.Get(), name, nullptr, &step.oldType,
                                            reinterpret_cast<BYTE*>(step.oldData.data()), &size));
        step.oldData.resize(size);
        step.valueExisted = true;
    }
    ThrowIfWin32Failed(RegSetValueExW(key.Get(), name, 0, REG_SZ,
                                      reinterpret_cast<const BYTE*>(entry.text.c_str()),
                                      static_cast<DWORD>((entry.text.size() + 1) * sizeof(wchar_t))));
    step.valueWritten = true;
}

// A step that cannot be undone does not keep the others from it.
void RegistryJournal::Undo(const Step& step) noexcept {
    if (step.valueWritten) {
        RegistryKey key;
        if (RegOpenKeyExW(m_root, step.key.c_str(), 0, KEY_WRITE, key.Put()) != ERROR_SUCCESS) return;
        if (step.valueExisted) {
            RegSetValueExW(key.Get(), step.name.c_str(), 0, step.oldType,
                           reinterpret_cast<const BYTE*>(step.oldData.data()),
                           static_cast<DWORD>(step.oldData.size()));
        } else {
            RegDeleteValueW(key.Get(), step.name.c_str());
        }
    }
    if (step.keyMade) RegDeleteKeyW(m_root, step.key.c_str());
}

void RemoveEntry(HKEY root, const RegistryEntry& entry) {
    RegistryKey reader;
    const LSTATUS status = RegOpenKeyExW(root, entry.key.c_str(), 0, KEY_READ, reader.Put());
    if (status == ERROR_FILE_NOT_FOUND) return;
    ThrowIfWin32Failed(status);

    // Only what is there is opened for writing: a user without that right has nothing to remove.
    const wchar_t* const name = entry.name.c_str();
    if (!entry.keyOnly &&
        RegQueryValueExW(reader.Get(), name, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS) {
        RegistryKey writer;
        ThrowIfWin32Failed(RegOpenKeyExW(root, entry.key.c_str(), 0, KEY_WRITE, writer.Put()));
        ThrowIfWin32Failed(RegDeleteValueW(writer.Get(), name));
    }
    if (!IsEmpty(reader.Get())) return;
    reader.Reset();
    ThrowIfWin32Failed(RegDeleteKeyW(root, entry.key.c_str()));
}
