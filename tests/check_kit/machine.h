// What the check kit's program finds on the computer, and does there.
#pragma once

#include <string>

// The kit's folder, with a separator at its end. This program lies in a folder of it.
std::wstring KitFolder();

// Registers the manager and the stand-in engine; returns what went wrong, empty where nothing did.
std::string RegisterOwnServers();

// Waits a while for the programs in or below the kit's folder to end, and then ends them; not this one.
void EndOwnPrograms();

// What the suites run on: Calvane's version, the system, the scale, the screen and the language, one a line.
std::string Surroundings();

// Why the suites cannot run here; empty where they can.
std::string Obstacle();
