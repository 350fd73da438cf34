#include "tests/support/registry_calls.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "tests/support/import_fake.h"

namespace {

constexpr size_t kClassBuffer = 512;

// In the order of RegistryFunction.
constexpr const char* kFunctions[] = {"RegOpenKeyExA",   "RegQueryValueExA", "RegQueryInfoKeyA",
                                      "RegCreateKeyExA", "RegSetValueExA",   "RegDeleteValueA",
                                      "RegDeleteKeyA",   "RegCloseKey"};

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

// With bytes that are no visible character as \xx.
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

// "3 NULs" when that is what the buffer holds.
std::string Filling(const void* buffer, size_t size) {
    const std::string bytes(static_cast<const char*>(buffer), size);
    if (bytes.find_first_not_of('\0') != std::string::npos) return "other bytes";
    return std::to_string(size) + " NULs";
}

}  // namespace

bool RegistryCalls::Fails(RegistryFunction function) {
    if (m_fault.first == 0 || (m_fault.function && *m_fault.function != function)) return false;
    ++m_counted;
    return m_fault.isLasting ? m_counted >= m_fault.first : m_counted == m_fault.first;
}

std::vector<std::string> RegistryCalls::Watch(const std::function<void()>& body) {
    m_calls.clear();
    m_open.clear();
    m_before = m_handedOut;
    m_counted = 0;
    const Switched recording(m_isRecording);
    body();
    return Lines();
}

std::vector<std::string> RegistryCalls::Lines() const {
    std::vector<std::string> lines;
    for (const Call& call : m_calls)
        lines.push_back(std::string(kFunctions[static_cast<size_t>(call.function)]) + '(' + call.arguments +
                        ')');
    return lines;
}

size_t RegistryCalls::Count(RegistryFunction function) const {
    return static_cast<size_t>(std::count_if(m_calls.begin(), m_calls.end(),
                                             [=](const Call& call) { return call.function == function; }));
}

std::vector<std::string> RegistryCalls::Values() const {
    std::vector<std::string> lines;
    RegistryFunction before = RegistryFunction::Close;
    for (const Call& call : m_calls) {
        const std::string value = call.key.substr(call.key.find_last_of('\\') + 1) + '\\' + call.name;
        const std::string missing = call.result == ERROR_SUCCESS ? "" : " (missing)";
        // A value is queried for its size, and behind the key's class for its data.
        if (call.function == RegistryFunction::Query && before == RegistryFunction::Info)
            lines.push_back("read " + value + missing);
        else if (call.function == RegistryFunction::Create && !call.data.empty())
            lines.push_back("class " + call.data);
        else if (call.function == RegistryFunction::Set)
            lines.push_back("write " + value + '=' + call.data);
        else if (call.function == RegistryFunction::DeleteValue)
            lines.push_back("delete " + value + missing);
        before = call.function;
    }
    return lines;
}

std::vector<std::string> RegistryCalls::OpenHandles() const {
    std::vector<std::string> open;
    for (const auto& [key, opened] : m_open)
        open.push_back(NameOf(key));
    return open;
}

template <class Describe, class InMemory, class Original>
LSTATUS RegistryCalls::Pass(RegistryFunction function, HKEY key, LPCSTR name, Describe describe,
                            InMemory inMemory, Original original) {
    const auto call = [&]() -> LSTATUS { return m_isMemory ? inMemory() : original(); };
    if (!IsWatching()) return call();
    const size_t index = m_calls.size();
    if (m_isRecording) {
        const auto opened = m_open.find(key);
        m_calls.push_back({function, opened == m_open.end() ? "" : opened->second.path,
                           name == nullptr ? "" : name, "", "", ERROR_SUCCESS});
        m_calls[index].arguments = NameOf(key) + (name == nullptr ? "" : ", " + Quoted(name)) + describe();
    }
    LSTATUS result = m_fault.error;
    if (!Fails(function)) {
        if (beforeCall) {
            const Switched aside(m_isAside);
            beforeCall(function, name == nullptr ? "" : name);
        }
        result = call();
    }
    if (m_isRecording) m_calls[index].result = result;
    return result;
}

LSTATUS RegistryCalls::HandOut(LSTATUS result, HKEY root, LPCSTR path, PHKEY key) {
    if (result != ERROR_SUCCESS || !IsWatching()) return result;
    ++m_handedOut;
    if (m_isMemory) *key = reinterpret_cast<HKEY>(0x1000 + m_handedOut);
    m_open[*key] = {m_handedOut, PathOf(root, path)};
    return result;
}

std::string RegistryCalls::NameOf(HKEY key) const {
    if (const char* const root = RootName(key)) return root;
    const auto opened = m_open.find(key);
    return opened == m_open.end() ? "?" : "key" + std::to_string(opened->second.number - m_before);
}

std::string RegistryCalls::PathOf(HKEY root, LPCSTR path) {
    const char* const name = RootName(root);
    if (name == nullptr) ++strayHandles;
    return std::string(name == nullptr ? "?" : name) + '\\' + path;
}

template <class Body>
LSTATUS RegistryCalls::InKey(HKEY key, Body body) {
    const auto opened = m_open.find(key);
    if (opened == m_open.end()) ++strayHandles;
    const auto stored = opened == m_open.end() ? contents.end() : contents.find(opened->second.path);
    return stored == contents.end() ? ERROR_KEY_DELETED : body(stored->second);
}

struct RegistryCalls::Fakes {
    RegistryCalls& self;

    const ImportFake<"RegOpenKeyExA", decltype(&RegOpenKeyExA)> open{
        "advapi32.dll", [this](HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key) {
            const LSTATUS result = self.Pass(
                RegistryFunction::Open, root, path,
                [&] { return ", " + std::to_string(options) + ", " + Hex(access); },
                [&] {
                    return self.contents.contains(self.PathOf(root, path)) ? ERROR_SUCCESS
                                                                           : ERROR_FILE_NOT_FOUND;
                },
                [&] { return open.Original(root, path, options, access, key); });
            return self.HandOut(result, root, path, key);
        }};

    const ImportFake<"RegQueryValueExA", decltype(&RegQueryValueExA)> query{
        "advapi32.dll",
        [this](HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size) {
            return self.Pass(
                RegistryFunction::Query, key, name,
                [&] {
                    return ", type " + std::to_string(*type) + ", " + Filling(data, *size) + ", " +
                           std::to_string(*size);
                },
                [&] {
                    return self.InKey(key, [&](const StoredKey& stored) -> LSTATUS {
                        const auto value = stored.find(name);
                        if (value == stored.end()) return ERROR_FILE_NOT_FOUND;
                        const std::string& bytes = value->second.bytes;
                        *type = value->second.type;
                        const DWORD capacity = std::exchange(*size, static_cast<DWORD>(bytes.size()));
                        if (capacity < bytes.size()) return ERROR_MORE_DATA;
                        std::copy(bytes.begin(), bytes.end(), data);
                        return ERROR_SUCCESS;
                    });
                },
                [&] { return query.Original(key, name, reserved, type, data, size); });
        }};

    const ImportFake<"RegQueryInfoKeyA", decltype(&RegQueryInfoKeyA)> info{
        "advapi32.dll", [this](HKEY key, LPSTR keyClass, LPDWORD classLength, auto... others) {
            return self.Pass(
                RegistryFunction::Info, key, nullptr,
                [&] { return ", " + Filling(keyClass, kClassBuffer) + ", " + std::to_string(*classLength); },
                [&] {
                    return self.InKey(key, [&](const StoredKey&) -> LSTATUS {
                        *classLength = 0;
                        return ERROR_SUCCESS;
                    });
                },
                [&] { return info.Original(key, keyClass, classLength, others...); });
        }};

    const ImportFake<"RegCreateKeyExA", decltype(&RegCreateKeyExA)> create{
        "advapi32.dll",
        [this](HKEY root, LPCSTR path, DWORD reserved, LPSTR keyClass, DWORD options, REGSAM access,
               LPSECURITY_ATTRIBUTES security, PHKEY key, LPDWORD disposition) {
            const LSTATUS result = self.Pass(
                RegistryFunction::Create, root, path,
                [&] {
                    self.m_calls.back().data = keyClass;
                    return ", " + std::to_string(reserved) + ", " + Quoted(keyClass) + ", " +
                           std::to_string(options) + ", " + Hex(access) + ", {" +
                           std::to_string(security->nLength) +
                           (security->lpSecurityDescriptor == nullptr ? ", no" : ", a") + " descriptor, " +
                           (security->bInheritHandle == TRUE ? "inherited}" : "not inherited}");
                },
                [&]() -> LSTATUS {
                    self.contents.try_emplace(self.PathOf(root, path));
                    return ERROR_SUCCESS;
                },
                [&] {
                    return create.Original(root, path, reserved, keyClass, options, access, security, key,
                                           disposition);
                });
            return self.HandOut(result, root, path, key);
        }};

    const ImportFake<"RegSetValueExA", decltype(&RegSetValueExA)> set{
        "advapi32.dll",
        [this](HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) {
            const auto bytes = [&] { return std::string(reinterpret_cast<const char*>(data), size); };
            return self.Pass(
                RegistryFunction::Set, key, name,
                [&] {
                    self.m_calls.back().data =
                        bytes() + (type == REG_SZ ? "" : " of type " + std::to_string(type));
                    return ", " + std::to_string(reserved) + ", type " + std::to_string(type) + ", " +
                           Quoted(bytes()) + (data[size] == 0 ? ", a NUL behind" : ", no NUL behind");
                },
                [&] {
                    return self.InKey(key, [&](StoredKey& stored) -> LSTATUS {
                        stored[name] = {type, bytes()};
                        return ERROR_SUCCESS;
                    });
                },
                [&] { return set.Original(key, name, reserved, type, data, size); });
        }};

    const ImportFake<"RegDeleteValueA", decltype(&RegDeleteValueA)> deleteValue{
        "advapi32.dll", [this](HKEY key, LPCSTR name) {
            return self.Pass(
                RegistryFunction::DeleteValue, key, name, [] { return ""; },
                [&] {
                    return self.InKey(key, [&](StoredKey& stored) -> LSTATUS {
                        return stored.erase(name) == 0 ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
                    });
                },
                [&] { return deleteValue.Original(key, name); });
        }};

    const ImportFake<"RegDeleteKeyA", decltype(&RegDeleteKeyA)> deleteKey{
        "advapi32.dll", [this](HKEY root, LPCSTR path) {
            return self.Pass(
                RegistryFunction::DeleteKey, root, path, [] { return ""; },
                [&]() -> LSTATUS {
                    const auto erased = self.contents.erase(self.PathOf(root, path));
                    return erased == 0 ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
                },
                [&] { return deleteKey.Original(root, path); });
        }};

    const ImportFake<"RegCloseKey", decltype(&RegCloseKey)> close{
        "advapi32.dll", [this](HKEY key) {
            const bool isWatching = self.IsWatching();
            const LSTATUS result = self.Pass(
                RegistryFunction::Close, key, nullptr, [] { return ""; },
                [&]() -> LSTATUS {
                    if (RootName(key) == nullptr && !self.m_open.contains(key)) ++self.strayHandles;
                    return ERROR_SUCCESS;
                },
                [&] { return close.Original(key); });
            if (result == ERROR_SUCCESS && isWatching) self.m_open.erase(key);
            return result;
        }};
};

RegistryCalls::RegistryCalls(Of registry) : m_isMemory(registry == Of::Memory), m_fakes(new Fakes{*this}) {}

RegistryCalls::~RegistryCalls() = default;
