// The icon's record and the animation's timer.
#include <doctest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/pairs/clock.h"
#include "tests/support/plain_window.h"
#include "tests/tray_icon/shell_calls.h"
#include "tray/calvane_time.h"
#include "tray/notify_icon_record.h"

namespace {

std::string BytesOf(const NotifyIconRecord& record) {
    return std::string(reinterpret_cast<const char*>(&record), sizeof(record));
}

}  // namespace

TEST_CASE("the record is the 88-byte ANSI form; its tip ends with a NUL and blanks, cut at 64 characters") {
    const std::string start(
        "\x58\0\0\0"
        "\x03\x02\x01\0"
        "\x01\0\0\0"
        "\x07\0\0\0"
        "\x01\x04\0\0"
        "\x06\x05\x04\0",
        24);
    const std::string terminator(1, '\0');
    struct Row {
        std::string what;
        std::wstring tip;
        std::string bytes;
    };
    const Row rows[] = {
        {"none", L"", terminator + std::string(63, ' ')},
        {"the manager's", L"Calvane Sentrel", "Calvane Sentrel" + terminator + std::string(48, ' ')},
        {"62 characters", std::wstring(62, L'x'), std::string(62, 'x') + terminator + " "},
        {"63 characters", std::wstring(63, L'x'), std::string(63, 'x') + terminator},
        {"64 characters lose the terminator", std::wstring(64, L'x'), std::string(64, 'x')},
        {"70 characters", std::wstring(64, L'x') + L"cut me", std::string(64, 'x')},
        {"one that the code page lacks", L"\x2603!", "?!" + terminator + std::string(61, ' ')},
    };
    for (const Row& row : rows) {
        CAPTURE(row.what);
        CHECK(BytesOf(MakeNotifyIconRecord(reinterpret_cast<HWND>(0x00010203), 0x401,
                                           reinterpret_cast<HICON>(0x00040506), row.tip)) ==
              start + row.bytes);
    }
}

TEST_CASE(
    "the shell gets a copy of the record, where it finds the end of a tip without a terminator behind it, "
    "and its result is passed on") {
    const NotifyIconRecord record = MakeNotifyIconRecord(
        reinterpret_cast<HWND>(0x10), 7, reinterpret_cast<HICON>(0x20), std::wstring(64, L'x'));
    for (const BOOL result : {TRUE, FALSE}) {
        const ImportFake<"Shell_NotifyIconA", decltype(&Shell_NotifyIconA)> shell{
            "shell32.dll", [&](DWORD action, NOTIFYICONDATAA* data) {
                CHECK(action == NIM_DELETE);
                CHECK(std::string(reinterpret_cast<const char*>(data), sizeof(record) + 1) ==
                      BytesOf(record) + '\0');
                return result;
            }};
        CHECK(NotifyShell(NIM_DELETE, record) == (result != FALSE));
    }
}

TEST_CASE(
    "the timer starts with its owner's window alone and fires once per period, as it was at the start, with "
    "the same number, until it is stopped or destroyed, which its listener may do") {
    PlainWindow window;
    Clock clock;
    auto timer = std::make_unique<CalvaneTime>();
    timer->Start(nullptr);
    CHECK_FALSE(timer->Running());
    timer->Interval(100);
    timer->Start(window.Hwnd());
    // Nobody listens.
    CHECK(clock.Tick(100) == 1);
    std::vector<LONG> handles;
    timer->TimerFired = [&](LONG handle) { handles.push_back(handle); };
    timer->Interval(50);
    CHECK(clock.Tick(50) == 0);
    CHECK(clock.Tick(100) == 1);
    timer->Start(window.Hwnd());
    CHECK(clock.Tick(100) == 0);
    CHECK(clock.Tick(50) == 1);
    CHECK(handles == std::vector<LONG>(2, handles.at(0)));
    timer->Stop();
    CHECK_FALSE(timer->Running());
    CHECK_FALSE(clock.AnyRuns());
    timer->TimerFired = [&](LONG) { timer.reset(); };
    timer->Start(window.Hwnd());
    CHECK(clock.Tick(50) == 1);
    CHECK(timer == nullptr);
    CHECK_FALSE(clock.AnyRuns());
}
