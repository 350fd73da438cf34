#include "store/registry.h"

#include <algorithm>
#include <cstdint>
#include <optional>

#include "platform/automation_error.h"
#include "platform/handle.h"
#include "platform/text.h"
#include "store/byte_order.h"

namespace {

constexpr REGSAM kReadAccess = KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS | KEY_NOTIFY;
constexpr REGSAM kWriteAccess = KEY_SET_VALUE;

// The longest class that a read returns, and the buffer with a NUL at its end.
constexpr DWORD kClassLength = 511;
constexpr size_t kClassBuffer = 512;

// Longer than the record, which Windows does not mind.
constexpr DWORD kSecurityAttributesLength = 50;

// RegSetValueExA looks at the byte behind the counted data of the string types: when it is a NUL, the system
// takes it for a terminator that the caller forgot to count, and stores it. A byte that is no NUL keeps the
// data as counted.
constexpr char kUncounted = '\x01';

long LongOf(std::optional<uint32_t> number) {
    if (!number) RaiseError(ErrorNumber::InvalidProcedureCall);
    return static_cast<long>(*number);
}

}  // namespace

bool Registry::Read(HKEY hKey, const std::wstring& ItemKey, const std::wstring& ValueKey, Variant& sValue,
                    long& sValueType, std::wstring& sClass) const {
    const std::string valueName = ToAnsi(ValueKey);
    HKEY key = nullptr;
    if (RegOpenKeyExA(hKey, ToAnsi(ItemKey).c_str(), 0, kReadAccess, &key) != ERROR_SUCCESS) return false;

    // A buffer of no length makes the query a mere probe: it fails, and tells the size all the same.
    DWORD type = 0;
    DWORD size = 0;
    BYTE noBuffer = 0;
    RegQueryValueExA(key, valueName.c_str(), nullptr, &type, &noBuffer, &size);

    char keyClass[kClassBuffer] = {};
    DWORD classLength = kClassLength;
    RegQueryInfoKeyA(key, keyClass, &classLength, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                     nullptr, nullptr, nullptr);
    sClass = FromAnsi({keyClass, std::min<size_t>(classLength, kClassBuffer)});

    // A query for a missing value does not touch the type: what the probe saw must not be taken for its type.
    type = 0;
    std::string data(size, '\0');
    const bool isRead = RegQueryValueExA(key, valueName.c_str(), nullptr, &type,
                                         reinterpret_cast<BYTE*>(data.data()), &size) == ERROR_SUCCESS;
    sValueType = static_cast<long>(type);
    if (isRead) {
        data.resize(std::min<size_t>(size, data.size()));
        RegCloseKey(key);
    }
    // The root belongs to the read and is closed with it; a predefined one stays usable. The subkey of a
    // query that failed is left open by design, until the process ends.
    RegCloseKey(hKey);

    if (isRead && !data.empty()) DecodeValue(data, sValueType, sValue);
    return isRead;
}

bool Registry::Save(HKEY hKey, const std::wstring& ItemKey, const std::wstring& lpClass,
                    const std::wstring& ValueKey, const Variant& sValue, long sValueType) const {
    SECURITY_ATTRIBUTES security{kSecurityAttributesLength, nullptr, TRUE};
    std::string keyClass = ToAnsi(lpClass);
    // Never closed by design: keys once written stay open until the process ends.
    HKEY key = nullptr;
    if (RegCreateKeyExA(hKey, ToAnsi(ItemKey).c_str(), 0, keyClass.data(), REG_OPTION_NON_VOLATILE,
                        kWriteAccess, &security, &key, nullptr) != ERROR_SUCCESS) {
        return false;
    }
    const std::string data = EncodeValue(sValue, sValueType);
    return RegSetValueExA(key, ToAnsi(ValueKey).c_str(), 0, static_cast<DWORD>(sValueType),
                          reinterpret_cast<const BYTE*>(data.data()),
                          static_cast<DWORD>(data.size() - 1)) == ERROR_SUCCESS;
}

bool Registry::Delete(HKEY hKey, const std::wstring& ItemKey, const std::wstring& ValueName) const {
    if (ItemKey.empty()) return false;
    const std::string path = ToAnsi(ItemKey);
    if (ValueName.empty()) return RegDeleteKeyA(hKey, path.c_str()) == ERROR_SUCCESS;

    RegistryKey key;
    if (RegOpenKeyExA(hKey, path.c_str(), 0, kWriteAccess, key.Put()) != ERROR_SUCCESS) return false;
    return RegDeleteValueA(key.Get(), ToAnsi(ValueName).c_str()) == ERROR_SUCCESS;
}

std::string Registry::EncodeValue(const Variant& sValue, long sValueType) const {
    std::string data;
    switch (sValueType) {
        case REG_DWORD:
            data = MKLLittleEndian(ToLong(sValue));
            break;
        case REG_DWORD_BIG_ENDIAN:
            data = MKLBigEndian(ToLong(sValue));
            break;
        default:
            data = ToAnsi(ToText(sValue));
            break;
    }
    data.push_back(kUncounted);
    return data;
}

// Numbers are taken from the bytes themselves: a code page of several bytes a character would not keep them
// all.
void Registry::DecodeValue(const std::string& data, long sValueType, Variant& sValue) const {
    switch (sValueType) {
        case REG_BINARY:
        case REG_MULTI_SZ:
            sValue = FromAnsi(data);
            break;
        case REG_DWORD:
            sValue = CVLLittleEndian(data);
            break;
        case REG_DWORD_BIG_ENDIAN:
            sValue = CVLBigEndian(data);
            break;
        default:
            sValue = ASCIIZ(FromAnsi(data));
            break;
    }
}

double Registry::UnsignedLong(long l) const {
    return static_cast<double>(static_cast<uint32_t>(l));
}

std::string Registry::MKLLittleEndian(long l) const {
    return BytesLowestFirst(static_cast<uint32_t>(l));
}

std::string Registry::MKLBigEndian(long l) const {
    return BytesHighestFirst(static_cast<uint32_t>(l));
}

long Registry::CVLLittleEndian(const std::string& bytes) const {
    return LongOf(NumberLowestFirst(bytes));
}

long Registry::CVLBigEndian(const std::string& bytes) const {
    return LongOf(NumberHighestFirst(bytes));
}

Variant Registry::ASCIIZ(std::wstring_view x) const {
    return UpToNul(x);
}

bool Registry::AdjustPrivilege(std::wstring_view pPriv, bool /*bSet*/) const {
    // Never closed by design: the token stays open until the process ends.
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &token)) return false;
    TOKEN_PRIVILEGES privileges{1, {{{}, SE_PRIVILEGE_ENABLED}}};
    if (!LookupPrivilegeValueA("0", ToAnsi(pPriv).c_str(), &privileges.Privileges[0].Luid)) return false;
    return AdjustTokenPrivileges(token, FALSE, &privileges, sizeof(privileges), nullptr, nullptr) != FALSE;
}
