// Registering the running executable as a local automation server, and what its command line asks for.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

// A creatable class.
struct ClassDescription {
    CLSID classId;
    std::wstring progId;
    std::wstring description;
    int typeLibrary;  // the number of the TYPELIB resource that describes the class
};

struct ServerDescription {
    std::vector<ClassDescription> classes;
    std::vector<int> typeLibraries;  // the numbers of the TYPELIB resources to register
};

// Registers classes and type libraries for the machine, or where the user may not do that, for the user
// alone. What an earlier registration wrote, from whatever folder, is replaced; a machine-wide one also
// removes the user's own, which would hide it. Returns S_OK, or why it failed: the registry is as before
// then.
HRESULT RegisterServer(const ServerDescription& server);

// Removes from both places what RegisterServer writes, as far as it is there; keys in which somebody else
// keeps something stay, with that. Returns S_OK when nothing is left, otherwise the first failure; the rest
// is removed all the same.
HRESULT UnregisterServer(const ServerDescription& server);

// Run: COM starts the server for a client. None: the command line names none of them.
enum class ServerCommand { Run, Register, Unregister, None };

// arguments: without the program's name. The switches are /Embedding, /RegServer and /UnregServer, also with
// a "-", in any letter case; the first of them counts.
ServerCommand ParseServerCommand(std::wstring_view arguments);
