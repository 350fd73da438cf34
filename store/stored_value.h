// One value under HKEY_CURRENT_USER, where all settings of a user are kept as text.
#pragma once

#include <string>

#include "platform/com/variant.h"
#include "store/registry.h"

// True when the value is there; value is then its content. A missing or empty one leaves value unchanged.
// Throws AutomationError for a number that is too short for its type.
bool ReadValue(const Registry& registry, const wchar_t* key, const std::wstring& name, Variant& value);

// The text of the value, which may be empty; missing when it is not there.
std::wstring ReadText(const Registry& registry, const wchar_t* key, const std::wstring& name,
                      const wchar_t* missing);

// Writes the text of value. What the registry refuses is passed over.
void WriteValue(const Registry& registry, const wchar_t* key, const std::wstring& name, const Variant& value);
