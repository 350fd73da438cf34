// Group Policy's description of the options: what it writes (ADMX), and its words (ADML).
#pragma once

#include <string>
#include <vector>

#include "tools/schema_export/option_texts.h"

// Writes the .admx and en-US\\*.adml files of the options and of the start with Windows into the folder.
// Throws std::runtime_error.
void WritePolicy(const std::vector<Option>& options, const std::vector<OptionList>& lists,
                 const std::wstring& folder);
