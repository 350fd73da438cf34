// folder_guard check|protect FOLDER: whether everybody's programs may lie in a folder, made or still to be
// made. They may where nobody but administrators and whoever installs can change them, rename the folder or
// one above it. "protect" makes the folder, and gives it and those above that it makes, as well as an empty
// one that is open to users, an access list of its own. Exit code: 0 for yes, 1 for no.
#include <windows.h>
#include <aclapi.h>
#include <sddl.h>

#include <algorithm>
#include <memory>
#include <string>

namespace {

struct LocalMemory {
    void operator()(void* memory) const noexcept { LocalFree(memory); }
};
using Descriptor = std::unique_ptr<void, LocalMemory>;

// Administrators and the system have all rights, users and app packages may read and run.
constexpr wchar_t kProtected[] =
    L"O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)(A;OICI;0x1200a9;;;S-1-15-2-1)";

constexpr ACCESS_MASK kChangesAccess = WRITE_DAC | WRITE_OWNER | GENERIC_ALL;
// Whoever may do this to a folder can put another one in its place, or in that of one in it.
constexpr ACCESS_MASK kReplaces = kChangesAccess | DELETE | FILE_DELETE_CHILD;
constexpr ACCESS_MASK kWrites = kReplaces | GENERIC_WRITE | FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY;
// A drive's root cannot be renamed.
constexpr ACCESS_MASK kReplacesInRoot = kChangesAccess | FILE_DELETE_CHILD;

Descriptor FromText(const wchar_t* text) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ConvertStringSecurityDescriptorToSecurityDescriptorW(text, SDDL_REVISION_1, &descriptor, nullptr);
    return Descriptor(descriptor);
}

bool IsWellKnown(PSID sid, const wchar_t* text) {
    PSID other = nullptr;
    if (!ConvertStringSidToSidW(text, &other)) return false;
    const Descriptor owner(other);
    return EqualSid(sid, other);
}

bool IsOwnUser(PSID sid) {
    struct {
        TOKEN_USER user;
        BYTE sid[SECURITY_MAX_SID_SIZE];
    } buffer{};
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return false;
    DWORD size = 0;
    const BOOL done = GetTokenInformation(token, TokenUser, &buffer, sizeof(buffer), &size);
    CloseHandle(token);
    return done && EqualSid(sid, buffer.user.User.Sid);
}

// The creator's entry stands for whoever makes a file: that takes a right which is looked for itself.
bool IsTrusted(PSID sid) {
    constexpr const wchar_t* kTrusted[] = {
        L"S-1-5-18",
        L"S-1-5-32-544",
        L"S-1-3-0",
        L"S-1-3-4",
        L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464",  // Windows' own installer
    };
    for (const wchar_t* const text : kTrusted) {
        if (IsWellKnown(sid, text)) return true;
    }
    return IsOwnUser(sid);
}

// Whether others are granted one of the rights. Entries that deny are left aside: they would only make it
// safer.
bool IsOpen(const std::wstring& folder, ACCESS_MASK rights) {
    PSID owner = nullptr;
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR read = nullptr;
    if (GetNamedSecurityInfoW(folder.c_str(), SE_FILE_OBJECT,
                              OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner, nullptr, &list,
                              nullptr, &read) != ERROR_SUCCESS) {
        return true;
    }
    const Descriptor descriptor(read);
    // A file system without access lists has none.
    if (owner == nullptr || !IsTrusted(owner) || list == nullptr) return true;
    for (DWORD i = 0; i < list->AceCount; ++i) {
        void* found = nullptr;
        if (!GetAce(list, i, &found)) return true;
        const auto* const entry = static_cast<ACCESS_ALLOWED_ACE*>(found);
        if (entry->Header.AceType != ACCESS_ALLOWED_ACE_TYPE || (entry->Header.AceFlags & INHERIT_ONLY_ACE))
            continue;
        if ((entry->Mask & rights) != 0 && !IsTrusted(const_cast<DWORD*>(&entry->SidStart))) return true;
    }
    return false;
}

bool Exists(const std::wstring& folder) {
    return GetFileAttributesW(folder.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsEmpty(const std::wstring& folder) {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return false;
    bool more = true;
    while (more && (lstrcmpW(found.cFileName, L".") == 0 || lstrcmpW(found.cFileName, L"..") == 0))
        more = FindNextFileW(search, &found);
    FindClose(search);
    return !more;
}

bool Protect(const std::wstring& folder) {
    const Descriptor descriptor = FromText(kProtected);
    PSID owner = nullptr;
    PACL list = nullptr;
    BOOL isDefault = FALSE;
    BOOL hasList = FALSE;
    return descriptor != nullptr && GetSecurityDescriptorOwner(descriptor.get(), &owner, &isDefault) &&
           GetSecurityDescriptorDacl(descriptor.get(), &hasList, &list, &isDefault) &&
           SetNamedSecurityInfoW(
               const_cast<wchar_t*>(folder.c_str()), SE_FILE_OBJECT,
               OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
               owner, nullptr, list, nullptr) == ERROR_SUCCESS;
}

bool Make(const std::wstring& folder) {
    const Descriptor descriptor = FromText(kProtected);
    SECURITY_ATTRIBUTES attributes{sizeof(attributes), descriptor.get(), FALSE};
    return descriptor != nullptr && CreateDirectoryW(folder.c_str(), &attributes);
}

// The folders from the drive's root down. What is missing is made, if at all, with an access list of its own.
bool IsSafe(const std::wstring& folder, bool protect) {
    constexpr size_t kRootLength = 3;  // "C:\"
    if (folder.size() <= kRootLength || folder[1] != L':' || folder[2] != L'\\') return false;
    if (IsOpen(folder.substr(0, kRootLength), kReplacesInRoot)) return false;
    for (size_t end = kRootLength; end < folder.size();) {
        end = std::min(folder.find(L'\\', end + 1), folder.size());
        const std::wstring part = folder.substr(0, end);
        const bool isLast = end == folder.size();
        if (!Exists(part)) {
            if (protect && !Make(part)) return false;
        } else if (IsOpen(part, isLast ? kWrites : kReplaces)) {
            if (!isLast || !IsEmpty(part)) return false;
            if (protect && !Protect(part)) return false;
        }
    }
    return true;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    return count == 3 && IsSafe(arguments[2], lstrcmpW(arguments[1], L"protect") == 0) ? 0 : 1;
}
