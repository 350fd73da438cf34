// What a first start stores, as a file to import into a user's registry.
#pragma once

#include <string>
#include <vector>

#include "tools/schema_export/option_texts.h"

// Writes calvane-defaults.reg into the folder. Throws std::runtime_error.
void WriteDefaultsFile(const std::vector<Option>& options, const std::vector<OptionList>& lists,
                       const std::wstring& folder);
