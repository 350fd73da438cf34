#include "store/stored_value.h"

#include "store/settings_schema.h"

bool ReadValue(const Registry& registry, const wchar_t* key, const std::wstring& name, Variant& value) {
    long type = 0;
    std::wstring keyClass;
    return registry.Read(HKEY_CURRENT_USER, key, name, value, type, keyClass);
}

std::wstring ReadText(const Registry& registry, const wchar_t* key, const std::wstring& name,
                      const wchar_t* missing) {
    Variant value(L"");
    return ReadValue(registry, key, name, value) ? ToText(value) : missing;
}

void WriteValue(const Registry& registry, const wchar_t* key, const std::wstring& name,
                const Variant& value) {
    registry.Save(HKEY_CURRENT_USER, key, L"", name, value, Schema::kTextType);
}
