// Replaces a function that this program imports, so that a test sees the exact calls or fails them.
#pragma once

#include <windows.h>

#include <functional>

// Calls visit for each function that a module imports until it returns true, and returns whether it did. A
// function without a name is "#" and its number; slot is where the module finds its address.
bool FindImport(HMODULE importer,
                const std::function<bool(const char* module, const char* function, void** slot)>& visit);

class ImportPatch {
public:
    // module: the DLL's name as imported, with extension, letter case ignored. replacement: a function of the
    // same signature and calling convention. Throws std::runtime_error when the program does not import the
    // function.
    template <class Function>
    ImportPatch(const char* module, const char* function, Function* replacement)
        : ImportPatch(module, function, reinterpret_cast<void*>(replacement), 0) {}
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;
    ~ImportPatch();

    // The function that was replaced: ImportPatch::Original<decltype(&RegCloseKey)>().
    template <class Pointer>
    Pointer Original() const {
        return reinterpret_cast<Pointer>(m_original);
    }

private:
    ImportPatch(const char* module, const char* function, void* replacement, int);

    void** m_slot = nullptr;
    void* m_original = nullptr;
};
