// Notes, in order, which values are read, written and deleted.
#pragma once

#include <windows.h>

#include <map>
#include <string>
#include <vector>

#include "tests/support/import_patch.h"

// One at a time. A line is "read Settings\name", "write Settings\name=data" or "delete Settings\name", the
// key by its last part; a delete of what is not there ends in " (missing)". A key that is given a class adds
// a line of its own.
class RegistryLog {
public:
    RegistryLog();
    RegistryLog(const RegistryLog&) = delete;
    RegistryLog& operator=(const RegistryLog&) = delete;
    ~RegistryLog();

    std::vector<std::string> lines;

private:
    static LONG WINAPI Open(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key);
    static LONG WINAPI Create(HKEY root, LPCSTR path, DWORD reserved, LPSTR keyClass, DWORD options,
                              REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY key, LPDWORD disposition);
    static LONG WINAPI Query(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                             LPDWORD size);
    static LONG WINAPI Set(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size);
    static LONG WINAPI Delete(HKEY key, LPCSTR name);

    std::map<HKEY, std::string> m_names;
    HKEY m_unread = nullptr;  // opened, and not queried yet
    ImportPatch m_open{"advapi32.dll", "RegOpenKeyExA", &Open};
    ImportPatch m_create{"advapi32.dll", "RegCreateKeyExA", &Create};
    ImportPatch m_query{"advapi32.dll", "RegQueryValueExA", &Query};
    ImportPatch m_set{"advapi32.dll", "RegSetValueExA", &Set};
    ImportPatch m_delete{"advapi32.dll", "RegDeleteValueA", &Delete};
};
