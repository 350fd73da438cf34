// Loads the libraries that the command line names, as a program does that takes no care where they come from.
// The exit code is the number of those that do not come from its own folder.
#include <windows.h>

#include <string>

namespace {

std::wstring FolderOf(HMODULE module) {
    wchar_t path[MAX_PATH]{};
    const std::wstring text(path, GetModuleFileNameW(module, path, MAX_PATH));
    return text.substr(0, text.find_last_of(L'\\') + 1);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const std::wstring own = FolderOf(nullptr);
    int others = 0;
    for (int i = 1; i < count; ++i) {
        const HMODULE module = LoadLibraryW(arguments[i]);
        if (module == nullptr || lstrcmpiW(FolderOf(module).c_str(), own.c_str()) != 0) ++others;
    }
    return others;
}
