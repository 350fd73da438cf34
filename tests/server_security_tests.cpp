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

    // The arguments of CoInitializeSecurity.
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    std::string descriptor;
    LONG services = 0;
    bool othersAreNull = false;
    DWORD authentication = 0;
    DWORD impersonation = 0;
    DWORD capabilities = 0;
};

Calls g_calls;

// Of the owner, the group and the list of those who are admitted.
std::string TextOf(PSECURITY_DESCRIPTOR descriptor) {
    wchar_t* text = nullptr;
    REQUIRE(ConvertSecurityDescriptorToStringSecurityDescriptorW(
        descriptor, SDDL_REVISION_1,
        OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &text, nullptr));
    std::string copy = ToAnsi(text);
    LocalFree(text);
    return copy;
}

HRESULT WINAPI TakeSecurity(PSECURITY_DESCRIPTOR descriptor, LONG serviceCount,
                            SOLE_AUTHENTICATION_SERVICE* services, void* reserved1, DWORD authentication,
                            DWORD impersonation, void* list, DWORD capabilities, void* reserved3) {
    const bool isValid = descriptor != nullptr && IsValidSecurityDescriptor(descriptor);
    g_calls.order.push_back(isValid ? "CoInitializeSecurity" : "CoInitializeSecurity without a descriptor");
    if (!isValid) return g_calls.result;
    DWORD revision = 0;
    CHECK(GetSecurityDescriptorControl(descriptor, &g_calls.control, &revision));
    g_calls.descriptor = TextOf(descriptor);
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

std::wstring OwnSid() {
    HANDLE token = nullptr;
    REQUIRE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
    std::vector<BYTE> bytes(1024);
    DWORD size = 0;
    REQUIRE(GetTokenInformation(token, TokenUser, bytes.data(), static_cast<DWORD>(bytes.size()), &size));
    CloseHandle(token);
    wchar_t* text = nullptr;
    REQUIRE(ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(bytes.data())->User.Sid, &text));
    std::wstring copy = text;
    LocalFree(text);
    return copy;
}

template <DWORD error, class... Arguments>
BOOL WINAPI Fail(Arguments...) {
    SetLastError(error);
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
    const std::wstring own = OwnSid();
    // Entries that allow, are not inherited, and give COM_RIGHTS_EXECUTE and COM_RIGHTS_EXECUTE_LOCAL.
    const std::wstring expected =
        L"O:" + own + L"G:" + own + L"D:(A;;0x3;;;" + own + L")(A;;0x3;;;SY)(A;;0x3;;;BA)";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    REQUIRE(ConvertStringSecurityDescriptorToSecurityDescriptorW(expected.c_str(), SDDL_REVISION_1,
                                                                 &descriptor, nullptr));
    CHECK(g_calls.descriptor == TextOf(descriptor));
    LocalFree(descriptor);
    // The descriptor is in absolute form.
    CHECK(g_calls.control == SE_DACL_PRESENT);
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
        const ImportPatch patch("advapi32.dll", "OpenProcessToken",
                                &Fail<ERROR_ACCESS_DENIED, HANDLE, DWORD, PHANDLE>);
        CHECK(Run(L"-Embedding") == E_ACCESSDENIED);
    }
    SUBCASE("a token that tells nothing") {
        const ImportPatch patch(
            "advapi32.dll", "GetTokenInformation",
            &Fail<ERROR_INSUFFICIENT_BUFFER, HANDLE, TOKEN_INFORMATION_CLASS, LPVOID, DWORD, PDWORD>);
        CHECK(AdmitOwnUserOnly() == HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER));
    }
    SUBCASE("no account of the system") {
        const ImportPatch patch("advapi32.dll", "CreateWellKnownSid",
                                &Fail<ERROR_INVALID_PARAMETER, WELL_KNOWN_SID_TYPE, PSID, PSID, DWORD*>);
        CHECK(AdmitOwnUserOnly() == E_INVALIDARG);
    }
    SUBCASE("a failure without a reason") {
        const ImportPatch patch("advapi32.dll", "AddAccessAllowedAce",
                                &Fail<ERROR_SUCCESS, PACL, DWORD, DWORD, PSID>);
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
