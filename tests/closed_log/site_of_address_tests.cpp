#include <doctest.h>

#include "lists/site_of_address.h"
#include "tests/support/shown_text.h"

TEST_CASE("the site of an address ends before the first slash at or behind its eighth character") {
    struct Row {
        std::string meaning;
        const wchar_t* address;
        const wchar_t* site;
    };
    for (const Row& row : {
             Row{"before the path", L"http://www.example.com/path/page.htm", L"http://www.example.com"},
             Row{"before a last slash", L"http://www.example.com/", L"http://www.example.com"},
             Row{"before the first of two", L"http://h//", L"http://h"},
             Row{"a host alone is its own site", L"http://www.example.com", L"http://www.example.com"},
             Row{"so is one without a scheme", L"www.example.com", L"www.example.com"},
             Row{"an https address is cut after its first slash", L"https://www.example.com/path",
                 L"https:/"},
             Row{"also without a host", L"https://", L"https:/"},
             Row{"slashes among the first seven characters are passed over", L"a/b/c/d/e", L"a/b/c/d"},
             Row{"seven of them are the whole", L"///////", L"///////"},
             Row{"the eighth counts", L"////////", L"///////"},
             Row{"also behind the scheme", L"http:///path", L"http://"},
             Row{"an address shorter than eight characters is its own site", L"ftp://a", L"ftp://a"},
             Row{"a slash", L"/", L"/"},
             Row{"the empty text", L"", L""},
         }) {
        CAPTURE(row.meaning);
        CHECK(SiteOfAddress(row.address) == row.site);
    }
}
