#include "store/settings_schema.h"

#include "platform/com/variant.h"

namespace Schema {

std::wstring Numbered(long n, std::wstring_view word) {
    return TextOf(n).append(word);
}

}  // namespace Schema
