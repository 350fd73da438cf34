#include "tests/settings_transfer/registry_log.h"

namespace {

RegistryLog* g_log = nullptr;

std::string LastPart(const std::string& path) {
    return path.substr(path.find_last_of('\\') + 1);
}

}  // namespace

RegistryLog::RegistryLog() {
    g_log = this;
}

RegistryLog::~RegistryLog() {
    g_log = nullptr;
}

LONG WINAPI RegistryLog::Open(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key) {
    const LONG result = g_log->m_open.Original<decltype(&RegOpenKeyExA)>()(root, path, options, access, key);
    if (result == ERROR_SUCCESS) g_log->m_names[*key] = LastPart(path);
    if (result == ERROR_SUCCESS) g_log->m_unread = *key;
    return result;
}

LONG WINAPI RegistryLog::Create(HKEY root, LPCSTR path, DWORD reserved, LPSTR keyClass, DWORD options,
                                REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY key,
                                LPDWORD disposition) {
    const LONG result = g_log->m_create.Original<decltype(&RegCreateKeyExA)>()(
        root, path, reserved, keyClass, options, access, security, key, disposition);
    if (result == ERROR_SUCCESS) g_log->m_names[*key] = LastPart(path);
    if (*keyClass != '\0') g_log->lines.push_back(std::string("class ") + keyClass);
    return result;
}

// A value is queried twice, for its size and for its data: the key is opened again for the next one.
LONG WINAPI RegistryLog::Query(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                               LPDWORD size) {
    if (key == g_log->m_unread) g_log->lines.push_back("read " + g_log->m_names[key] + "\\" + name);
    g_log->m_unread = nullptr;
    return g_log->m_query.Original<decltype(&RegQueryValueExA)>()(key, name, reserved, type, data, size);
}

LONG WINAPI RegistryLog::Set(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                             DWORD size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    g_log->lines.push_back("write " + g_log->m_names[key] + "\\" + name + "=" + text);
    if (type != REG_SZ) g_log->lines.back() += " of type " + std::to_string(type);
    return g_log->m_set.Original<decltype(&RegSetValueExA)>()(key, name, reserved, type, data, size);
}

LONG WINAPI RegistryLog::Delete(HKEY key, LPCSTR name) {
    const LONG result = g_log->m_delete.Original<decltype(&RegDeleteValueA)>()(key, name);
    g_log->lines.push_back("delete " + g_log->m_names[key] + "\\" + name +
                           (result == ERROR_SUCCESS ? "" : " (missing)"));
    return result;
}
