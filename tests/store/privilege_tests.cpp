// How a privilege of the process is enabled.
#include <doctest.h>

#include <string>
#include <vector>

#include "store/registry.h"
#include "tests/support/import_patch.h"

namespace {

bool IsOpen(HANDLE handle) {
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != FALSE;
}

// Writes down the calls for the process token, and fails one of them.
struct Token {
    explicit Token(const std::string& failing = {}) : fails(failing) { s_current = this; }
    Token(const Token&) = delete;
    Token& operator=(const Token&) = delete;
    ~Token() {
        if (IsOpen(token)) CloseHandle(token);
    }

    const std::string fails;
    std::vector<std::string> calls;
    HANDLE token = nullptr;
    LUID found{};

private:
    // Whether the call is to be made.
    static bool Note(const std::string& call) {
        s_current->calls.push_back(call);
        return s_current->fails.empty() || !call.starts_with(s_current->fails);
    }
    static BOOL WINAPI Open(HANDLE process, DWORD access, PHANDLE token) {
        CHECK(process == GetCurrentProcess());
        return Note("open " + std::to_string(access)) &&
               s_current->m_open.Original<decltype(&OpenProcessToken)>()(process, access,
                                                                         &s_current->token) &&
               (*token = s_current->token) != nullptr;
    }
    static BOOL WINAPI Lookup(LPCSTR system, LPCSTR privilege, PLUID luid) {
        const auto original = s_current->m_lookup.Original<decltype(&LookupPrivilegeValueA)>();
        const bool isFound =
            Note("look up " + std::string(privilege) + " on " + (system == nullptr ? "null" : system)) &&
            original(nullptr, privilege, luid);
        s_current->found = *luid;
        return isFound;
    }
    static BOOL WINAPI Adjust(HANDLE token, BOOL disableAll, PTOKEN_PRIVILEGES privileges, DWORD,
                              PTOKEN_PRIVILEGES, PDWORD) {
        CHECK(token == s_current->token);
        const LUID_AND_ATTRIBUTES& asked = privileges->Privileges[0];
        CHECK(asked.Luid.LowPart == s_current->found.LowPart);
        CHECK(asked.Luid.HighPart == s_current->found.HighPart);
        return Note("adjust " + std::to_string(disableAll) + ", " +
                    std::to_string(privileges->PrivilegeCount) + " to " + std::to_string(asked.Attributes));
    }

    static inline Token* s_current = nullptr;
    const ImportPatch m_open{"advapi32.dll", "OpenProcessToken", &Open};
    const ImportPatch m_lookup{"advapi32.dll", "LookupPrivilegeValueA", &Lookup};
    const ImportPatch m_adjust{"advapi32.dll", "AdjustTokenPrivileges", &Adjust};
};

const std::vector<std::string> kCalls{"open 40", "look up SeBackupPrivilege on 0", "adjust 0, 1 to 2"};

}  // namespace

TEST_CASE("a privilege is enabled whatever the caller asks for, and the token stays open") {
    for (const bool set : {true, false}) {
        CAPTURE(set);
        const Token seen;
        CHECK(Registry().AdjustPrivilege(kBackupPrivilege, set));
        CHECK(seen.calls == kCalls);
        CHECK(IsOpen(seen.token));
    }
}

TEST_CASE("a step that fails ends the enabling of a privilege, gives false and leaves the token open") {
    long made = 0;
    for (const char* const fails : {"open", "look up", "adjust"}) {
        const Token seen(fails);
        CHECK_FALSE(Registry().AdjustPrivilege(kBackupPrivilege, true));
        CHECK(seen.calls == std::vector<std::string>(kCalls.begin(), kCalls.begin() + ++made));
        CHECK(IsOpen(seen.token) == (made > 1));
    }
    const Token seen;
    CHECK_FALSE(Registry().AdjustPrivilege(L"SeNoSuchPrivilege", true));
    CHECK(seen.calls.size() == 2);
}
