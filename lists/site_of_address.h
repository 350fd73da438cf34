#pragma once

#include <string>

// What stands before the first "/" at or after the eighth character; the whole address where there is none.
// "http://host/path" gives "http://host". The second slash of "https://" is the eighth character, so that any
// such address gives "https:/": this is intended.
std::wstring SiteOfAddress(const std::wstring& address);
