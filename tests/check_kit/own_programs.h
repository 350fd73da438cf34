// The processes whose programs lie in the kit's folder or below it, and those of other installations.
#pragma once

#include <string>
#include <vector>

// With a separator at its end. This program lies in a folder of it.
std::wstring KitFolder();

// Registers the manager and the stand-in engine; returns what went wrong, empty where nothing did.
std::string RegisterOwnServers();

// Waits a while for the kit's own programs to end, and then ends them; not this one.
void EndOwnPrograms();

// The first of the programs that runs from another folder; empty where none does.
std::string ForeignProgram(const std::vector<std::wstring>& names);
