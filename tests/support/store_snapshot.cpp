#include "tests/support/store_snapshot.h"

#include <algorithm>

#include "platform/text.h"
#include "store/settings_schema.h"

Rows StoredIn(const std::wstring& key) {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, (L"Software\\Calvane\\" + key).c_str(), 0, KEY_READ, &opened) !=
        ERROR_SUCCESS) {
        return {};
    }
    const RegistryKey owner(opened);
    Rows rows;
    std::string name(256, '\0');
    std::string data(1 << 16, '\0');
    for (DWORD index = 0;; ++index) {
        DWORD nameLength = static_cast<DWORD>(name.size());
        DWORD size = static_cast<DWORD>(data.size());
        DWORD type = 0;
        if (RegEnumValueA(opened, index, name.data(), &nameLength, nullptr, &type,
                          reinterpret_cast<BYTE*>(data.data()), &size) != ERROR_SUCCESS) {
            break;
        }
        std::wstring text = FromAnsi(data.substr(0, size));
        if (text.ends_with(L'\0')) text.back() = L'@';
        std::wstring row = FromAnsi(name.substr(0, nameLength)) + L'=' + text;
        if (type != REG_SZ) row += L" of type " + std::to_wstring(type);
        rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

Rows Stored() {
    Rows all;
    for (const wchar_t* const key : {L"Settings", L"Exclude", L"Banners", L"Search"}) {
        for (const std::wstring& row : StoredIn(key))
            all.push_back(key + (L'\\' + row));
    }
    return all;
}

std::wstring RunEntry() {
    wchar_t text[1024] = L"";
    DWORD size = sizeof(text);
    RegGetValueW(HKEY_LOCAL_MACHINE, Schema::kRunKey, Schema::kRunValue, RRF_RT_REG_SZ, nullptr, text, &size);
    return text;
}

void DeleteRunEntry() {
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, Schema::kRunKey, Schema::kRunValue);
}
