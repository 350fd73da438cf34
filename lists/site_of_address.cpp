#include "lists/site_of_address.h"

namespace {

// The length of "http://".
constexpr size_t kSearchStart = 7;

}  // namespace

std::wstring SiteOfAddress(const std::wstring& address) {
    return address.substr(0, address.find(L'/', kSearchStart));
}
