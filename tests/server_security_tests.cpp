// Who is admitted to the server, as COM is told.
#include <doctest.h>

#include <windows.h>
#include <objbase.h>
#include <sddl.h>

#include <string>
#include <vector>

#include "platform/com/server_security.h"
#include "platform/text.h"
#include "tests/support/import_patch.h"

namespace {

// What the server did, in its order, and what COM returns.
struct Calls {
    std::vector<std::string> order;
    HRESULT result = S_OK;

    // The arguments of CoInitializeSecurity: of the descriptor, and the plain ones.
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    std::string owner;
    std::string group;
    std::vector<std::string> entries;
    LONG services = 0;
    bool othersAreNull = false;
    DWORD authentication = 0;
    DWORD impersonation = 0;
    DWORD capabilities = 0;
};

Calls g_calls;

std::string SidText(PSID sid) {
    wchar_t* text = nullptr;
    if (sid == nullptr || !ConvertSidToStringSidW(sid, &text)) return "(none)";
    std::string copy = ToAnsi(text);
    LocalFree(text);
    return copy;
}

// One line for each entry: its type, its flags, its rights and whom it is about.
std::vector<std::string> EntriesOf(PACL list) {
    std::vector<std::string> entries;
    for (DWORD i = 0; list != nullptr && i < list->AceCount; ++i) {
        void* entry = nullptr;
        REQUIRE(GetAce(list, i, &entry));
        auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        entries.push_back(std::to_string(allowed->Header.AceType) + " " +
                          std::to_string(allowed->Header.AceFlags) + " " + std::to_string(allowed->Mask) +
                          " " + SidText(&allowed->SidStart));
    }
    return entries;
}

HRESULT WINAPI TakeSecurity(PSECURITY_DESCRIPTOR descriptor, LONG serviceCount,
                            SOLE_AUTHENTICATION_SERVICE* services, void* reserved1, DWORD authentication,
                            DWORD impersonation, void* list, DWORD capabilities, void* reserved3) {
    const bool isValid = descriptor != nullptr && IsValidSecurityDescriptor(descriptor);
    g_calls.order.push_back(isValid ? "CoInitializeSecurity" : "CoInitializeSecurity without a descriptor");
    if (!isValid) return g_calls.result;
    DWORD revision = 0;
    PSID owner = nullptr;
    PSID group = nullptr;
    PACL entries = nullptr;
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    CHECK(GetSecurityDescriptorControl(descriptor, &g_calls.control, &revision));
    CHECK(GetSecurityDescriptorOwner(descriptor, &owner, &defaulted));
    CHECK(GetSecurityDescriptorGroup(descriptor, &group, &defaulted));
    CHECK(GetSecurityDescriptorDacl(descriptor, &present, &entries, &defaulted));
    g_calls.owner = SidText(owner);
    g_calls.group = SidText(group);
    g_calls.entries = EntriesOf(entries);
    g_calls.services = serviceCount;
    g_calls.othersAreNull =
        services == nullptr && reserved1 == nullptr && list == nullptr && reserved3 == nullptr;
    g_calls.authentication = authentication;
    g_calls.impersonation = impersonation;
    g_calls.capabilities = capabilities;
    return g_calls.result;
}

HRESULT WINAPI RefuseClass(REFCLSID, IUnknown*, DWORD, DWORD, DWORD*) {
    g_calls.order.push_back("CoRegisterClassObject");
    return CO_E_OBJISREG;
}

HRESULT WINAPI TakeResume() {
    g_calls.order.push_back("CoResumeClassObjects");
    return S_OK;
}

struct Recorder {
    Recorder() { g_calls = {}; }

    ImportPatch security{"ole32.dll", "CoInitializeSecurity", &TakeSecurity};
    ImportPatch registerClass{"ole32.dll", "CoRegisterClassObject", &RefuseClass};
    ImportPatch resume{"ole32.dll", "CoResumeClassObjects", &TakeResume};
};

std::string OwnSid() {
    HANDLE token = nullptr;
    REQUIRE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
    std::vector<BYTE> bytes(1024);
    DWORD size = 0;
    REQUIRE(GetTokenInformation(token, TokenUser, bytes.data(), static_cast<DWORD>(bytes.size()), &size));
    CloseHandle(token);
    return SidText(reinterpret_cast<TOKEN_USER*>(bytes.data())->User.Sid);
}

BOOL WINAPI NoToken(HANDLE, DWORD, PHANDLE) {
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

BOOL WINAPI NoTokenInformation(HANDLE, TOKEN_INFORMATION_CLASS, LPVOID, DWORD, PDWORD) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return FALSE;
}

BOOL WINAPI NoWellKnownSid(WELL_KNOWN_SID_TYPE, PSID, PSID, DWORD*) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

BOOL WINAPI NoEntryWithoutReason(PACL, DWORD, DWORD, PSID) {
    SetLastError(ERROR_SUCCESS);
    return FALSE;
}

std::wstring g_firstText;

LSTATUS WINAPI TakeFirstText(HKEY, LPCWSTR, DWORD, DWORD, const BYTE* data, DWORD) {
    if (g_firstText.empty()) g_firstText = reinterpret_cast<const wchar_t*>(data);
    return ERROR_DISK_FULL;
}

// The manager's own entry.
int Run(std::wstring command) {
    return wWinMain(GetModuleHandleW(nullptr), nullptr, command.data(), SW_SHOWDEFAULT);
}

}  // namespace

TEST_CASE_FIXTURE(Recorder,
                  "own user, system and administrators are admitted from this machine, and nobody else") {
    CHECK(AdmitOwnUserOnly() == S_OK);
    const std::string own = OwnSid();
    const std::string allowed =
        "0 0 3 ";  // an allowing entry, not inherited, COM_RIGHTS_EXECUTE and _EXECUTE_LOCAL
    CHECK(g_calls.entries ==
          std::vector<std::string>{allowed + own, allowed + "S-1-5-18", allowed + "S-1-5-32-544"});
    CHECK(own.starts_with("S-1-"));
    // The descriptor is in absolute form and has an owner and a group.
    CHECK(g_calls.control == SE_DACL_PRESENT);
    CHECK(g_calls.owner == own);
    CHECK(g_calls.group == own);
}

TEST_CASE_FIXTURE(Recorder,
                  "callers must be authenticated, and servers called may identify the user and no more") {
    CHECK(AdmitOwnUserOnly() == S_OK);
    CHECK(g_calls.order == std::vector<std::string>{"CoInitializeSecurity"});
    CHECK(g_calls.authentication == RPC_C_AUTHN_LEVEL_PKT);
    CHECK(g_calls.impersonation == RPC_C_IMP_LEVEL_IDENTIFY);
    CHECK(g_calls.capabilities == EOAC_NONE);
    CHECK(g_calls.services == -1);
    CHECK(g_calls.othersAreNull);
}

TEST_CASE_FIXTURE(Recorder, "a user who cannot be found out is not replaced by everybody") {
    SUBCASE("no token") {
        const ImportPatch patch("advapi32.dll", "OpenProcessToken", &NoToken);
        CHECK(Run(L"-Embedding") == E_ACCESSDENIED);
    }
    SUBCASE("a token that tells nothing") {
        const ImportPatch patch("advapi32.dll", "GetTokenInformation", &NoTokenInformation);
        CHECK(AdmitOwnUserOnly() == HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER));
    }
    SUBCASE("no account of the system") {
        const ImportPatch patch("advapi32.dll", "CreateWellKnownSid", &NoWellKnownSid);
        CHECK(AdmitOwnUserOnly() == E_INVALIDARG);
    }
    SUBCASE("a failure without a reason") {
        const ImportPatch patch("advapi32.dll", "AddAccessAllowedAce", &NoEntryWithoutReason);
        CHECK(AdmitOwnUserOnly() == E_FAIL);
    }
    CHECK(g_calls.order.empty());
}

TEST_CASE_FIXTURE(Recorder, "the manager tells COM whom to admit before it offers its class") {
    CHECK(Run(L"-Embedding") == CO_E_OBJISREG);
    CHECK(g_calls.order == std::vector<std::string>{"CoInitializeSecurity", "CoRegisterClassObject"});
}

TEST_CASE_FIXTURE(
    Recorder, "the manager serves nobody when COM does not take the list of those to admit, and tells why") {
    for (const HRESULT result : {E_ACCESSDENIED, RPC_E_TOO_LATE, E_OUTOFMEMORY}) {
        g_calls.order.clear();
        g_calls.result = result;
        CHECK(Run(L"-Embedding") == result);
        CHECK(g_calls.order == std::vector<std::string>{"CoInitializeSecurity"});
    }
}

// The first value that a registration writes is the description of the class.
TEST_CASE("the manager registers its class under the name that administration tools show") {
    const ImportPatch patch("advapi32.dll", "RegSetValueExW", &TakeFirstText);
    g_firstText.clear();
    CHECK(Run(L"/RegServer") == HRESULT_FROM_WIN32(ERROR_DISK_FULL));
    CHECK(g_firstText == L"Calvane configuration manager");
}
