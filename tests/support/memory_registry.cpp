#include "tests/support/memory_registry.h"

#include <algorithm>

MemoryRegistry* MemoryRegistry::s_current = nullptr;

namespace {

const char* RootName(HKEY key) {
    if (key == HKEY_CURRENT_USER) return "HKCU";
    if (key == HKEY_LOCAL_MACHINE) return "HKLM";
    return nullptr;
}

}  // namespace

bool FaultCounter::Fails(RegistryCall function) {
    ++m_calls;
    if (m_fault.first == 0 || (m_fault.function && *m_fault.function != function)) return false;
    ++m_counted;
    const bool fails = m_fault.isLasting ? m_counted >= m_fault.first : m_counted == m_fault.first;
    m_happened = m_happened || fails;
    return fails;
}

MemoryRegistry::MemoryRegistry(bool isReal) : m_isReal(isReal) {
    s_current = this;
    const auto patch = [this](const char* function, auto* replacement) {
        m_patches.push_back(std::make_unique<ImportPatch>("advapi32.dll", function, replacement));
    };
    patch("RegOpenKeyExA", &Open);
    patch("RegQueryValueExA", &Query);
    patch("RegQueryInfoKeyA", &Info);
    patch("RegCreateKeyExA", &Create);
    patch("RegSetValueExA", &Set);
    patch("RegDeleteValueA", &DeleteValue);
    patch("RegCloseKey", &Close);
}

MemoryRegistry::~MemoryRegistry() {
    m_patches.clear();
    s_current = nullptr;
}

LSTATUS MemoryRegistry::Enter(RegistryCall function, LPCSTR name) {
    if (m_counter.Fails(function)) return m_counter.Error();
    if (beforeCall) beforeCall(function, name == nullptr ? "" : name);
    return ERROR_SUCCESS;
}

std::string MemoryRegistry::PathOf(HKEY root, LPCSTR path) {
    const char* const name = RootName(root);
    if (name == nullptr) {
        ++strayHandles;
        return {};
    }
    return std::string(name) + '\\' + path;
}

StoredKey* MemoryRegistry::Find(HKEY key) {
    const auto open = m_open.find(key);
    if (open == m_open.end()) {
        ++strayHandles;
        return nullptr;
    }
    const auto found = contents.find(open->second);
    return found == contents.end() ? nullptr : &found->second;
}

HKEY MemoryRegistry::HandOut(const std::string& path) {
    const HKEY key = reinterpret_cast<HKEY>(++m_lastHandle);
    m_open[key] = path;
    return key;
}

LSTATUS WINAPI MemoryRegistry::Open(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key) {
    MemoryRegistry& self = *s_current;
    if (const LSTATUS failure = self.Enter(RegistryCall::Open, path)) return failure;
    if (self.m_isReal)
        return self.Original<decltype(RegOpenKeyExA)>(RegistryCall::Open)(root, path, options, access, key);
    const std::string full = self.PathOf(root, path);
    if (!self.contents.contains(full)) return ERROR_FILE_NOT_FOUND;
    *key = self.HandOut(full);
    return ERROR_SUCCESS;
}

LSTATUS WINAPI MemoryRegistry::Query(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                     LPDWORD size) {
    MemoryRegistry& self = *s_current;
    if (const LSTATUS failure = self.Enter(RegistryCall::Query, name)) return failure;
    if (self.m_isReal) {
        return self.Original<decltype(RegQueryValueExA)>(RegistryCall::Query)(key, name, reserved, type, data,
                                                                              size);
    }
    const StoredKey* const stored = self.Find(key);
    if (stored == nullptr) return ERROR_KEY_DELETED;
    const auto value = stored->find(name);
    if (value == stored->end()) return ERROR_FILE_NOT_FOUND;
    const std::string& bytes = value->second.bytes;
    const DWORD capacity = *size;
    *type = value->second.type;
    *size = static_cast<DWORD>(bytes.size());
    if (capacity < bytes.size()) return ERROR_MORE_DATA;
    std::copy(bytes.begin(), bytes.end(), data);
    return ERROR_SUCCESS;
}

LSTATUS WINAPI MemoryRegistry::Info(HKEY key, LPSTR keyClass, LPDWORD classLength, LPDWORD reserved,
                                    LPDWORD subkeys, LPDWORD maxSubkey, LPDWORD maxClass, LPDWORD values,
                                    LPDWORD maxName, LPDWORD maxData, LPDWORD security, PFILETIME written) {
    MemoryRegistry& self = *s_current;
    if (const LSTATUS failure = self.Enter(RegistryCall::Info, nullptr)) return failure;
    if (self.m_isReal) {
        return self.Original<decltype(RegQueryInfoKeyA)>(RegistryCall::Info)(
            key, keyClass, classLength, reserved, subkeys, maxSubkey, maxClass, values, maxName, maxData,
            security, written);
    }
    if (self.Find(key) == nullptr) return ERROR_KEY_DELETED;
    *classLength = 0;
    return ERROR_SUCCESS;
}

LSTATUS WINAPI MemoryRegistry::Create(HKEY root, LPCSTR path, DWORD reserved, LPSTR keyClass, DWORD options,
                                      REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY key,
                                      LPDWORD disposition) {
    MemoryRegistry& self = *s_current;
    if (const LSTATUS failure = self.Enter(RegistryCall::Create, path)) return failure;
    if (self.m_isReal) {
        return self.Original<decltype(RegCreateKeyExA)>(RegistryCall::Create)(
            root, path, reserved, keyClass, options, access, security, key, disposition);
    }
    const std::string full = self.PathOf(root, path);
    self.contents.try_emplace(full);
    *key = self.HandOut(full);
    return ERROR_SUCCESS;
}

LSTATUS WINAPI MemoryRegistry::Set(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                                   DWORD size) {
    MemoryRegistry& self = *s_current;
    if (const LSTATUS failure = self.Enter(RegistryCall::Set, name)) return failure;
    if (self.m_isReal) {
        return self.Original<decltype(RegSetValueExA)>(RegistryCall::Set)(key, name, reserved, type, data,
                                                                          size);
    }
    StoredKey* const stored = self.Find(key);
    if (stored == nullptr) return ERROR_KEY_DELETED;
    (*stored)[name] = {type, std::string(reinterpret_cast<const char*>(data), size)};
    return ERROR_SUCCESS;
}

LSTATUS WINAPI MemoryRegistry::DeleteValue(HKEY key, LPCSTR name) {
    MemoryRegistry& self = *s_current;
    if (const LSTATUS failure = self.Enter(RegistryCall::DeleteValue, name)) return failure;
    if (self.m_isReal) return self.Original<decltype(RegDeleteValueA)>(RegistryCall::DeleteValue)(key, name);
    StoredKey* const stored = self.Find(key);
    if (stored == nullptr) return ERROR_KEY_DELETED;
    return stored->erase(name) == 0 ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
}

LSTATUS WINAPI MemoryRegistry::Close(HKEY key) {
    MemoryRegistry& self = *s_current;
    if (const LSTATUS failure = self.Enter(RegistryCall::Close, nullptr)) return failure;
    if (self.m_isReal) return self.Original<decltype(RegCloseKey)>(RegistryCall::Close)(key);
    if (RootName(key) == nullptr && self.m_open.erase(key) == 0) ++self.strayHandles;
    return ERROR_SUCCESS;
}
