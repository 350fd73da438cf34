// Stands before the registry functions of this program: writes calls down, fails those that a test wants to
// fail, and is a registry in memory where a test runs tens of thousands of times.
#pragma once

#include <windows.h>

#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

enum class RegistryFunction { Open, Query, Info, Create, Set, DeleteValue, DeleteKey, Close };

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

// The keys of the program.
inline constexpr char kSettings[] = "HKCU\\Software\\Calvane\\Settings";
inline constexpr char kExclude[] = "HKCU\\Software\\Calvane\\Exclude";
inline constexpr char kBanners[] = "HKCU\\Software\\Calvane\\Banners";
inline constexpr char kSearch[] = "HKCU\\Software\\Calvane\\Search";
inline constexpr char kRun[] = "HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Run";

// A value that is text.
inline StoredValue Text(const std::string& bytes) {
    return {REG_SZ, bytes};
}

// Which calls fail, and how: the first one counted from 1, of one function or of all; that one alone, or all
// from there on. No call fails where first is 0.
struct Fault {
    std::optional<RegistryFunction> function;
    long first = 0;
    bool isLasting = false;
    LSTATUS error = ERROR_ACCESS_DENIED;
};

// One at a time. Of the system's registry only the calls of a watched body are counted and failed; of the one
// in memory, all of the program.
class RegistryCalls {
public:
    enum class Of { System, Memory };
    explicit RegistryCalls(Of registry = Of::System);
    ~RegistryCalls();

    RegistryContents contents;  // of the registry in memory

    // From now on, and again in each watched body, counting from 0.
    void Fail(const Fault& fault) {
        m_fault = fault;
        m_counted = 0;
    }

    // Runs before each call that does not fail, with the name of the key or value. What it calls itself is
    // neither watched nor failed.
    std::function<void(RegistryFunction function, const std::string& name)> beforeCall;

    // Runs the body and returns its calls: the function and its arguments. Those are HKCU, HKLM, or key1,
    // key2 and so on for the handles in the order in which the body got them ("?" for one that it did not),
    // texts in quotes, bytes that are no visible character as \xx, and of an output what it holds before the
    // call: RegQueryValueExA(key1, "Value", type 0, 3 NULs, 3).
    std::vector<std::string> Watch(const std::function<void()>& body);

    // The calls of the last body, also of one that threw; how many of one function.
    std::vector<std::string> Lines() const;
    size_t Count(RegistryFunction function) const;

    // What the last body read, wrote and deleted, the key by its last part: "read Settings\name",
    // "write Settings\name=data", "delete Settings\name"; "(missing)" behind what was not there. A key that
    // is given a class adds a line of its own, a type that is no text ends the line of its value.
    std::vector<std::string> Values() const;

    // Handles that the last body got and did not close.
    std::vector<std::string> OpenHandles() const;

    // The program leaves some open by design; in a long run they would add up.
    void ForgetOpenHandles() noexcept { m_open.clear(); }

    // Calls with a handle that was never handed out, or was closed, of the registry in memory.
    long strayHandles = 0;

private:
    struct Call {
        RegistryFunction function;
        std::string key;
        std::string name;
        std::string arguments;
        std::string data;
        LSTATUS result;
    };
    struct Opened {
        size_t number;
        std::string path;
    };

    // Stand before the functions: each describes its arguments and does in memory what the system does.
    struct Fakes;

    // Counts a call and says whether it fails.
    bool Fails(RegistryFunction function);
    bool IsWatching() const { return !m_isAside && (m_isMemory || m_isRecording); }
    // Makes a call: describe returns the rest of its line, behind key and name; inMemory or original does it.
    template <class Describe, class InMemory, class Original>
    LSTATUS Pass(RegistryFunction function, HKEY key, LPCSTR name, Describe describe, InMemory inMemory,
                 Original original);
    LSTATUS HandOut(LSTATUS result, HKEY root, LPCSTR path, PHKEY key);
    // What the body does with what an open key holds in memory.
    template <class Body>
    LSTATUS InKey(HKEY key, Body body);
    std::string NameOf(HKEY key) const;
    std::string PathOf(HKEY root, LPCSTR path);

    const bool m_isMemory;
    bool m_isRecording = false;
    bool m_isAside = false;
    Fault m_fault;
    long m_counted = 0;  // of the calls that may fail
    std::vector<Call> m_calls;
    std::map<HKEY, Opened> m_open;
    size_t m_handedOut = 0;
    size_t m_before = 0;  // handed out before the body
    const std::unique_ptr<Fakes> m_fakes;
};
