// The programs of the build, run as processes of their own.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "tests/support/message_pump.h"

// The ids of the running processes of a program, by its file name.
std::vector<DWORD> ProcessesOf(const wchar_t* program);

// Keeps the running processes of a program open until the test ends, so that no later one gets their ids:
// Wine knows a server by its id, and a client that has called a server cannot call a later one with the same
// id.
void KeepProcessIds(const wchar_t* program);

// Whether no process of the program is left within the time. Messages are dispatched meanwhile.
bool ProgramEnds(const wchar_t* program, DWORD milliseconds = kPatience);

// Runs a program, by its full path or its name in the folder above the test's own, where the build puts them,
// and returns its exit code; STILL_ACTIVE when it does not end in time. Messages are dispatched meanwhile.
// Throws std::runtime_error when it cannot be started.
DWORD RunProgram(const wchar_t* program, const std::wstring& arguments = {}, DWORD milliseconds = kPatience);

// Has a process load a library, by its full path or as the process looks for a name; whether it has.
bool LoadLibraryInto(HANDLE process, const std::wstring& path);

// Starts a COM server and waits until it is idle; nothing where it runs already. Wine looks for a server that
// it has started itself once a second, and finds one that serves at once.
void StartServerAhead(const wchar_t* program);

// The same with a library, by its full path, that the process loads before it runs; the caller closes the
// process. Throws std::runtime_error where the library cannot be loaded.
HANDLE StartServerWith(const wchar_t* program, const std::wstring& library);
