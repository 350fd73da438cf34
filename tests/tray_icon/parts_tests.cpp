#include <doctest.h>

#include <memory>
#include <vector>

#include "platform/automation_error.h"
#include "tests/pairs/clock.h"
#include "tests/support/error_of.h"
#include "tests/support/plain_window.h"
#include "tray/calvane_time.h"
#include "tray/picture_array.h"

namespace {

constexpr HRESULT kOutOfRange = HresultOf(ErrorNumber::SubscriptOutOfRange);

}  // namespace

TEST_CASE(
    "the timer starts with its owner's window alone and fires once per period, as it was at the start, with "
    "the same number, until it is stopped") {
    PlainWindow window;
    CalvaneTime timer;
    timer.Start(nullptr);
    CHECK_FALSE(timer.Running());
    Clock clock;
    std::vector<LONG> handles;
    timer.TimerFired = [&](LONG handle) { handles.push_back(handle); };
    timer.Interval(100);
    timer.Start(window.Hwnd());
    timer.Interval(50);
    CHECK(clock.Tick(50) == 0);
    CHECK(clock.Tick(100) == 1);
    timer.Start(window.Hwnd());
    CHECK(clock.Tick(100) == 0);
    CHECK(clock.Tick(50) == 1);
    CHECK(clock.Tick(50) == 1);
    CHECK(handles == std::vector<LONG>(3, handles.at(0)));
    timer.Stop();
    CHECK_FALSE(timer.Running());
    CHECK_FALSE(clock.AnyRuns());
}

TEST_CASE("a timer may be destroyed by its own listener, and a timer without a listener ticks in vain") {
    PlainWindow window;
    Clock clock;
    auto timer = std::make_unique<CalvaneTime>();
    timer->Start(window.Hwnd());
    CHECK(clock.Tick() == 1);
    timer->TimerFired = [&](LONG) { timer.reset(); };
    CHECK(clock.Tick() == 1);
    CHECK(timer == nullptr);
    CHECK_FALSE(clock.AnyRuns());
}

TEST_CASE("a picture array has the bounds asked for and empty slots, without bounds no items") {
    PictureArray pictures(-2, 1);
    CHECK(pictures.LowerBound() == -2);
    CHECK(pictures.UpperBound() == 1);
    for (LONG i = -2; i <= 1; ++i)
        CHECK(pictures.Item(i) == nullptr);
    CHECK(ErrorOf([&] { pictures.Item(-3); }) == kOutOfRange);
    CHECK(ErrorOf([&] { pictures.Item(2); }) == kOutOfRange);
    CHECK(ErrorOf([&] { pictures.Item(2, nullptr); }) == kOutOfRange);
    pictures.Clear();
    CHECK(ErrorOf([&] { pictures.LowerBound(); }) == kOutOfRange);
    CHECK(ErrorOf([&] { pictures.UpperBound(); }) == kOutOfRange);
    CHECK(ErrorOf([&] { pictures.Item(0); }) == kOutOfRange);
}
