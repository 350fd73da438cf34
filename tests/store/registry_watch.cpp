#include "tests/store/registry_watch.h"

#include <climits>
#include <cstdio>

RegistryWatch* RegistryWatch::s_current = nullptr;

namespace {

constexpr size_t kClassBuffer = 512;

class Switched {
public:
    Switched(bool& flag, bool value) : m_flag(flag), m_old(flag) { flag = value; }
    Switched(const Switched&) = delete;
    Switched& operator=(const Switched&) = delete;
    ~Switched() { m_flag = m_old; }

private:
    bool& m_flag;
    bool m_old;
};

std::string Hex(DWORD number) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%lx", number);
    return text;
}

std::string Text(const char* text) {
    return text == nullptr ? "null" : Quoted(text);
}

// "3 NULs" when that is what the buffer holds.
std::string Filling(const void* buffer, size_t size) {
    if (buffer == nullptr) return "no buffer";
    const std::string bytes(static_cast<const char*>(buffer), size);
    if (bytes.find_first_not_of('\0') != std::string::npos) return "other bytes";
    return std::to_string(size) + " NULs";
}

LSTATUS WINAPI OpenKey(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key) {
    RegistryWatch& watch = *RegistryWatch::s_current;
    const auto original = watch.Original<decltype(&RegOpenKeyExA)>("RegOpenKeyExA");
    if (!watch.IsWatching()) return original(root, path, options, access, key);
    const LSTATUS failure = watch.Enter("RegOpenKeyExA", watch.NameOf(root) + ", " + Text(path) + ", " +
                                                             std::to_string(options) + ", " + Hex(access));
    if (failure != ERROR_SUCCESS) return failure;
    const LSTATUS result = original(root, path, options, access, key);
    if (result == ERROR_SUCCESS) watch.HandOut(*key);
    return result;
}

LSTATUS WINAPI QueryValue(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size) {
    RegistryWatch& watch = *RegistryWatch::s_current;
    const auto original = watch.Original<decltype(&RegQueryValueExA)>("RegQueryValueExA");
    if (!watch.IsWatching()) return original(key, name, reserved, type, data, size);
    const LSTATUS failure = watch.Enter(
        "RegQueryValueExA", watch.NameOf(key) + ", " + Text(name) + ", type " + std::to_string(*type) + ", " +
                                Filling(data, *size) + ", " + std::to_string(*size));
    return failure != ERROR_SUCCESS ? failure : original(key, name, reserved, type, data, size);
}

LSTATUS WINAPI QueryInfo(HKEY key, LPSTR keyClass, LPDWORD classLength, LPDWORD reserved, LPDWORD subkeys,
                         LPDWORD maxSubkey, LPDWORD maxClass, LPDWORD values, LPDWORD maxName,
                         LPDWORD maxData, LPDWORD security, PFILETIME written) {
    RegistryWatch& watch = *RegistryWatch::s_current;
    if (watch.IsWatching()) {
        const LSTATUS failure =
            watch.Enter("RegQueryInfoKeyA", watch.NameOf(key) + ", " + Filling(keyClass, kClassBuffer) +
                                                ", " + std::to_string(*classLength));
        if (failure != ERROR_SUCCESS) return failure;
    }
    return watch.Original<decltype(&RegQueryInfoKeyA)>("RegQueryInfoKeyA")(
        key, keyClass, classLength, reserved, subkeys, maxSubkey, maxClass, values, maxName, maxData,
        security, written);
}

LSTATUS WINAPI CreateKey(HKEY root, LPCSTR path, DWORD reserved, LPSTR keyClass, DWORD options, REGSAM access,
                         LPSECURITY_ATTRIBUTES security, PHKEY key, LPDWORD disposition) {
    RegistryWatch& watch = *RegistryWatch::s_current;
    const auto original = watch.Original<decltype(&RegCreateKeyExA)>("RegCreateKeyExA");
    if (!watch.IsWatching()) {
        return original(root, path, reserved, keyClass, options, access, security, key, disposition);
    }
    std::string record = "no record";
    if (security != nullptr) {
        record = "{" + std::to_string(security->nLength) + ", " +
                 (security->lpSecurityDescriptor == nullptr ? "no descriptor" : "a descriptor") + ", " +
                 (security->bInheritHandle == TRUE ? "inherited" : "not inherited") + "}";
    }
    const LSTATUS failure =
        watch.Enter("RegCreateKeyExA", watch.NameOf(root) + ", " + Text(path) + ", " +
                                           std::to_string(reserved) + ", " + Text(keyClass) + ", " +
                                           std::to_string(options) + ", " + Hex(access) + ", " + record);
    if (failure != ERROR_SUCCESS) return failure;
    const LSTATUS result =
        original(root, path, reserved, keyClass, options, access, security, key, disposition);
    if (result == ERROR_SUCCESS) watch.HandOut(*key);
    return result;
}

LSTATUS WINAPI SetValue(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) {
    RegistryWatch& watch = *RegistryWatch::s_current;
    if (watch.IsWatching()) {
        const std::string bytes(reinterpret_cast<const char*>(data), size);
        const LSTATUS failure = watch.Enter(
            "RegSetValueExA", watch.NameOf(key) + ", " + Text(name) + ", " + std::to_string(reserved) +
                                  ", type " + std::to_string(type) + ", " + Quoted(bytes) + ", " +
                                  (data[size] == 0 ? "a NUL behind" : "no NUL behind"));
        if (failure != ERROR_SUCCESS) return failure;
    }
    return watch.Original<decltype(&RegSetValueExA)>("RegSetValueExA")(key, name, reserved, type, data, size);
}

LSTATUS WINAPI DeleteValue(HKEY key, LPCSTR name) {
    RegistryWatch& watch = *RegistryWatch::s_current;
    if (watch.IsWatching()) {
        const LSTATUS failure = watch.Enter("RegDeleteValueA", watch.NameOf(key) + ", " + Text(name));
        if (failure != ERROR_SUCCESS) return failure;
    }
    return watch.Original<decltype(&RegDeleteValueA)>("RegDeleteValueA")(key, name);
}

LSTATUS WINAPI DeleteKey(HKEY root, LPCSTR path) {
    RegistryWatch& watch = *RegistryWatch::s_current;
    if (watch.IsWatching()) {
        const LSTATUS failure = watch.Enter("RegDeleteKeyA", watch.NameOf(root) + ", " + Text(path));
        if (failure != ERROR_SUCCESS) return failure;
    }
    return watch.Original<decltype(&RegDeleteKeyA)>("RegDeleteKeyA")(root, path);
}

LSTATUS WINAPI CloseKey(HKEY key) {
    RegistryWatch& watch = *RegistryWatch::s_current;
    if (watch.IsWatching()) {
        const LSTATUS failure = watch.Enter("RegCloseKey", watch.NameOf(key));
        if (failure != ERROR_SUCCESS) return failure;
        watch.Closed(key);
    }
    return watch.Original<decltype(&RegCloseKey)>("RegCloseKey")(key);
}

}  // namespace

RegistryWatch::RegistryWatch() {
    s_current = this;
    Patch("RegOpenKeyExA", &OpenKey);
    Patch("RegQueryValueExA", &QueryValue);
    Patch("RegQueryInfoKeyA", &QueryInfo);
    Patch("RegCreateKeyExA", &CreateKey);
    Patch("RegSetValueExA", &SetValue);
    Patch("RegDeleteValueA", &DeleteValue);
    Patch("RegDeleteKeyA", &DeleteKey);
    Patch("RegCloseKey", &CloseKey);
}

RegistryWatch::~RegistryWatch() {
    m_patches.clear();
    s_current = nullptr;
}

template <class Function>
void RegistryWatch::Patch(const char* function, Function* replacement) {
    m_patches[function] = std::make_unique<ImportPatch>("advapi32.dll", function, replacement);
}

void RegistryWatch::FailFrom(const std::string& function, int nth, LSTATUS error) {
    m_failures[function] = {nth, INT_MAX, error};
}

void RegistryWatch::FailOnce(const std::string& function, int nth, LSTATUS error) {
    m_failures[function] = {nth, nth, error};
}

std::vector<std::string> RegistryWatch::Calls(const std::function<void()>& body) {
    m_lines.clear();
    m_counts.clear();
    const Switched watching(m_isWatching, true);
    body();
    return m_lines;
}

std::vector<std::string> RegistryWatch::LinesOf(const std::string& function) const {
    std::vector<std::string> lines;
    for (const std::string& line : m_lines) {
        if (line.starts_with(function + "(")) lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> RegistryWatch::OpenHandles() const {
    std::vector<std::string> open;
    for (const auto& [name, isClosed] : m_closed) {
        if (!isClosed) open.push_back(name);
    }
    return open;
}

LSTATUS RegistryWatch::Enter(const std::string& function, const std::string& arguments) {
    m_lines.push_back(function + "(" + arguments + ")");
    const int call = ++m_counts[function];
    const auto failure = m_failures.find(function);
    if (failure != m_failures.end() && call >= failure->second.first && call <= failure->second.last) {
        return failure->second.error;
    }
    if (beforeCall) {
        const Switched unwatched(m_isWatching, false);
        beforeCall(m_lines.back());
    }
    return ERROR_SUCCESS;
}

void RegistryWatch::HandOut(HKEY key) {
    const std::string name = "key" + std::to_string(m_handles.size() + 1);
    m_handles[name] = key;
    m_closed[name] = false;
}

std::string RegistryWatch::NameOf(HKEY key) const {
    if (key == HKEY_CURRENT_USER) return "HKCU";
    if (key == HKEY_LOCAL_MACHINE) return "HKLM";
    for (const auto& [name, handle] : m_handles) {
        if (handle == key && !m_closed.at(name)) return name;
    }
    return "?";
}

void RegistryWatch::Closed(HKEY key) {
    const std::string name = NameOf(key);
    if (m_closed.contains(name)) m_closed[name] = true;
}

std::string Quoted(const std::string& bytes) {
    std::string text = "\"";
    for (const char character : bytes) {
        if (character >= ' ' && character <= '~') {
            text += character;
        } else {
            char code[8];
            std::snprintf(code, sizeof(code), "\\%02x", static_cast<unsigned char>(character));
            text += code;
        }
    }
    return text + "\"";
}
