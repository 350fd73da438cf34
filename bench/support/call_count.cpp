#include "bench/support/call_count.h"

namespace {

size_t g_calls = 0;

// Counts a call and passes it on.
template <auto Function>
struct Counted;

template <class... Arguments, LSTATUS(WINAPI* Function)(Arguments...)>
struct Counted<Function> {
    static inline LSTATUS(WINAPI* original)(Arguments...) = nullptr;
    static LSTATUS WINAPI Call(Arguments... arguments) {
        ++g_calls;
        return original(arguments...);
    }
};

template <auto Function>
std::unique_ptr<ImportPatch> Count(const char* name) {
    auto patch = std::make_unique<ImportPatch>("advapi32.dll", name, &Counted<Function>::Call);
    Counted<Function>::original = patch->template Original<decltype(Function)>();
    return patch;
}

}  // namespace

CallCount::CallCount() {
    g_calls = 0;
    m_patches.push_back(::Count<&RegOpenKeyExA>("RegOpenKeyExA"));
    m_patches.push_back(::Count<&RegQueryValueExA>("RegQueryValueExA"));
    m_patches.push_back(::Count<&RegQueryInfoKeyA>("RegQueryInfoKeyA"));
    m_patches.push_back(::Count<&RegCreateKeyExA>("RegCreateKeyExA"));
    m_patches.push_back(::Count<&RegSetValueExA>("RegSetValueExA"));
    m_patches.push_back(::Count<&RegDeleteValueA>("RegDeleteValueA"));
    m_patches.push_back(::Count<&RegCloseKey>("RegCloseKey"));
}

CallCount::~CallCount() = default;

size_t CallCount::Count() const {
    return g_calls;
}

void CallCount::Stop() const {
    m_patches.clear();
}
