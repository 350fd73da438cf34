// The shell of the system below, for readers of logs that Windows has none of. Only Wine starts its programs.
#pragma once

#include <string>

bool HasUnixShell();

// Runs a command by the shell, and returns its milliseconds without the shell's own start. What it prints
// goes to the file output, and folder, with a trailing separator, gets a file for a moment. Both are on drive
// Z:. Throws std::runtime_error when the shell does not start or does not end.
double TimeInUnixShell(const std::string& command, const std::wstring& output, const std::wstring& folder);

// What the shell calls a file on drive Z:, in quotes.
std::string UnixPath(const std::wstring& path);
