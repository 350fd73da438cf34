// Redirects a registry root of this process to an empty throw-away key.
#pragma once

#include <windows.h>

#include <string>

#include "platform/text.h"

class TestHive {
public:
    // root: HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE. One at a time for each root.
    explicit TestHive(HKEY root);
    TestHive(const TestHive&) = delete;
    TestHive& operator=(const TestHive&) = delete;
    ~TestHive();

    // Seen from the redirected root. The bytes of the stored value, type in *type where wanted; Exists first.
    bool Exists(const std::wstring& key) const;
    bool Exists(const std::wstring& key, const std::wstring& value) const;
    std::string Bytes(const std::wstring& key, const std::wstring& value, DWORD* type = nullptr) const;
    std::wstring Text(const std::wstring& key, const std::wstring& value) const {
        return FromAnsi(Bytes(key, value));
    }
    size_t ValueCount(const std::wstring& key) const;
    void Write(const std::wstring& key, const std::wstring& value, DWORD type,
               const std::string& bytes) const;
    void Write(const std::wstring& key, const std::wstring& value, const std::wstring& text) const {
        Write(key, value, REG_SZ, ToAnsi(text));
    }
    void Delete(const std::wstring& key, const std::wstring& value) const {
        RegDeleteKeyValueW(m_key, key.c_str(), value.c_str());
    }
    void DeleteTree(const std::wstring& key) const { RegDeleteTreeW(m_key, key.c_str()); }

private:
    const HKEY m_root;
    std::wstring m_path;
    HKEY m_key = nullptr;
};
