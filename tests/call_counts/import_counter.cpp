#include "tests/call_counts/import_counter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace {

// inc dword [counter]; jmp dword [original]
constexpr size_t kThunkSize = 12;

constexpr std::array kFileFunctions{"CloseHandle",
                                    "CopyFileW",
                                    "CreateDirectoryW",
                                    "CreateFileA",
                                    "CreateFileMappingW",
                                    "CreateFileW",
                                    "DeleteFileA",
                                    "DeleteFileW",
                                    "FindFirstFileA",
                                    "FindFirstFileW",
                                    "FlushFileBuffers",
                                    "GetFileSize",
                                    "GetFileSizeEx",
                                    "GetFileAttributesA",
                                    "GetFileAttributesExW",
                                    "GetFileType",
                                    "LockFile",
                                    "LockFileEx",
                                    "GetFileAttributesW",
                                    "MoveFileExW",
                                    "MoveFileW",
                                    "MapViewOfFile",
                                    "ReadFile",
                                    "SetEndOfFile",
                                    "SetFilePointer",
                                    "SetFilePointerEx",
                                    "SetFileTime",
                                    "UnlockFile",
                                    "SetFileInformationByHandle",
                                    "WriteFile"};

constexpr std::array kTimerFunctions{"SetTimer", "KillTimer", "timeSetEvent", "CreateWaitableTimerW",
                                     "CreateTimerQueueTimer"};

template <size_t size>
bool IsAmong(const std::array<const char*, size>& names, const std::string& name) {
    return std::any_of(names.begin(), names.end(), [&](const char* other) { return name == other; });
}

void Write(void** slot, void* value) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof(void*), PAGE_READWRITE, &protection);
    *slot = value;
    VirtualProtect(slot, sizeof(void*), protection, &protection);
}

}  // namespace

ImportCounter::ImportCounter() {
    auto* const base = reinterpret_cast<BYTE*>(GetModuleHandleW(nullptr));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const DWORD imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports); entry->Name != 0;
         ++entry) {
        const char* const library = reinterpret_cast<const char*>(base + entry->Name);
        // The C library exports variables too.
        if (lstrcmpiA(library, "msvcrt.dll") == 0) continue;
        auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + entry->OriginalFirstThunk);
        auto* slot = reinterpret_cast<IMAGE_THUNK_DATA*>(base + entry->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            const std::string function =
                IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)
                    ? "#" + std::to_string(IMAGE_ORDINAL(name->u1.Ordinal))
                    : reinterpret_cast<const char*>(
                          reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData)->Name);
            auto* const address = reinterpret_cast<void**>(&slot->u1.Function);
            m_imports.push_back({library, function, address, *address});
        }
    }

    m_counts.resize(m_imports.size());
    m_thunks = static_cast<BYTE*>(VirtualAlloc(nullptr, m_imports.size() * kThunkSize,
                                               MEM_RESERVE | MEM_COMMIT, PAGE_EXECUTE_READWRITE));
    for (size_t i = 0; i < m_imports.size(); ++i) {
        BYTE* const thunk = m_thunks + i * kThunkSize;
        const void* const counter = &m_counts[i];
        const void* const original = &m_imports[i].original;
        thunk[0] = 0xFF;
        thunk[1] = 0x05;
        std::memcpy(thunk + 2, &counter, 4);
        thunk[6] = 0xFF;
        thunk[7] = 0x25;
        std::memcpy(thunk + 8, &original, 4);
    }
    // Not before all are made: their making calls Windows.
    for (size_t i = 0; i < m_imports.size(); ++i)
        Write(m_imports[i].slot, m_thunks + i * kThunkSize);
}

ImportCounter::~ImportCounter() {
    for (const Import& import : m_imports)
        Write(import.slot, import.original);
    VirtualFree(m_thunks, 0, MEM_RELEASE);
}

void ImportCounter::Count(const std::function<void()>& body) {
    const std::vector<int> before = m_counts;
    body();
    m_last = m_counts;
    for (size_t i = 0; i < m_last.size(); ++i)
        m_last[i] -= before[i];
}

CallCounts ImportCounter::Where(const std::function<bool(const Import&)>& isWanted) const {
    CallCounts counts;
    for (size_t i = 0; i < m_imports.size(); ++i) {
        if (m_last[i] != 0 && isWanted(m_imports[i])) counts[m_imports[i].function] += m_last[i];
    }
    return counts;
}

CallCounts ImportCounter::All() const {
    return Where([](const Import&) { return true; });
}

CallCounts ImportCounter::Registry() const {
    return Where([](const Import& import) {
        return lstrcmpiA(import.module.c_str(), "advapi32.dll") == 0 && import.function.starts_with("Reg");
    });
}

CallCounts ImportCounter::Files() const {
    return Where([](const Import& import) { return IsAmong(kFileFunctions, import.function); });
}

CallCounts ImportCounter::Shell() const {
    return Where([](const Import& import) { return lstrcmpiA(import.module.c_str(), "shell32.dll") == 0; });
}

CallCounts ImportCounter::Timers() const {
    return Where([](const Import& import) { return IsAmong(kTimerFunctions, import.function); });
}
