// What the suites run on.
#pragma once

#include <string>

// The system, the scale, the screen, the language and Calvane's version, one a line.
std::string Surroundings();

// Why the suites cannot run here; empty where they can.
std::string Obstacle();
