// Libraries of the system that the program asks for when it needs them instead of being linked to them: those
// that some systems lack, and those that Windows would look for beside the program before its first
// instruction.
#pragma once

#include <windows.h>

// Loads a library from the system's own folder and from nowhere else; it then stays loaded. Null where there
// is none.
HMODULE LoadSystemLibrary(const wchar_t* name);

// A library's function by its exported name; null where the library, or the function, is not there.
template <class Function>
Function* FunctionOf(HMODULE library, const char* name) {
    if (library == nullptr) return nullptr;
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}
