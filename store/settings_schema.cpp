#include "store/settings_schema.h"

namespace Schema {

std::wstring Numbered(long n, std::wstring_view word) {
    return std::to_wstring(n).append(word);
}

}  // namespace Schema
