#include <doctest.h>

#include "lists/site_of_address.h"
#include "tests/support/shown_text.h"

TEST_CASE("the site of an address ends before the first slash behind the host") {
    CHECK(SiteOfAddress(L"http://www.example.com/path/page.htm") == L"http://www.example.com");
    CHECK(SiteOfAddress(L"http://www.example.com/") == L"http://www.example.com");
    CHECK(SiteOfAddress(L"http://h//") == L"http://h");
}

TEST_CASE("an address without a further slash is its own site") {
    CHECK(SiteOfAddress(L"http://www.example.com") == L"http://www.example.com");
    CHECK(SiteOfAddress(L"www.example.com") == L"www.example.com");
    CHECK(SiteOfAddress(L"http://") == L"http://");
}

TEST_CASE("an https address is cut after its first slash") {
    CHECK(SiteOfAddress(L"https://www.example.com/path") == L"https:/");
    CHECK(SiteOfAddress(L"https://") == L"https:/");
}

TEST_CASE("slashes among the first seven characters are passed over") {
    CHECK(SiteOfAddress(L"a/b/c/d/e") == L"a/b/c/d");
    CHECK(SiteOfAddress(L"///////") == L"///////");
    CHECK(SiteOfAddress(L"////////") == L"///////");
    CHECK(SiteOfAddress(L"http:///path") == L"http://");
}

TEST_CASE("an address shorter than eight characters is its own site") {
    CHECK(SiteOfAddress(L"").empty());
    CHECK(SiteOfAddress(L"/") == L"/");
    CHECK(SiteOfAddress(L"ftp://a") == L"ftp://a");
}
