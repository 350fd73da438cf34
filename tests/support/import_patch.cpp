#include "tests/support/import_patch.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace {

void Write(void** slot, void* value) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof(void*), PAGE_READWRITE, &protection);
    *slot = value;
    VirtualProtect(slot, sizeof(void*), protection, &protection);
}

void** FindSlot(const char* module, const char* function) {
    auto* const base = reinterpret_cast<BYTE*>(GetModuleHandleW(nullptr));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const DWORD imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports); entry->Name != 0;
         ++entry) {
        if (lstrcmpiA(reinterpret_cast<const char*>(base + entry->Name), module) != 0) continue;
        auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + entry->OriginalFirstThunk);
        auto* slot = reinterpret_cast<IMAGE_THUNK_DATA*>(base + entry->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
            const auto* const byName =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(byName->Name), function) == 0) {
                return reinterpret_cast<void**>(&slot->u1.Function);
            }
        }
    }
    return nullptr;
}

}  // namespace

ImportPatch::ImportPatch(const char* module, const char* function, void* replacement, int)
    : m_slot(FindSlot(module, function)) {
    if (m_slot == nullptr) throw std::runtime_error(std::string("not imported: ") + module + " " + function);
    m_original = *m_slot;
    Write(m_slot, replacement);
}

ImportPatch::~ImportPatch() {
    Write(m_slot, m_original);
}
