// A refresh of the log asks the engine for the path, reads what is needed of the file, and does nothing else.
#include "lists/newest_lines.h"
#include "tests/call_counts/counted_manager.h"

namespace {

std::string DistinctLines(int count) {
    std::string bytes;
    for (int n = 0; n < count; ++n)
        bytes += "http://ads" + std::to_string(n) + ".example.com/popup.html\r\n";
    return bytes;
}

void CheckRefresh(CountedManager& manager, const std::string& bytes, int blocks) {
    manager.folder.Write(L"closed.log", bytes);
    manager.Press(L"cmdRefreshLog");
    CHECK(manager.counter.Files() == ReadingOf(blocks));
    CHECK(manager.engine.script.calls == EngineCalls{"LogFile"});
    CHECK(manager.counter.Registry().empty());
    CHECK(manager.counter.Shell().empty());
    CHECK(manager.counter.Timers().empty());
}

}  // namespace

TEST_CASE_FIXTURE(CountedManager,
                  "a refresh opens the log once and reads its last block, however long it is") {
    Start();
    CheckRefresh(*this, "", 0);
    CheckRefresh(*this, "A", 1);
    CheckRefresh(*this, DistinctLines(24), 1);
    CheckRefresh(*this, DistinctLines(25), 1);
    CheckRefresh(*this, DistinctLines(100000), 1);
}

TEST_CASE_FIXTURE(CountedManager,
                  "a refresh of a log with fewer than 25 different lines reads each block once") {
    Start();
    constexpr size_t kBlocks = 5;
    std::string bytes;
    while (bytes.size() < kBlocks * kLogBlockSize)
        bytes += "A\n";
    CheckRefresh(*this, bytes, kBlocks);
    CheckRefresh(*this, bytes + "A\n", kBlocks + 1);
}

TEST_CASE_FIXTURE(CountedManager, "a refresh without an engine opens nothing") {
    engine.script.createsNothing = true;
    Start();
    Press(L"cmdRefreshLog");
    CHECK(counter.Files().empty());
    CHECK(counter.Registry().empty());
    CHECK(engine.script.calls.empty());
}
