#include "tests/support/import_patch.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace {

void WriteSlot(void** slot, void* value) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof(void*), PAGE_READWRITE, &protection);
    *slot = value;
    VirtualProtect(slot, sizeof(void*), protection, &protection);
}

}  // namespace

bool FindImport(HMODULE importer,
                const std::function<bool(const char* module, const char* function, void** slot)>& visit) {
    auto* const base = reinterpret_cast<BYTE*>(importer);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const DWORD imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports); entry->Name != 0;
         ++entry) {
        auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + entry->OriginalFirstThunk);
        auto* slot = reinterpret_cast<IMAGE_THUNK_DATA*>(base + entry->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            const auto* const byName =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
            const std::string function = IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)
                                             ? "#" + std::to_string(IMAGE_ORDINAL(name->u1.Ordinal))
                                             : reinterpret_cast<const char*>(byName->Name);
            if (visit(reinterpret_cast<const char*>(base + entry->Name), function.c_str(),
                      reinterpret_cast<void**>(&slot->u1.Function))) {
                return true;
            }
        }
    }
    return false;
}

ImportPatch::ImportPatch(const char* module, const char* function, void* replacement, int) {
    if (!FindImport(GetModuleHandleW(nullptr), [&](const char* itsModule, const char* itsName, void** slot) {
            m_slot = slot;
            return lstrcmpiA(itsModule, module) == 0 && std::strcmp(itsName, function) == 0;
        })) {
        throw std::runtime_error(std::string("not imported: ") + module + " " + function);
    }
    m_original = *m_slot;
    WriteSlot(m_slot, replacement);
}

ImportPatch::~ImportPatch() {
    WriteSlot(m_slot, m_original);
}
