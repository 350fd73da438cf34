#include "tests/walk/store_snapshot.h"

#include <algorithm>

#include "platform/text.h"
#include "store/settings_schema.h"
#include "tests/support/stored_values.h"

Rows StoredIn(const std::wstring& key) {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, (L"Software\\Calvane\\" + key).c_str(), 0, KEY_READ, &opened) !=
        ERROR_SUCCESS) {
        return {};
    }
    const RegistryKey owner(opened);
    Rows rows;
    for (const auto& [name, value] : ValuesIn(opened)) {
        std::wstring text = FromAnsi(value.bytes);
        if (text.ends_with(L'\0')) text.back() = L'@';
        std::wstring row = FromAnsi(name) + L'=' + text;
        if (value.type != REG_SZ) row += L" of type " + std::to_wstring(value.type);
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
