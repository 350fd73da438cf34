#pragma once

#include <string>

// The folder of the running executable, without a trailing separator except where it is a drive's root.
std::wstring ServerDirectory();
