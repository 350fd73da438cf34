// A registry in memory in place of the system's: fast enough for tens of thousands of runs, and able to fail.
#pragma once

#include <windows.h>

#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/import_patch.h"

enum class RegistryCall { Open, Query, Info, Create, Set, DeleteValue, Close };
inline constexpr RegistryCall kRegistryCalls[] = {
    RegistryCall::Open, RegistryCall::Query,       RegistryCall::Info, RegistryCall::Create,
    RegistryCall::Set,  RegistryCall::DeleteValue, RegistryCall::Close};

// The registry compares names without regard to case. Those of the tests are plain ASCII, and compared too
// often to ask the system each time.
struct LessNoCase {
    bool operator()(const std::string& left, const std::string& right) const noexcept {
        return _stricmp(left.c_str(), right.c_str()) < 0;
    }
};

struct StoredValue {
    DWORD type = REG_SZ;
    std::string bytes;
    bool operator==(const StoredValue&) const = default;
};
using StoredKey = std::map<std::string, StoredValue, LessNoCase>;

// Keys by their paths, which begin with "HKCU" or "HKLM".
using RegistryContents = std::map<std::string, StoredKey, LessNoCase>;

// Which calls fail, and how: the first one counted from 1, of one function or of all; that one alone, or all
// from there on. No call fails where first is 0.
struct Fault {
    std::optional<RegistryCall> function;
    long first = 0;
    bool isLasting = false;
    LSTATUS error = ERROR_ACCESS_DENIED;
};

class FaultCounter {
public:
    explicit FaultCounter(const Fault& fault = {}) : m_fault(fault) {}

    // Counts the call and says whether it fails.
    bool Fails(RegistryCall function);

    long Calls() const noexcept { return m_calls; }
    bool Happened() const noexcept { return m_happened; }
    LSTATUS Error() const noexcept { return m_fault.error; }

private:
    Fault m_fault;
    long m_calls = 0;    // of all functions
    long m_counted = 0;  // of those that the fault counts
    bool m_happened = false;
};

// One at a time. While it exists, the registry functions of this program reach it and not the system.
class MemoryRegistry {
public:
    // isReal: the calls are counted and failed, but carried out by the system.
    explicit MemoryRegistry(bool isReal = false);
    MemoryRegistry(const MemoryRegistry&) = delete;
    MemoryRegistry& operator=(const MemoryRegistry&) = delete;
    ~MemoryRegistry();

    RegistryContents contents;

    // From now on, counting from 0.
    void Fail(const Fault& fault) { m_counter = FaultCounter(fault); }
    const FaultCounter& Counter() const noexcept { return m_counter; }

    // Runs before each call that does not fail; the name is empty for functions without one.
    std::function<void(RegistryCall function, const std::string& name)> beforeCall;

    // Calls with a handle that was never handed out, or was closed.
    long strayHandles = 0;

private:
    static LSTATUS WINAPI Open(HKEY root, LPCSTR path, DWORD options, REGSAM access, PHKEY key);
    static LSTATUS WINAPI Query(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                LPDWORD size);
    static LSTATUS WINAPI Info(HKEY key, LPSTR keyClass, LPDWORD classLength, LPDWORD reserved,
                               LPDWORD subkeys, LPDWORD maxSubkey, LPDWORD maxClass, LPDWORD values,
                               LPDWORD maxName, LPDWORD maxData, LPDWORD security, PFILETIME written);
    static LSTATUS WINAPI Create(HKEY root, LPCSTR path, DWORD reserved, LPSTR keyClass, DWORD options,
                                 REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY key,
                                 LPDWORD disposition);
    static LSTATUS WINAPI Set(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                              DWORD size);
    static LSTATUS WINAPI DeleteValue(HKEY key, LPCSTR name);
    static LSTATUS WINAPI Close(HKEY key);

    LSTATUS Enter(RegistryCall function, LPCSTR name);
    std::string PathOf(HKEY root, LPCSTR path);
    StoredKey* Find(HKEY key);
    HKEY HandOut(const std::string& path);

    template <class Function>
    Function* Original(RegistryCall function) const {
        return m_patches[static_cast<size_t>(function)]->Original<Function*>();
    }

    static MemoryRegistry* s_current;
    const bool m_isReal;
    FaultCounter m_counter;
    std::map<HKEY, std::string> m_open;
    ULONG_PTR m_lastHandle = 0x1000;
    std::vector<std::unique_ptr<ImportPatch>> m_patches;
};
