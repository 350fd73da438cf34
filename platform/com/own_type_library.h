// A type library embedded in the running executable.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <string>
#include <vector>

#include "platform/com/com_ptr.h"

// number: of the TYPELIB resource. Throws AutomationError when it cannot be loaded.
ComPtr<ITypeLib> LoadOwnTypeLibrary(int number);

class OwnTypeLibrary {
public:
    // As LoadOwnTypeLibrary.
    explicit OwnTypeLibrary(int number);

    // "{...}" and "1.0", as the registry spells them.
    const std::wstring& Id() const noexcept { return m_id; }
    const std::wstring& Version() const noexcept { return m_version; }

    // Below classes (an open Software\Classes): the path under which the library is registered, empty where
    // it is not; whether any key of its registration is there.
    std::wstring RegisteredPath(HKEY classes) const;
    bool IsPresent(HKEY classes) const;

    // For the machine or for the user alone. path: as the registration shall name it, the running
    // executable's when empty. Each throws AutomationError.
    void Register(bool forUser, const std::wstring& path = {}) const;
    void Unregister(bool forUser) const;

private:
    std::wstring m_path;
    ComPtr<ITypeLib> m_library;
    GUID m_guid{};
    WORD m_major = 0;
    WORD m_minor = 0;
    LCID m_locale = 0;
    SYSKIND m_system = SYS_WIN32;
    std::wstring m_id;
    std::wstring m_version;
    std::vector<std::wstring> m_interfaces;
};

// "{...}", as the registry spells it.
std::wstring GuidText(REFGUID guid);
