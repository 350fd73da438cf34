#pragma once

#include <string>

// The full path of the running executable.
std::wstring ExecutablePath();
