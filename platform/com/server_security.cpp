#include "platform/com/server_security.h"

#include <objbase.h>

#include "platform/automation_error.h"
#include "platform/com/com_method.h"
#include "platform/handle.h"

namespace {

constexpr DWORD kCallFromThisMachine = COM_RIGHTS_EXECUTE | COM_RIGHTS_EXECUTE_LOCAL;

void Require(BOOL done) {
    if (!done) ThrowLastError();
}

// The user that the process runs as.
class TokenUserSid {
public:
    TokenUserSid() {
        TokenHandle token;
        Require(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()));
        DWORD size = 0;
        Require(GetTokenInformation(token.Get(), TokenUser, &m_buffer, sizeof(m_buffer), &size));
    }

    PSID Get() noexcept { return m_buffer.user.User.Sid; }

private:
    struct {
        TOKEN_USER user;
        BYTE sid[SECURITY_MAX_SID_SIZE];
    } m_buffer{};
};

class WellKnownSid {
public:
    explicit WellKnownSid(WELL_KNOWN_SID_TYPE type) {
        DWORD size = sizeof(m_sid);
        Require(CreateWellKnownSid(type, nullptr, &m_sid, &size));
    }

    PSID Get() noexcept { return &m_sid; }

private:
    alignas(DWORD) BYTE m_sid[SECURITY_MAX_SID_SIZE]{};
};

// CoInitializeSecurity takes a descriptor in absolute form, with an owner and a group. Without a list of its
// own everybody would be admitted.
class OwnUserDescriptor {
public:
    OwnUserDescriptor() {
        Require(InitializeSecurityDescriptor(&m_descriptor, SECURITY_DESCRIPTOR_REVISION));
        Require(InitializeAcl(&m_list.acl, sizeof(m_list), ACL_REVISION));
        for (const PSID sid : {m_user.Get(), m_system.Get(), m_administrators.Get()})
            Require(AddAccessAllowedAce(&m_list.acl, ACL_REVISION, kCallFromThisMachine, sid));
        Require(SetSecurityDescriptorOwner(&m_descriptor, m_user.Get(), FALSE));
        Require(SetSecurityDescriptorGroup(&m_descriptor, m_user.Get(), FALSE));
        Require(SetSecurityDescriptorDacl(&m_descriptor, TRUE, &m_list.acl, FALSE));
    }
    // The descriptor points into the object.
    OwnUserDescriptor(const OwnUserDescriptor&) = delete;
    OwnUserDescriptor& operator=(const OwnUserDescriptor&) = delete;

    PSECURITY_DESCRIPTOR Get() noexcept { return &m_descriptor; }

private:
    struct AllowedEntry {
        ACCESS_ALLOWED_ACE entry;
        BYTE sid[SECURITY_MAX_SID_SIZE];
    };

    TokenUserSid m_user;
    WellKnownSid m_system{WinLocalSystemSid};
    WellKnownSid m_administrators{WinBuiltinAdministratorsSid};
    struct {
        ACL acl;
        AllowedEntry entries[3];
    } m_list{};
    SECURITY_DESCRIPTOR m_descriptor{};
};

}  // namespace

HRESULT AdmitOwnUserOnly() {
    return ResultOf([] {
        OwnUserDescriptor descriptor;
        // The servers that the program calls may learn who it runs as, and not act in its name. No further
        // capability: disabling activation as the activator would keep the engine from being started.
        ThrowIfFailed(CoInitializeSecurity(descriptor.Get(), -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_PKT,
                                           RPC_C_IMP_LEVEL_IDENTIFY, nullptr, EOAC_NONE, nullptr));
    });
}
