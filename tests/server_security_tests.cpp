// Who is admitted to the server, as COM is told.
#include <doctest.h>

#include <windows.h>
#include <objbase.h>
#include <sddl.h>

#include <string>
#include <vector>

#include "platform/com/server_security.h"
#include "tests/support/import_fake.h"
#include "tests/support/shown_text.h"

namespace {

constexpr SECURITY_INFORMATION kParts =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

// Of the owner, the group and the list of those who are admitted.
std::wstring TextOf(PSECURITY_DESCRIPTOR descriptor) {
    wchar_t* text = nullptr;
    REQUIRE(ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1, kParts, &text,
                                                                 nullptr));
    const std::wstring copy = text;
    LocalFree(text);
    return copy;
}

std::wstring OwnSid() {
    HANDLE token = nullptr;
    REQUIRE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
    std::vector<BYTE> bytes(1024);
    DWORD size = 0;
    REQUIRE(GetTokenInformation(token, TokenUser, bytes.data(), static_cast<DWORD>(bytes.size()), &size));
    CloseHandle(token);
    wchar_t* text = nullptr;
    REQUIRE(ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(bytes.data())->User.Sid, &text));
    const std::wstring copy = text;
    LocalFree(text);
    return copy;
}

// The manager's own entry.
int Run(std::wstring command) {
    return wWinMain(GetModuleHandleW(nullptr), nullptr, command.data(), SW_SHOWDEFAULT);
}

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

// Notes what the server tells COM, whose results are the test's; the class is never offered.
struct Recorder {
    std::vector<std::string> calls;
    HRESULT result = S_OK;  // of CoInitializeSecurity
    std::wstring admitted;
    SECURITY_DESCRIPTOR_CONTROL control = 0;

    const ImportFake<"CoInitializeSecurity", decltype(&CoInitializeSecurity)> security{
        "ole32.dll", [this](PSECURITY_DESCRIPTOR descriptor, LONG serviceCount,
                            SOLE_AUTHENTICATION_SERVICE* services, void* reserved1, DWORD authentication,
                            DWORD impersonation, void* list, DWORD capabilities, void* reserved3) {
            calls.push_back("CoInitializeSecurity");
            REQUIRE(descriptor != nullptr);
            REQUIRE(IsValidSecurityDescriptor(descriptor));
            DWORD revision = 0;
            CHECK(GetSecurityDescriptorControl(descriptor, &control, &revision));
            admitted = TextOf(descriptor);
            CHECK(serviceCount == -1);
            for (const void* const other : {static_cast<void*>(services), reserved1, list, reserved3})
                CHECK(other == nullptr);
            CHECK(authentication == RPC_C_AUTHN_LEVEL_PKT);
            CHECK(impersonation == RPC_C_IMP_LEVEL_IDENTIFY);
            CHECK(capabilities == EOAC_NONE);
            return result;
        }};
    const ImportFake<"CoRegisterClassObject", decltype(&CoRegisterClassObject)> registerClass{
        "ole32.dll", [this](REFCLSID, IUnknown*, DWORD, DWORD, DWORD*) {
            calls.push_back("CoRegisterClassObject");
            return CO_E_OBJISREG;
        }};
};

}  // namespace

TEST_CASE_FIXTURE(Recorder,
                  "own user, system and administrators are admitted from this machine, authenticated, and "
                  "nobody else; servers called may identify the user and no more") {
    CHECK(AdmitOwnUserOnly() == S_OK);
    CHECK(calls == std::vector<std::string>{"CoInitializeSecurity"});
    const std::wstring own = OwnSid();
    // Entries that allow, are not inherited, and give COM_RIGHTS_EXECUTE and COM_RIGHTS_EXECUTE_LOCAL.
    const std::wstring expected =
        L"O:" + own + L"G:" + own + L"D:(A;;0x3;;;" + own + L")(A;;0x3;;;SY)(A;;0x3;;;BA)";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    REQUIRE(ConvertStringSecurityDescriptorToSecurityDescriptorW(expected.c_str(), SDDL_REVISION_1,
                                                                 &descriptor, nullptr));
    CHECK(admitted == TextOf(descriptor));
    LocalFree(descriptor);
    // The descriptor is in absolute form.
    CHECK(control == SE_DACL_PRESENT);
}

TEST_CASE_FIXTURE(Recorder, "a user who cannot be found out is not replaced by everybody") {
    SUBCASE("no token") {
        const ImportFake<"OpenProcessToken", decltype(&OpenProcessToken)> fake{
            "advapi32.dll", [](HANDLE, DWORD, HANDLE*) { return Fail(ERROR_ACCESS_DENIED); }};
        CHECK(Run(L"-Embedding") == E_ACCESSDENIED);
    }
    SUBCASE("a token that tells nothing") {
        const ImportFake<"GetTokenInformation", decltype(&GetTokenInformation)> fake{
            "advapi32.dll", [](HANDLE, TOKEN_INFORMATION_CLASS, void*, DWORD, DWORD*) {
                return Fail(ERROR_INSUFFICIENT_BUFFER);
            }};
        CHECK(AdmitOwnUserOnly() == HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER));
    }
    SUBCASE("no account of the system") {
        const ImportFake<"CreateWellKnownSid", decltype(&CreateWellKnownSid)> fake{
            "advapi32.dll",
            [](WELL_KNOWN_SID_TYPE, PSID, PSID, DWORD*) { return Fail(ERROR_INVALID_PARAMETER); }};
        CHECK(AdmitOwnUserOnly() == E_INVALIDARG);
    }
    SUBCASE("a failure without a reason") {
        const ImportFake<"AddAccessAllowedAce", decltype(&AddAccessAllowedAce)> fake{
            "advapi32.dll", [](PACL, DWORD, DWORD, PSID) { return Fail(ERROR_SUCCESS); }};
        CHECK(AdmitOwnUserOnly() == E_FAIL);
    }
    CHECK(calls.empty());
}

TEST_CASE_FIXTURE(Recorder,
                  "the manager tells COM whom to admit before it offers its class, and serves nobody when "
                  "COM does not take that, and tells why") {
    CHECK(Run(L"-Embedding") == CO_E_OBJISREG);
    CHECK(calls == std::vector<std::string>{"CoInitializeSecurity", "CoRegisterClassObject"});
    for (const HRESULT failure : {E_ACCESSDENIED, RPC_E_TOO_LATE, E_OUTOFMEMORY}) {
        calls.clear();
        result = failure;
        CHECK(Run(L"-Embedding") == failure);
        CHECK(calls == std::vector<std::string>{"CoInitializeSecurity"});
    }
}

// The first value that a registration writes is the description of the class.
TEST_CASE("the manager registers its class under the name that administration tools show") {
    std::wstring first;
    const ImportFake<"RegSetValueExW", decltype(&RegSetValueExW)> fake{
        "advapi32.dll", [&](HKEY, LPCWSTR, DWORD, DWORD, const BYTE* data, DWORD) -> LSTATUS {
            if (first.empty()) first = reinterpret_cast<const wchar_t*>(data);
            return ERROR_DISK_FULL;
        }};
    CHECK(Run(L"/RegServer") == HRESULT_FROM_WIN32(ERROR_DISK_FULL));
    CHECK(first == L"Calvane configuration manager");
}
