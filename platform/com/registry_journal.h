// Text values below one registry key, written so that they can be taken back.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

// A text value to write, or a key alone.
struct RegistryEntry {
    std::wstring key;   // relative to the root
    std::wstring name;  // empty for the key's default value
    std::wstring text;
    bool keyOnly = false;
};

// Writes entries, and unless Keep was called undoes them when it goes: keys that it made are removed, values
// that it replaced come back.
class RegistryJournal {
public:
    // root: an open or predefined key, valid as long as the journal.
    explicit RegistryJournal(HKEY root) : m_root(root) {}
    RegistryJournal(const RegistryJournal&) = delete;
    RegistryJournal& operator=(const RegistryJournal&) = delete;
    ~RegistryJournal();

    // Makes the last key of the path if it is missing; the keys above it should have entries of their own,
    // since only those are undone. Throws AutomationError.
    void Write(const RegistryEntry& entry);

    void Keep() noexcept { m_steps.clear(); }

private:
    struct Step {
        std::wstring key;
        bool keyMade = false;
        bool valueWritten = false;
        std::wstring name;
        bool valueExisted = false;
        DWORD oldType = REG_NONE;
        std::vector<std::byte> oldData;
    };

    void Undo(const Step& step) noexcept;

    const HKEY m_root;
    std::vector<Step> m_steps;
};

// Removes the value of the entry, then its key if nothing else is in it. What is not there is no error.
// Throws AutomationError.
void RemoveEntry(HKEY root, const RegistryEntry& entry);
