#include <doctest.h>

#include "lists/site_of_address.h"
#include "tests/support/shown_text.h"

TEST_CASE("the site of an address ends before the first slash at or behind its eighth character") {
    const std::tuple<std::string, const wchar_t*, const wchar_t*> rows[] = {
        {"before the path", L"http://www.example.com/path/page.htm", L"http://www.example.com"},
        {"a host alone is its own site", L"http://www.example.com", L"http://www.example.com"},
        {"an https address is cut after its first slash", L"https://www.example.com/path", L"https:/"},
        {"slashes among the first seven characters are passed over", L"a/b/c/d/e", L"a/b/c/d"},
        {"the eighth counts", L"////////", L"///////"},
        {"an address shorter than eight characters is its own site", L"ftp://a", L"ftp://a"},
        {"the empty text", L"", L""}};
    for (const auto& [what, address, site] : rows) {
        CAPTURE(what);
        CHECK(SiteOfAddress(address) == site);
    }
}
