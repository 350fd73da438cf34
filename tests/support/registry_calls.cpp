#include "tests/support/registry_calls.h"

#include <algorithm>
#include <cstdio>

RegistryCalls* RegistryCalls::s_current = nullptr;

namespace {

constexpr size_t kClassBuffer = 512;

// In the order of RegistryFunction.
constexpr const char* kFunctions[] = {"RegOpenKeyExA",   "RegQueryValueExA", "RegQueryInfoKeyA",
                                      "RegCreateKeyExA", "RegSetValueExA",   "RegDeleteValueA",
                                      "RegDeleteKeyA",   "RegCloseKey"};

const char* FunctionName(RegistryFunction function) {
    return kFunctions[static_cast<size_t>(function)];
}

class Switched {
public:
    explicit Switched(bool& flag) : m_flag(flag) { flag = true; }
    Switched(const Switched&) = delete;
    Switched& operator=(const Switched&) = delete;
    ~Switched() { m_flag = false; }

private:
    bool& m_flag;
};

const char* RootName(HKEY key) {
    if (key == HKEY_CURRENT_USER) return "HKCU";
    if (key == HKEY_LOCAL_MACHINE) return "HKLM";
    return nullptr;
}

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

std::string Record(const SECURITY_ATTRIBUTES* security) {
    if (security == nullptr) return "no record";
    return "{" + std::to_string(security->nLength) +
           (security->lpSecurityDescriptor == nullptr ? ", no descriptor" : ", a descriptor") +
           (security->bInheritHandle == TRUE ? ", inherited}" : ", not inherited}");
}

}  // namespace

bool FaultCounter::Fails(RegistryFunction function) {
    ++m_calls;
    if (m_fault.first == 0 || (m_fault.function && *m_fault.function != function)) return false;
    ++m_counted;
    const bool fails = m_fault.isLasting ? m_counted >= m_fault.first : m_counted == m_fault.first;
    m_happened = m_happened || fails;
    return fails;
}

RegistryCalls::RegistryCalls(Of registry) : m_isMemory(registry == Of::Memory) {
    s_current = this;
    const auto patch = [this](auto* replacement) {
        m_patches.push_back(
            std::make_unique<ImportPatch>("advapi32.dll", kFunctions[m_patches.size()], replacement));
    };
    patch(&Open);
    patch(&Query);
    patch(&Info);
    patch(&Create);
    patch(&Set);
    patch(&DeleteValue);
    patch(&DeleteKey);
    patch(&Close);
}

RegistryCalls::~RegistryCalls() {
    m_patches.clear();
    s_current = nullptr;
}

std::vector<std::string> RegistryCalls::Watch(const std::function<void()>& body) {
    m_calls.clear();
    m_counter = FaultCounter(m_counter.Cause());
    const Switched recording(m_isRecording);
    body();
    return Lines();
}

std::vector<std::string> RegistryCalls::Lines() const {
    std::vector<std::string> lines;
    for (const Call& call : m_calls)
        lines.push_back(std::string(FunctionName(call.function)) + '(' + call.arguments + ')');
    return lines;
}

std::vector<std::string> RegistryCalls::Functions() const {
    std::vector<std::string> functions;
    for (const Call& call : m_calls)
        functions.push_back(FunctionName(call.function));
    return functions;
}

size_t RegistryCalls::Count(RegistryFunction function) const {
    return static_cast<size_t>(std::count_if(m_calls.begin(), m_calls.end(),
                                             [=](const Call& call) { return call.function == function; }));
}

std::vector<std::string> RegistryCalls::Values() const {
    std::vector<std::string> lines;
    for (size_t i = 0; i < m_calls.size(); ++i) {
        const Call& call = m_calls[i];
        const std::string value = call.key.substr(call.key.find_last_of('\\') + 1) + '\\' + call.name;
        // A value is queried for its size and for its data: the key is opened again for the next one.
        if (call.function == RegistryFunction::Query && i > 0 &&
            m_calls[i - 1].function == RegistryFunction::Open) {
            lines.push_back("read " + value);
        } else if (call.function == RegistryFunction::Create && !call.data.empty()) {
            lines.push_back("class " + call.data);
        } else if (call.function == RegistryFunction::Set) {
            lines.push_back("write " + value + '=' + call.data);
        } else if (call.function == RegistryFunction::DeleteValue) {
            lines.push_back("delete " + value + (call.result == ERROR_SUCCESS ? "" : " (missing)"));
        }
    }
    return lines;
}

std::vector<std::string> RegistryCalls::OpenHandles() const {
    std::vector<std::string> open;
    for (const auto& [key, opened] : m_open)
        open.push_back(NameOf(key));
    return open;
}

template <class Function, class Describe, class InMemory, class... Arguments>
LSTATUS RegistryCalls::Pass(RegistryFunction function, HKEY key, LPCSTR name, Describe describe,
                            InMemory inMemory, Arguments... arguments) {
    const auto call = [&] {
        const auto& patch = *m_patches[static_cast<size_t>(function)];
        return m_isMemory ? inMemory() : patch.Original<Function*>()(arguments...);
    };
    if (!IsWatching()) return call();
    const size_t index = m_calls.size();
    if (m_isRecording) {
        const auto opened = m_open.find(key);
        m_calls.push_back({function, opened == m_open.end() ? "" : opened->second.path,
                           name == nullptr ? "" : name, "", "", ERROR_SUCCESS});
        m_calls[index].arguments = NameOf(key) + (name == nullptr ? "" : ", " + Quoted(name)) + describe();
    }
    LSTATUS result = m_counter.Cause().error;
    if (!m_counter.Fails(function)) {
        if (beforeCall) {
            const Switched aside(m_isAside);
            beforeCall(function, name == nullptr ? "" : name);
        }
        result = call();
    }
    if (m_isRecording) m_calls[index].result = result;
    return result;
}

LSTATUS RegistryCalls::HandOut(LSTATUS result, HKEY root, LPCSTR path, HKEY key) {
    if (result == ERROR_SUCCESS && IsWatching()) m_open[key] = {++m_handedOut, PathOf(root, path)};
    return result;
}

std::string RegistryCalls::NameOf(HKEY key) const {
    if (const char* const root = RootName(key)) return root;
    const auto opened = m_open.find(key);
    return opened == m_open.end() ? "?" : "key" + std::to_string(opened->second.number);
}

std::string RegistryCalls::PathOf(HKEY root, LPCSTR path) {
    const char* const name = RootName(root);
    if (name == nullptr) ++strayHandles;
    return std::string(name == nullptr ? "?" : name) + '\\' + path;
}

StoredKey* RegistryCalls::Find(HKEY key) {
    const auto opened = m_open.find(key);
    if (opened == m_open.end()) {
        ++strayHandles;
        return nullptr;
    }
    const auto found = contents.find(opened->second.path);
    return found == contents.end() ? nullptr : &found->second;
}

LSTATUS WINAPI RegistryCalls::Open(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key) {
    RegistryCalls& self = *s_current;
    const LSTATUS result = self.Pass<decltype(RegOpenKeyExA)>(
        RegistryFunction::Open, root, path,
        [&] { return ", " + std::to_string(options) + ", " + Hex(access); },
        [&]() -> LSTATUS {
            if (!self.contents.contains(self.PathOf(root, path))) return ERROR_FILE_NOT_FOUND;
            *key = reinterpret_cast<HKEY>(0x1000 + self.m_handedOut);
            return ERROR_SUCCESS;
        },
        root, path, options, access, key);
    return self.HandOut(result, root, path, *key);
}

LSTATUS WINAPI RegistryCalls::Query(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                    LPDWORD size) {
    RegistryCalls& self = *s_current;
    return self.Pass<decltype(RegQueryValueExA)>(
        RegistryFunction::Query, key, name,
        [&] {
            return ", type " + std::to_string(*type) + ", " + Filling(data, *size) + ", " +
                   std::to_string(*size);
        },
        [&]() -> LSTATUS {
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
        },
        key, name, reserved, type, data, size);
}

LSTATUS WINAPI RegistryCalls::Info(HKEY key, LPSTR keyClass, LPDWORD classLength, LPDWORD reserved,
                                   LPDWORD subkeys, LPDWORD maxSubkey, LPDWORD maxClass, LPDWORD values,
                                   LPDWORD maxName, LPDWORD maxData, LPDWORD security, PFILETIME written) {
    RegistryCalls& self = *s_current;
    return self.Pass<decltype(RegQueryInfoKeyA)>(
        RegistryFunction::Info, key, nullptr,
        [&] { return ", " + Filling(keyClass, kClassBuffer) + ", " + std::to_string(*classLength); },
        [&]() -> LSTATUS {
            if (self.Find(key) == nullptr) return ERROR_KEY_DELETED;
            *classLength = 0;
            return ERROR_SUCCESS;
        },
        key, keyClass, classLength, reserved, subkeys, maxSubkey, maxClass, values, maxName, maxData,
        security, written);
}

LSTATUS WINAPI RegistryCalls::Create(HKEY root, LPCSTR path, DWORD reserved, LPSTR keyClass, DWORD options,
                                     REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY key,
                                     LPDWORD disposition) {
    RegistryCalls& self = *s_current;
    const LSTATUS result = self.Pass<decltype(RegCreateKeyExA)>(
        RegistryFunction::Create, root, path,
        [&] {
            self.m_calls.back().data = keyClass;
            return ", " + std::to_string(reserved) + ", " + Text(keyClass) + ", " + std::to_string(options) +
                   ", " + Hex(access) + ", " + Record(security);
        },
        [&]() -> LSTATUS {
            self.contents.try_emplace(self.PathOf(root, path));
            *key = reinterpret_cast<HKEY>(0x1000 + self.m_handedOut);
            return ERROR_SUCCESS;
        },
        root, path, reserved, keyClass, options, access, security, key, disposition);
    return self.HandOut(result, root, path, *key);
}

LSTATUS WINAPI RegistryCalls::Set(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                                  DWORD size) {
    RegistryCalls& self = *s_current;
    const auto bytes = [&] { return std::string(reinterpret_cast<const char*>(data), size); };
    return self.Pass<decltype(RegSetValueExA)>(
        RegistryFunction::Set, key, name,
        [&] {
            self.m_calls.back().data = bytes() + (type == REG_SZ ? "" : " of type " + std::to_string(type));
            return ", " + std::to_string(reserved) + ", type " + std::to_string(type) + ", " +
                   Quoted(bytes()) + (data[size] == 0 ? ", a NUL behind" : ", no NUL behind");
        },
        [&]() -> LSTATUS {
            StoredKey* const stored = self.Find(key);
            if (stored == nullptr) return ERROR_KEY_DELETED;
            (*stored)[name] = {type, bytes()};
            return ERROR_SUCCESS;
        },
        key, name, reserved, type, data, size);
}

LSTATUS WINAPI RegistryCalls::DeleteValue(HKEY key, LPCSTR name) {
    RegistryCalls& self = *s_current;
    return self.Pass<decltype(RegDeleteValueA)>(
        RegistryFunction::DeleteValue, key, name, [] { return std::string(); },
        [&]() -> LSTATUS {
            StoredKey* const stored = self.Find(key);
            if (stored == nullptr) return ERROR_KEY_DELETED;
            return stored->erase(name) == 0 ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
        },
        key, name);
}

LSTATUS WINAPI RegistryCalls::DeleteKey(HKEY root, LPCSTR path) {
    RegistryCalls& self = *s_current;
    return self.Pass<decltype(RegDeleteKeyA)>(
        RegistryFunction::DeleteKey, root, path, [] { return std::string(); },
        [&]() -> LSTATUS {
            return self.contents.erase(self.PathOf(root, path)) == 0 ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
        },
        root, path);
}

LSTATUS WINAPI RegistryCalls::Close(HKEY key) {
    RegistryCalls& self = *s_current;
    const bool isWatching = self.IsWatching();
    const LSTATUS result = self.Pass<decltype(RegCloseKey)>(
        RegistryFunction::Close, key, nullptr, [] { return std::string(); },
        [&]() -> LSTATUS {
            if (RootName(key) == nullptr && !self.m_open.contains(key)) ++self.strayHandles;
            return ERROR_SUCCESS;
        },
        key);
    if (result == ERROR_SUCCESS && isWatching) self.m_open.erase(key);
    return result;
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
