#include "platform/com/own_type_library.h"

#include "platform/automation_error.h"
#include "platform/executable_path.h"
#include "platform/handle.h"
#include "platform/com/variant.h"

// In the import library of oleaut32, in none of its headers here.
extern "C" {
HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* helpFolder);
HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID locale, SYSKIND system);
}

namespace {

constexpr int kGuidCharacters = 39;

// The default value of a key, up to the length that a path can have; empty where there is none.
std::wstring DefaultValue(HKEY root, const std::wstring& key) {
    std::wstring text(32767, L'\0');
    DWORD size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (RegGetValueW(root, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, text.data(), &size) !=
        ERROR_SUCCESS) {
        return {};
    }
    text.resize(std::wcslen(text.c_str()));
    return text;
}

// A type library of its own in a file: the path of the file with the number of the resource behind it.
std::wstring PathOf(int number) {
    return ExecutablePath() + L'\\' + TextOf(static_cast<long>(number));
}

// The interfaces that a type library's registration gives a key of their own.
std::vector<std::wstring> RegisteredInterfaces(ITypeLib& library) {
    std::vector<std::wstring> ids;
    for (UINT i = 0; i < library.GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> info;
        TYPEATTR* attributes = nullptr;
        ThrowIfFailed(library.GetTypeInfo(i, &info));
        ThrowIfFailed(info->GetTypeAttr(&attributes));
        const bool isInterface = attributes->typekind == TKIND_DISPATCH ||
                                 (attributes->typekind == TKIND_INTERFACE &&
                                  (attributes->wTypeFlags & TYPEFLAG_FOLEAUTOMATION) != 0);
        const GUID id = attributes->guid;
        info->ReleaseTypeAttr(attributes);
        if (isInterface) ids.push_back(GuidText(id));
    }
    return ids;
}

}  // namespace

ComPtr<ITypeLib> LoadOwnTypeLibrary(int number) {
    ComPtr<ITypeLib> library;
    ThrowIfFailed(LoadTypeLibEx(PathOf(number).c_str(), REGKIND_NONE, &library));
    return library;
}

std::wstring GuidText(REFGUID guid) {
    wchar_t text[kGuidCharacters];
    StringFromGUID2(guid, text, kGuidCharacters);
    return text;
}

OwnTypeLibrary::OwnTypeLibrary(int number) : m_path(ExecutablePath()), m_library(LoadOwnTypeLibrary(number)) {
    // Resource 1 is the one that the bare path of a file stands for.
    if (number != 1) m_path = PathOf(number);

    TLIBATTR* attributes = nullptr;
    ThrowIfFailed(m_library->GetLibAttr(&attributes));
    m_guid = attributes->guid;
    m_major = attributes->wMajorVerNum;
    m_minor = attributes->wMinorVerNum;
    m_locale = attributes->lcid;
    m_system = attributes->syskind;
    m_library->ReleaseTLibAttr(attributes);

    wchar_t version[16];
    // The registry spells versions in hexadecimal.
    wsprintfW(version, L"%x.%x", m_major, m_minor);
    m_version = version;
    m_id = GuidText(m_guid);
    m_interfaces = RegisteredInterfaces(*m_library.Get());
}

std::wstring OwnTypeLibrary::RegisteredPath(HKEY classes) const {
    return DefaultValue(classes, L"TypeLib\\" + m_id + L'\\' + m_version + L"\\0\\win32");
}

bool OwnTypeLibrary::IsPresent(HKEY classes) const {
    RegistryKey key;
    const std::wstring version = L"TypeLib\\" + m_id + L'\\' + m_version;
    if (RegOpenKeyExW(classes, version.c_str(), 0, KEY_READ, key.Put()) == ERROR_SUCCESS) return true;
    for (const std::wstring& id : m_interfaces) {
        if (DefaultValue(classes, L"Interface\\" + id + L"\\TypeLib") == m_id) return true;
    }
    return false;
}

void OwnTypeLibrary::Register(bool forUser, const std::wstring& path) const {
    std::wstring named = path.empty() ? m_path : path;
    ThrowIfFailed(forUser ? RegisterTypeLibForUser(m_library.Get(), named.data(), nullptr)
                          : RegisterTypeLib(m_library.Get(), named.data(), nullptr));
}

// The system learns from the file that the registration names which interfaces to remove, and stops at a
// missing key. The file may be gone and keys may be missing, so the registration is completed first.
void OwnTypeLibrary::Unregister(bool forUser) const {
    Register(forUser);
    ThrowIfFailed(forUser ? UnRegisterTypeLibForUser(m_guid, m_major, m_minor, m_locale, m_system)
                          : UnRegisterTypeLib(m_guid, m_major, m_minor, m_locale, m_system));
}
