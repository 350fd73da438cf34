// Writes down every registry call of this program, in words, and fails those that a test wants to fail.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/import_patch.h"

// One at a time. A line is the function and its arguments: HKCU, HKLM, or key1, key2 ... for the handles in
// the order in which they were handed out ("?" for one that was not), texts in quotes, bytes that are no
// visible character as \xx:
//   RegOpenKeyExA(HKCU, "Software", 0, 0x19)
//   RegQueryValueExA(key1, "Value", type 0, 3 NULs, 3)            what the type, the buffer and the size hold
//   before RegQueryInfoKeyA(key1, 512 NULs, 511)                         what the class buffer and its length
//   hold before RegCreateKeyExA(HKCU, "Software", 0, "class", 0, 0x2, {50, no descriptor, inherited})
//   RegSetValueExA(key1, "Value", 0, type 1, "abc", no NUL behind)
//   RegDeleteValueA(key1, "Value")   RegDeleteKeyA(HKCU, "Software")   RegCloseKey(key1)
class RegistryWatch {
public:
    RegistryWatch();
    RegistryWatch(const RegistryWatch&) = delete;
    RegistryWatch& operator=(const RegistryWatch&) = delete;
    ~RegistryWatch();

    // Runs the body, watches it and returns its lines. Calls outside of a body are not watched, nor counted,
    // nor failed.
    std::vector<std::string> Calls(const std::function<void()>& body);
    // The lines of the last body, also of one that threw.
    const std::vector<std::string>& Lines() const { return m_lines; }
    std::vector<std::string> LinesOf(const std::string& function) const;

    // From the nth call of the function in a body on (or that call alone), error is returned in place of the
    // call.
    void FailFrom(const std::string& function, int nth, LSTATUS error);
    void FailOnce(const std::string& function, int nth, LSTATUS error);
    void FailNothing() { m_failures.clear(); }

    // Runs before each watched call that is not failed; what it does itself is not watched. It may throw.
    std::function<void(const std::string& line)> beforeCall;

    HKEY Handle(const std::string& name) const { return m_handles.at(name); }
    // Handles that were handed out and never closed.
    std::vector<std::string> OpenHandles() const;

    // For the replaced functions: writes the line down, and says whether and how the call is to fail.
    LSTATUS Enter(const std::string& function, const std::string& arguments);
    void HandOut(HKEY key);
    std::string NameOf(HKEY key) const;
    void Closed(HKEY key);
    bool IsWatching() const { return m_isWatching; }

    template <class Pointer>
    Pointer Original(const std::string& function) const {
        return m_patches.at(function)->Original<Pointer>();
    }

    static RegistryWatch* s_current;

private:
    struct Failure {
        int first;
        int last;
        LSTATUS error;
    };

    template <class Function>
    void Patch(const char* function, Function* replacement);

    std::map<std::string, std::unique_ptr<ImportPatch>> m_patches;
    std::map<std::string, Failure> m_failures;
    std::map<std::string, int> m_counts;
    std::map<std::string, HKEY> m_handles;
    std::map<std::string, bool> m_closed;
    std::vector<std::string> m_lines;
    bool m_isWatching = false;
};

// "abc\00" in quotes, for lines.
std::string Quoted(const std::string& bytes);
