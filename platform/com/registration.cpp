#include "platform/com/registration.h"

#include <algorithm>
#include <memory>

#include "platform/automation_error.h"
#include "platform/com/com_method.h"
#include "platform/executable_path.h"
#include "platform/handle.h"
#include "platform/com/own_type_library.h"
#include "platform/com/registry_journal.h"
#include "platform/text.h"

namespace {

constexpr wchar_t kClasses[] = L"Software\\Classes";

// Where a registration stands.
struct Place {
    HKEY hive;
    bool forUser;
};

constexpr bool kForUser = true;

Place Machine() {
    return {HKEY_LOCAL_MACHINE, !kForUser};
}

Place User() {
    return {HKEY_CURRENT_USER, kForUser};
}

using TypeLibraries = std::vector<OwnTypeLibrary>;

TypeLibraries LoadTypeLibraries(const ServerDescription& server) {
    TypeLibraries libraries;
    for (const int number : server.typeLibraries)
        libraries.emplace_back(number);
    return libraries;
}

// What a registration writes below Software\Classes, each key before those in it.
std::vector<RegistryEntry> EntriesOf(const ServerDescription& server) {
    const std::wstring path = ExecutablePath();
    std::vector<RegistryEntry> entries;
    // A user who has no classes of his own may lack the key.
    entries.push_back({.key = L"CLSID", .name = L"", .text = L"", .keyOnly = true});
    const auto add = [&](const std::wstring& key, const wchar_t* name, const std::wstring& text) {
        entries.push_back({.key = key, .name = name, .text = text});
    };
    for (const ClassDescription& described : server.classes) {
        const OwnTypeLibrary library(described.typeLibrary);
        const std::wstring id = GuidText(described.classId);
        const std::wstring key = L"CLSID\\" + id;
        const std::wstring serverKey = key + L"\\LocalServer32";
        add(key, L"", described.description);
        // Unquoted, a blank in the path would let a program planted at that place run instead.
        // ServerExecutable names the file itself and is taken as it stands.
        add(serverKey, L"", L'"' + path + L'"');
        add(serverKey, L"ServerExecutable", path);
        add(key + L"\\ProgID", L"", described.progId);
        add(key + L"\\TypeLib", L"", library.Id());
        add(key + L"\\Version", L"", library.Version());
        entries.push_back({.key = key + L"\\Programmable", .name = L"", .text = L"", .keyOnly = true});
        add(described.progId, L"", described.description);
        add(described.progId + L"\\CLSID", L"", id);
    }
    return entries;
}

// Null where the hive has no Software\Classes.
RegistryKey OpenClasses(const Place& place) {
    RegistryKey key;
    const LSTATUS status = RegOpenKeyExW(place.hive, kClasses, 0, KEY_READ, key.Put());
    if (status == ERROR_FILE_NOT_FOUND) return {};
    ThrowIfWin32Failed(status);
    return key;
}

RegistryKey MakeClasses(const Place& place) {
    RegistryKey classes = OpenClasses(place);
    if (classes) return classes;
    ThrowIfWin32Failed(RegCreateKeyExW(place.hive, kClasses, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_READ,
                                       nullptr, classes.Put(), nullptr));
    return classes;
}

// A registered type library, put back as it was unless Keep was called.
class TypeLibraryRegistration {
public:
    TypeLibraryRegistration(const OwnTypeLibrary& library, HKEY classes, bool forUser)
        : m_library(library), m_forUser(forUser), m_oldPath(library.RegisteredPath(classes)) {
        try {
            library.Register(forUser);
        } catch (const AutomationError&) {
            PutBack();
            throw;
        }
    }
    TypeLibraryRegistration(const TypeLibraryRegistration&) = delete;
    TypeLibraryRegistration& operator=(const TypeLibraryRegistration&) = delete;
    ~TypeLibraryRegistration() {
        if (!m_kept) PutBack();
    }

    void Keep() noexcept { m_kept = true; }

private:
    void PutBack() const {
        ResumeNext([&] {
            if (m_oldPath.empty()) {
                m_library.Unregister(m_forUser);
            } else {
                m_library.Register(m_forUser, m_oldPath);
            }
        });
    }

    const OwnTypeLibrary& m_library;
    const bool m_forUser;
    const std::wstring m_oldPath;
    bool m_kept = false;
};

// Keeps the first failure of several steps, all of which run.
class FirstFailure {
public:
    template <class Step>
    void Run(Step&& step) {
        const HRESULT result = ResultOf(step);
        if (SUCCEEDED(m_result)) m_result = result;
    }

    HRESULT Result() const noexcept { return m_result; }

private:
    HRESULT m_result = S_OK;
};

HRESULT UnregisterIn(const Place& place, const std::vector<RegistryEntry>& entries,
                     const TypeLibraries& libraries) {
    FirstFailure failure;
    failure.Run([&] {
        const RegistryKey classes = OpenClasses(place);
        if (!classes) return;
        std::for_each(entries.rbegin(), entries.rend(), [&](const RegistryEntry& entry) {
            failure.Run([&] { RemoveEntry(classes.Get(), entry); });
        });
        for (const OwnTypeLibrary& library : libraries) {
            failure.Run([&] {
                if (library.IsPresent(classes.Get())) library.Unregister(place.forUser);
            });
        }
    });
    return failure.Result();
}

void RegisterIn(const Place& place, const std::vector<RegistryEntry>& entries,
                const TypeLibraries& libraries) {
    const RegistryKey classes = MakeClasses(place);
    RegistryJournal journal(classes.Get());
    for (const RegistryEntry& entry : entries)
        journal.Write(entry);
    std::vector<std::unique_ptr<TypeLibraryRegistration>> registrations;
    for (const OwnTypeLibrary& library : libraries) {
        registrations.push_back(
            std::make_unique<TypeLibraryRegistration>(library, classes.Get(), place.forUser));
    }
    if (!place.forUser) ThrowIfFailed(UnregisterIn(User(), entries, libraries));

    journal.Keep();
    for (const auto& registration : registrations)
        registration->Keep();
}

bool IsDenied(HRESULT result) {
    return result == E_ACCESSDENIED || result == TYPE_E_REGISTRYACCESS;
}

bool IsSwitch(std::wstring_view argument, std::wstring_view name) {
    return argument.size() == name.size() + 1 && (argument[0] == L'/' || argument[0] == L'-') &&
           UpperCase(argument.substr(1)) == UpperCase(name);
}

}  // namespace

HRESULT RegisterServer(const ServerDescription& server) {
    return ResultOf([&] {
        const std::vector<RegistryEntry> entries = EntriesOf(server);
        const TypeLibraries libraries = LoadTypeLibraries(server);
        const HRESULT result = ResultOf([&] { RegisterIn(Machine(), entries, libraries); });
        if (IsDenied(result)) {
            RegisterIn(User(), entries, libraries);
        } else {
            ThrowIfFailed(result);
        }
    });
}

HRESULT UnregisterServer(const ServerDescription& server) {
    return ResultOf([&] {
        const std::vector<RegistryEntry> entries = EntriesOf(server);
        const TypeLibraries libraries = LoadTypeLibraries(server);
        FirstFailure failure;
        for (const Place& place : {User(), Machine()})
            failure.Run([&] { ThrowIfFailed(UnregisterIn(place, entries, libraries)); });
        ThrowIfFailed(failure.Result());
    });
}

ServerCommand ParseServerCommand(std::wstring_view arguments) {
    constexpr std::wstring_view kBlanks = L" \t";
    size_t start = arguments.find_first_not_of(kBlanks);
    while (start != std::wstring_view::npos) {
        const size_t end = std::min(arguments.find_first_of(kBlanks, start), arguments.size());
        const std::wstring_view argument = arguments.substr(start, end - start);
        if (IsSwitch(argument, L"Embedding")) return ServerCommand::Run;
        if (IsSwitch(argument, L"RegServer")) return ServerCommand::Register;
        if (IsSwitch(argument, L"UnregServer")) return ServerCommand::Unregister;
        start = arguments.find_first_not_of(kBlanks, end);
    }
    return ServerCommand::None;
}
