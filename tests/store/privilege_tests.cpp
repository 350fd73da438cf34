// How a privilege of the process is enabled.
#include <doctest.h>

#include <string>
#include <vector>

#include "platform/handle.h"
#include "store/registry.h"
#include "tests/support/import_fake.h"

namespace {

constexpr DWORD kLuid = 4711;

// Plays the calls for the process token, writes them down and fails one of them.
struct Token {
    const std::string fails;
    std::vector<std::string> calls{};
    const FileHandle handle{CreateEventW(nullptr, FALSE, FALSE, nullptr)};

    BOOL Note(const std::string& call) {
        calls.push_back(call);
        return fails.empty() || !call.starts_with(fails);
    }

    const ImportFake<"OpenProcessToken", decltype(&OpenProcessToken)> open{
        "advapi32.dll", [this](HANDLE process, DWORD access, PHANDLE opened) {
            CHECK(process == GetCurrentProcess());
            *opened = handle.Get();
            return Note("open " + std::to_string(access));
        }};
    const ImportFake<"LookupPrivilegeValueA", decltype(&LookupPrivilegeValueA)> lookup{
        "advapi32.dll", [this](LPCSTR system, LPCSTR privilege, PLUID luid) {
            *luid = {kLuid, 0};
            return Note("look up " + std::string(privilege) + " on " + (system == nullptr ? "null" : system));
        }};
    const ImportFake<"AdjustTokenPrivileges", decltype(&AdjustTokenPrivileges)> adjust{
        "advapi32.dll", [this](HANDLE token, BOOL disableAll, PTOKEN_PRIVILEGES privileges, auto...) {
            const LUID_AND_ATTRIBUTES& asked = privileges->Privileges[0];
            CHECK(token == handle.Get());
            CHECK(asked.Luid.LowPart == kLuid);
            return Note("adjust " + std::to_string(disableAll) + ", " +
                        std::to_string(privileges->PrivilegeCount) + " to " +
                        std::to_string(asked.Attributes));
        }};
};

}  // namespace

TEST_CASE(
    "a privilege is enabled whatever the caller asks for; a step that fails ends that; the token stays "
    "open") {
    const std::vector<std::string> steps{"open 40", "look up SeBackupPrivilege on 0", "adjust 0, 1 to 2"};
    const std::tuple<std::string, bool, long> rows[] = {
        {"", true, 3}, {"", false, 3}, {"open", true, 1}, {"look up", true, 2}, {"adjust", true, 3}};
    for (const auto& [fails, asked, made] : rows) {
        CAPTURE(fails);
        CAPTURE(asked);
        const Token seen{fails};
        CHECK(Registry().AdjustPrivilege(kBackupPrivilege, asked) == fails.empty());
        CHECK(seen.calls == std::vector<std::string>(steps.begin(), steps.begin() + made));
        DWORD flags = 0;
        CHECK(GetHandleInformation(seen.handle.Get(), &flags));
    }
}
