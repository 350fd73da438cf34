// The page of the documents that describes the store.
#pragma once

#include <string>
#include <vector>

#include "tools/schema_export/option_texts.h"

// Writes settings-schema.md into the folder. Throws std::runtime_error.
void WriteSchemaPage(const std::vector<Option>& options, const std::vector<OptionList>& lists,
                     const std::wstring& folder);
