// How a privilege of the process is enabled.
#include <doctest.h>

#include "store/registry.h"
#include "tests/support/import_patch.h"

namespace {

bool IsOpen(HANDLE handle) {
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != FALSE;
}

// Sees the calls for the process token, and fails one of them.
struct Token {
    enum class Step { None, Open, Lookup, Adjust };

    Token() { s_current = this; }
    Token(const Token&) = delete;
    Token& operator=(const Token&) = delete;
    ~Token() {
        if (IsOpen(token)) CloseHandle(token);
    }

    Step fails = Step::None;
    std::string calls;  // a letter each
    HANDLE process = nullptr;
    DWORD access = 0;
    HANDLE token = nullptr;
    std::string system;
    std::string privilege;
    LUID found{};
    HANDLE adjustedToken = nullptr;
    BOOL disableAll = TRUE;
    TOKEN_PRIVILEGES asked{};

private:
    static BOOL WINAPI Open(HANDLE process, DWORD access, PHANDLE token) {
        Token& self = *s_current;
        self.calls += 'o';
        self.process = process;
        self.access = access;
        if (self.fails == Step::Open) return FALSE;
        const BOOL result = self.m_open.Original<decltype(&OpenProcessToken)>()(process, access, token);
        self.token = *token;
        return result;
    }
    static BOOL WINAPI Lookup(LPCSTR system, LPCSTR privilege, PLUID luid) {
        Token& self = *s_current;
        self.calls += 'l';
        self.system = system == nullptr ? "null" : system;
        self.privilege = privilege;
        if (self.fails == Step::Lookup) return FALSE;
        const BOOL result =
            self.m_lookup.Original<decltype(&LookupPrivilegeValueA)>()(nullptr, privilege, luid);
        self.found = *luid;
        return result;
    }
    static BOOL WINAPI Adjust(HANDLE token, BOOL disableAll, PTOKEN_PRIVILEGES privileges, DWORD,
                              PTOKEN_PRIVILEGES, PDWORD) {
        Token& self = *s_current;
        self.calls += 'a';
        self.adjustedToken = token;
        self.disableAll = disableAll;
        self.asked = *privileges;
        return self.fails != Step::Adjust;
    }

    static inline Token* s_current = nullptr;
    const ImportPatch m_open{"advapi32.dll", "OpenProcessToken", &Open};
    const ImportPatch m_lookup{"advapi32.dll", "LookupPrivilegeValueA", &Lookup};
    const ImportPatch m_adjust{"advapi32.dll", "AdjustTokenPrivileges", &Adjust};
};

}  // namespace

TEST_CASE("a privilege is enabled whatever the caller asks for, and the token stays open") {
    for (const bool set : {true, false}) {
        CAPTURE(set);
        const Token seen;
        CHECK(Registry().AdjustPrivilege(kBackupPrivilege, set));
        CHECK(seen.process == GetCurrentProcess());
        CHECK(seen.access == 0x28);
        CHECK(seen.system == "0");
        CHECK(seen.privilege == "SeBackupPrivilege");
        CHECK(seen.adjustedToken == seen.token);
        CHECK(seen.disableAll == FALSE);
        CHECK(seen.asked.PrivilegeCount == 1);
        CHECK(seen.asked.Privileges[0].Attributes == 2);
        CHECK(seen.asked.Privileges[0].Luid.LowPart == seen.found.LowPart);
        CHECK(seen.asked.Privileges[0].Luid.HighPart == seen.found.HighPart);
        CHECK(IsOpen(seen.token));
    }
}

TEST_CASE("a step that fails ends the enabling of a privilege, gives false and leaves the token open") {
    struct Row {
        Token::Step fails;
        const char* calls;
    };
    for (const Row& row :
         {Row{Token::Step::Open, "o"}, Row{Token::Step::Lookup, "ol"}, Row{Token::Step::Adjust, "ola"}}) {
        Token seen;
        seen.fails = row.fails;
        CHECK_FALSE(Registry().AdjustPrivilege(kBackupPrivilege, true));
        CHECK(seen.calls == row.calls);
        CHECK(IsOpen(seen.token) == (row.fails != Token::Step::Open));
    }
    const Token seen;
    CHECK_FALSE(Registry().AdjustPrivilege(L"SeNoSuchPrivilege", true));
    CHECK(seen.calls == "ol");
}
