// Everything that the store holds, as rows to compare.
#pragma once

#include <string>

#include "tests/support/manager.h"
#include "tests/support/other_process.h"

// The values of a key below the settings' root as "name=text", sorted by name. Any that is no REG_SZ shows
// its type too, and one that is stored with a terminating NUL shows that. Empty for a key that does not
// exist.
Rows StoredIn(const std::wstring& key);

// All four keys, each value with its key before its name.
Rows Stored();

// The text of the start-up entry; empty when there is none.
std::wstring RunEntry();
void DeleteRunEntry();
