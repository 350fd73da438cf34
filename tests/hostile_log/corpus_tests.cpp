// What the fuzzers have found worth keeping, replayed.
#include "platform/text.h"
#include "tests/fuzz/targets.h"
#include "tests/support/shown_text.h"
#include "tests/support/test_folder.h"

namespace {

long Replay(const wchar_t* name, bool (*agrees)(const std::uint8_t*, std::size_t)) {
    const std::wstring folder = DataFile(L"tests\\fuzz\\corpus\\") + name;
    WIN32_FIND_DATAW entry{};
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    REQUIRE(search != INVALID_HANDLE_VALUE);
    long count = 0;
    do {
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
        const std::wstring file = entry.cFileName;
        CAPTURE(file);
        const std::string bytes = BytesOf(folder + L'\\' + file);
        CHECK(agrees(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
        ++count;
    } while (FindNextFileW(search, &entry));
    FindClose(search);
    return count;
}

}  // namespace

TEST_CASE("the inputs of the fuzzers' corpus come to what the plain way comes to") {
    const long lines = Replay(L"newest_lines", NewestLinesAgree);
    const long sites = Replay(L"site_of_address", SiteAgrees);
    const long values = Replay(L"byte_order", ByteOrderAgrees);
    CHECK(lines >= 20);
    CHECK(sites >= 8);
    CHECK(values >= 12);
    MESSAGE("corpus: " << lines << " logs, " << sites << " addresses, " << values << " values");
}
