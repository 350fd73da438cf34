#include <doctest.h>

#include <memory>

#include "platform/automation_error.h"
#include "platform/com/com_ptr.h"
#include "tests/support/error_of.h"
#include "tests/support/message_pump.h"
#include "tests/support/plain_window.h"
#include "tests/tray_icon/fake_picture_box.h"
#include "tray/calvane_time.h"
#include "tray/picture_array.h"

namespace {

constexpr HRESULT kOutOfRange = HresultOf(ErrorNumber::SubscriptOutOfRange);

}  // namespace

TEST_CASE(
    "the timer fires once per period, as it was at the start, with the same number, until it is stopped") {
    PlainWindow window;
    CalvaneTime timer;
    std::vector<DWORD> times;
    std::vector<LONG> handles;
    timer.TimerFired = [&](LONG handle) {
        times.push_back(GetTickCount());
        handles.push_back(handle);
    };
    timer.Interval(1000000);
    timer.Start(window.Hwnd());
    timer.Interval(100);
    PumpFor(150);
    CHECK(times.empty());
    const DWORD start = GetTickCount();
    timer.Start(window.Hwnd());
    REQUIRE(PumpUntil([&] { return times.size() == 3; }));
    timer.Stop();
    CHECK_FALSE(timer.Running());
    PumpFor(250);
    REQUIRE(times.size() == 3);
    CHECK(times[0] - start >= 80);
    CHECK(times[2] - start >= 280);
    CHECK(handles == std::vector<LONG>(3, handles[0]));
}

TEST_CASE("a timer may be destroyed by its own listener, and a timer without a listener ticks in vain") {
    PlainWindow window;
    auto timer = std::make_unique<CalvaneTime>();
    timer->Interval(10);
    timer->Start(window.Hwnd());
    PumpFor(40);
    int fired = 0;
    timer->TimerFired = [&](LONG) {
        timer.reset();
        ++fired;
    };
    REQUIRE(PumpUntil([&] { return fired > 0; }));
    PumpFor(40);
    CHECK(fired == 1);
}

TEST_CASE("a timer does not start without its owner's window") {
    CalvaneTime timer;
    timer.Interval(10);
    timer.Start(nullptr);
    CHECK_FALSE(timer.Running());
}

TEST_CASE("a picture array has the bounds asked for and empty slots, without bounds no items") {
    PictureArray pictures(0, 3);
    CHECK(pictures.LowerBound() == 0);
    CHECK(pictures.UpperBound() == 3);
    for (LONG i = 0; i <= 3; ++i)
        CHECK(pictures.Item(i) == nullptr);
    CHECK(ErrorOf([&] { pictures.Item(-1); }) == kOutOfRange);
    CHECK(ErrorOf([&] { pictures.Item(4); }) == kOutOfRange);
    CHECK(ErrorOf([&] { pictures.Item(4, nullptr); }) == kOutOfRange);

    const PictureArray none;
    CHECK(ErrorOf([&] { none.LowerBound(); }) == kOutOfRange);
    CHECK(ErrorOf([&] { none.UpperBound(); }) == kOutOfRange);
    CHECK(ErrorOf([&] { none.Item(0); }) == kOutOfRange);
    CHECK(ErrorOf([] { PictureArray copy(nullptr); }) == kOutOfRange);
}

TEST_CASE("a copy of a picture array has the same bounds and references of its own") {
    const auto box = MakeObject<FakePictureBox>(1);
    PictureArray pictures(-2, 1);
    pictures.Item(-2, box.Get());
    CHECK(box->References() == 2);
    PictureArray copy(*pictures.Reference());
    CHECK(copy.LowerBound() == -2);
    CHECK(copy.UpperBound() == 1);
    CHECK(copy.Item(-2).Get() == box.Get());
    CHECK(box->References() == 3);
    pictures.Clear();
    CHECK(box->References() == 2);
    CHECK(ErrorOf([&] { pictures.UpperBound(); }) == kOutOfRange);
    copy = PictureArray();
    CHECK(box->References() == 1);
}
