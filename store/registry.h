// Reads, writes and deletes values of the registry. Callers have them as variants; they are stored as ANSI
// text or numbers.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "platform/com/variant.h"

// The privilege that reads any key, whatever its permissions: for AdjustPrivilege.
inline constexpr wchar_t kBackupPrivilege[] = L"SeBackupPrivilege";

// Holds no state. No registry failure is raised: it becomes the result false. Text is converted to the ANSI
// code page on its way in and back on its way out; byte strings are std::string.
//
// How a value type is written and read back:
// - REG_DWORD, REG_DWORD_BIG_ENDIAN: four bytes of the value as a 32-bit integer, lowest or highest first; a
//   long.
// - REG_BINARY, REG_MULTI_SZ: the value's text, a byte for each ANSI character; all of it as text, NULs kept.
// - REG_SZ and any other: the value's text without a NUL at its end; text up to the first NUL.
class Registry {
public:
    // False when the key cannot be opened: nothing is changed, hKey stays open. False when the value cannot
    // be read: sValue is unchanged, sValueType is what the failed query left, 0 for a missing value. True
    // otherwise; an empty value leaves sValue unchanged too, so that a caller's default holds. sClass
    // receives the key's class. Once the key is open, hKey is closed at the end: pass a predefined root,
    // which that leaves as it is.
    bool Read(HKEY hKey, const std::wstring& ItemKey, const std::wstring& ValueKey, Variant& sValue,
              long& sValueType, std::wstring& sClass) const;

    // Creates the key, of the class lpClass, where it is missing. Throws AutomationError when sValue has no
    // form of the type asked for: 13 for what is no number, 6 for a number beyond 32 bits; the key exists by
    // then. Each call leaves one key handle open until the process ends.
    bool Save(HKEY hKey, const std::wstring& ItemKey, const std::wstring& lpClass,
              const std::wstring& ValueKey, const Variant& sValue, long sValueType) const;

    // Deletes the value; with an empty ValueName the key itself, if it has no subkeys. An empty ItemKey
    // deletes nothing.
    bool Delete(HKEY hKey, const std::wstring& ItemKey, const std::wstring& ValueName) const;

    // l read as an unsigned number.
    double UnsignedLong(long l) const;

    // The four bytes of l, the lowest or the highest first.
    std::string MKLLittleEndian(long l) const;
    std::string MKLBigEndian(long l) const;

    // The first four bytes as a number. Throws AutomationError 5 when there are fewer.
    long CVLLittleEndian(const std::string& bytes) const;
    long CVLBigEndian(const std::string& bytes) const;

    // x up to its first NUL, as text.
    Variant ASCIIZ(std::wstring_view x) const;

    // Enables a privilege of the process, whatever bSet says; true when the system took the request. Leaves
    // the process token open until the process ends.
    bool AdjustPrivilege(std::wstring_view pPriv, bool bSet) const;

private:
    // The bytes to store and one more behind them, which is not to be counted.
    std::string EncodeValue(const Variant& sValue, long sValueType) const;
    void DecodeValue(const std::string& data, long sValueType, Variant& sValue) const;
};
