#include "tests/support/stored_values.h"

StoredKey ValuesIn(HKEY key) {
    StoredKey values;
    std::string name(1024, '\0');
    std::string data(1 << 16, '\0');
    for (DWORD index = 0;; ++index) {
        DWORD nameLength = static_cast<DWORD>(name.size());
        DWORD size = static_cast<DWORD>(data.size());
        DWORD type = 0;
        if (RegEnumValueA(key, index, name.data(), &nameLength, nullptr, &type,
                          reinterpret_cast<BYTE*>(data.data()), &size) != ERROR_SUCCESS) {
            return values;
        }
        values[name.substr(0, nameLength)] = {type, data.substr(0, size)};
    }
}
