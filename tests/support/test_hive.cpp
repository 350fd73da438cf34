#include "tests/support/test_hive.h"

#include <stdexcept>

#include "platform/handle.h"

namespace {

RegistryKey Open(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key);
    return RegistryKey(key);
}

}  // namespace

TestHive::TestHive(HKEY root) : m_root(root) {
    m_path = L"Software\\CalvaneTests\\" + std::to_wstring(GetCurrentProcessId()) +
             (root == HKEY_CURRENT_USER ? L"U" : L"M");
    RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
    if (RegCreateKeyExW(HKEY_CURRENT_USER, m_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &m_key,
                        nullptr) != ERROR_SUCCESS ||
        RegOverridePredefKey(m_root, m_key) != ERROR_SUCCESS) {
        throw std::runtime_error("no throw-away registry root");
    }
}

TestHive::~TestHive() {
    RegOverridePredefKey(m_root, nullptr);
    RegDeleteTreeW(m_key, nullptr);
    RegCloseKey(m_key);
    RegDeleteKeyW(HKEY_CURRENT_USER, m_path.c_str());
}

bool TestHive::Exists(const std::wstring& key) const {
    return static_cast<bool>(Open(m_key, key));
}

bool TestHive::Exists(const std::wstring& key, const std::wstring& value) const {
    return RegGetValueW(m_key, key.c_str(), value.c_str(), RRF_RT_ANY | RRF_NOEXPAND, nullptr, nullptr,
                        nullptr) == ERROR_SUCCESS;
}

std::string TestHive::Bytes(const std::wstring& key, const std::wstring& value, DWORD* type) const {
    const RegistryKey opened = Open(m_key, key);
    DWORD size = 1 << 20;
    std::string bytes(size, '\0');
    if (RegQueryValueExA(opened.Get(), ToAnsi(value).c_str(), nullptr, type,
                         reinterpret_cast<BYTE*>(bytes.data()), &size) != ERROR_SUCCESS) {
        throw std::runtime_error("no such value: " + ToAnsi(value));
    }
    bytes.resize(size);
    return bytes;
}

size_t TestHive::ValueCount(const std::wstring& key) const {
    const RegistryKey opened = Open(m_key, key);
    DWORD count = 0;
    RegQueryInfoKeyW(opened.Get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr,
                     nullptr, nullptr, nullptr);
    return count;
}

void TestHive::Write(const std::wstring& key, const std::wstring& value, DWORD type,
                     const std::string& bytes) const {
    // A byte that is no NUL behind the data keeps the system from adding one to it.
    const std::string guarded = bytes + 'x';
    if (RegSetKeyValueA(m_key, ToAnsi(key).c_str(), ToAnsi(value).c_str(), type, guarded.data(),
                        static_cast<DWORD>(bytes.size())) != ERROR_SUCCESS) {
        throw std::runtime_error("not written: " + ToAnsi(value));
    }
}
