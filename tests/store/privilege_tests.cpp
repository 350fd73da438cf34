// How a privilege of the process is enabled.
#include <doctest.h>

#include "store/registry.h"
#include "tests/support/import_patch.h"

namespace {

struct Seen {
    bool openFails = false;
    bool lookupFails = false;
    bool adjustFails = false;

    int opened = 0;
    HANDLE process = nullptr;
    DWORD access = 0;
    HANDLE token = nullptr;
    std::string system;
    std::string privilege;
    int lookedUp = 0;
    int adjusted = 0;
    HANDLE adjustedToken = nullptr;
    BOOL disableAll = TRUE;
    TOKEN_PRIVILEGES asked{};
    LUID found{};
};

Seen* g_seen = nullptr;
ImportPatch* g_open = nullptr;
ImportPatch* g_lookup = nullptr;
ImportPatch* g_adjust = nullptr;

BOOL WINAPI OpenToken(HANDLE process, DWORD access, PHANDLE token) {
    ++g_seen->opened;
    g_seen->process = process;
    g_seen->access = access;
    if (g_seen->openFails) return FALSE;
    const BOOL result = g_open->Original<decltype(&OpenProcessToken)>()(process, access, token);
    g_seen->token = *token;
    return result;
}

BOOL WINAPI Lookup(LPCSTR system, LPCSTR privilege, PLUID luid) {
    ++g_seen->lookedUp;
    g_seen->system = system == nullptr ? "null" : system;
    g_seen->privilege = privilege;
    if (g_seen->lookupFails) return FALSE;
    const BOOL result = g_lookup->Original<decltype(&LookupPrivilegeValueA)>()(nullptr, privilege, luid);
    g_seen->found = *luid;
    return result;
}

BOOL WINAPI Adjust(HANDLE token, BOOL disableAll, PTOKEN_PRIVILEGES privileges, DWORD size,
                   PTOKEN_PRIVILEGES previous, PDWORD needed) {
    ++g_seen->adjusted;
    g_seen->adjustedToken = token;
    g_seen->disableAll = disableAll;
    g_seen->asked = *privileges;
    if (g_seen->adjustFails) return FALSE;
    return g_adjust->Original<decltype(&AdjustTokenPrivileges)>()(token, disableAll, privileges, size,
                                                                  previous, needed);
}

class TokenWatch {
public:
    TokenWatch() {
        g_seen = &seen;
        g_open = &m_open;
        g_lookup = &m_lookup;
        g_adjust = &m_adjust;
    }
    TokenWatch(const TokenWatch&) = delete;
    TokenWatch& operator=(const TokenWatch&) = delete;
    ~TokenWatch() {
        DWORD flags = 0;
        if (GetHandleInformation(seen.token, &flags)) CloseHandle(seen.token);
    }

    Seen seen;

private:
    ImportPatch m_open{"advapi32.dll", "OpenProcessToken", &OpenToken};
    ImportPatch m_lookup{"advapi32.dll", "LookupPrivilegeValueA", &Lookup};
    ImportPatch m_adjust{"advapi32.dll", "AdjustTokenPrivileges", &Adjust};
};

bool IsOpen(HANDLE handle) {
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != FALSE;
}

}  // namespace

TEST_CASE("a privilege is enabled whatever the caller asks for, and the token stays open") {
    for (const bool set : {true, false}) {
        CAPTURE(set);
        TokenWatch watch;
        CHECK(Registry().AdjustPrivilege(kBackupPrivilege, set));
        CHECK(watch.seen.process == GetCurrentProcess());
        CHECK(watch.seen.access == 0x28);
        CHECK(watch.seen.system == "0");
        CHECK(watch.seen.privilege == "SeBackupPrivilege");
        CHECK(watch.seen.adjustedToken == watch.seen.token);
        CHECK(watch.seen.disableAll == FALSE);
        CHECK(watch.seen.asked.PrivilegeCount == 1);
        CHECK(watch.seen.asked.Privileges[0].Attributes == 2);
        CHECK(watch.seen.asked.Privileges[0].Luid.LowPart == watch.seen.found.LowPart);
        CHECK(watch.seen.asked.Privileges[0].Luid.HighPart == watch.seen.found.HighPart);
        CHECK(IsOpen(watch.seen.token));
    }
}

TEST_CASE("a privilege is not enabled when the token cannot be opened, and nothing else is tried") {
    TokenWatch watch;
    watch.seen.openFails = true;
    CHECK_FALSE(Registry().AdjustPrivilege(kBackupPrivilege, true));
    CHECK(watch.seen.opened == 1);
    CHECK(watch.seen.lookedUp == 0);
    CHECK(watch.seen.adjusted == 0);
}

TEST_CASE("a privilege that is not known is not enabled, and the token stays open") {
    TokenWatch watch;
    CHECK_FALSE(Registry().AdjustPrivilege(L"SeNoSuchPrivilege", true));
    CHECK(watch.seen.lookedUp == 1);
    CHECK(watch.seen.adjusted == 0);
    CHECK(IsOpen(watch.seen.token));

    watch.seen.lookupFails = true;
    CHECK_FALSE(Registry().AdjustPrivilege(kBackupPrivilege, true));
    CHECK(watch.seen.adjusted == 0);
}

TEST_CASE("a privilege whose enabling fails gives false, and the token stays open") {
    TokenWatch watch;
    watch.seen.adjustFails = true;
    CHECK_FALSE(Registry().AdjustPrivilege(kBackupPrivilege, true));
    CHECK(watch.seen.adjusted == 1);
    CHECK(IsOpen(watch.seen.token));
}
