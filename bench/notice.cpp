// From the engine's word that it closed a pop-up to the first sound and the first picture of the animation,
// beside an event that reaches nobody but an empty sink.
#include <windows.h>
#include <objbase.h>
#include <shellapi.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

#include "bench/support/comparison.h"
#include "bench/support/config_in_process.h"
#include "bench/support/server_client.h"
#include "platform/automation_error.h"
#include "platform/com/event_connection.h"
#include "sentrel1.h"
#include "tests/engine_control/fake_engine.h"
#include "tests/support/automation.h"
#include "tests/support/import_patch.h"
#include "tests/support/message_pump.h"
#include "tests/support/sound_patch.h"

namespace {

constexpr UINT kFrameInterval = 250;
constexpr DISPID kKilled = 1;
constexpr double kWantedAbove = 1;  // milliseconds

// When the first of them happened since Reset; 0 where it has not.
double g_sound = 0;
double g_frame = 0;
double g_event = 0;
double g_tick = 0;

void Note(double& moment) {
    if (moment == 0) moment = Milliseconds();
}

BOOL WINAPI Sound(LPCSTR, UINT) {
    Note(g_sound);
    return TRUE;
}

BOOL WINAPI Icon(DWORD action, PNOTIFYICONDATAA) {
    if (action == NIM_MODIFY) Note(g_frame);
    return TRUE;
}

void CALLBACK Tick(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    Note(g_tick);
}

const std::vector<Variant> kArguments{4711L, L"http://ads.example.com/popup.html"};

using Raiser = std::function<void()>;

// Raises the event and returns how long after that the moment came.
double TimeTo(const Raiser& raise, double& moment) {
    g_sound = g_frame = g_event = g_tick = 0;
    const double start = Milliseconds();
    raise();
    if (!PumpUntil([&] { return moment != 0; })) throw std::runtime_error("the event had no effect");
    return moment - start;
}

// A client of the engine that does nothing with its event but start a timer where one is asked for.
class EmptySink {
public:
    explicit EmptySink(bool startsTimer) {
        ThrowIfFailed(CoCreateInstance(__uuidof(SentrelApp), nullptr, CLSCTX_LOCAL_SERVER,
                                       IID_PPV_ARGS(&m_application)));
        long mode = 2;
        ThrowIfFailed(m_application->CreatePopup(0, 0, &mode, &m_popup));
        EventHandlers handlers;
        handlers[kKilled] = [=](const DISPPARAMS&) {
            Note(g_event);
            if (startsTimer) SetTimer(nullptr, 0, kFrameInterval, &Tick);
        };
        m_events = std::make_unique<EventConnection>(m_popup.Get(), __uuidof(__Popup), std::move(handlers));
    }

private:
    ComPtr<_SentrelApp> m_application;
    ComPtr<_Popup> m_popup;
    std::unique_ptr<EventConnection> m_events;
};

// measuredMoment, besideMoment: when the manager's window and the empty sink did what is waited for.
void Compare(const char* what, const char* size, const Raiser& raise, const char* measured,
             double& measuredMoment, const char* beside, double& besideMoment, int rounds) {
    ConfigInProcess config;
    std::unique_ptr<EmptySink> sink;
    const bool startsTimer = &besideMoment == &g_tick;
    Report({.what = what,
            .size = size,
            .measured = {measured, [] {}, [&] { config.Make(); },
                         [&] {
                             config.Unmake();
                             Settle(nullptr);
                         },
                         [&] { return TimeTo(raise, measuredMoment); }},
            .beside = {beside, [] {}, [&] { sink = std::make_unique<EmptySink>(startsTimer); },
                       [&] { sink.reset(); }, [&] { return TimeTo(raise, besideMoment); }},
            .rounds = rounds,
            .wantedAbove = kWantedAbove});
}

void Run() {
    const SoundPatch sound(&Sound);
    const ImportPatch icon("shell32.dll", "Shell_NotifyIconA", &Icon);
    const char* const toSound = "`Killed` to `sndPlaySoundA`";
    const char* const toSink = "`Killed` to an empty sink";
    const char* const soundCall = "Closed pop-up to the first sound call";
    {
        FakeEngine engine;
        Compare(
            soundCall, "engine in this process", [&] { engine.Raise(kKilled, kArguments); }, toSound, g_sound,
            toSink, g_event, 41);
    }
    const ComPtr<IDispatch> control = StartEngine();
    const Raiser raise = [&] { Call(control.Get(), L"RaiseKilled", kArguments); };
    Compare(soundCall, "engine in another process", raise, toSound, g_sound, toSink, g_event, 41);
    Compare("Closed pop-up to the first frame of the icon", "engine in another process", raise,
            "`Killed` to `Shell_NotifyIconA`", g_frame, "`Killed` to a sink's own first tick, 250 ms later",
            g_tick, 31);
    EndEngine(control.Get());
}

}  // namespace

int wmain() {
    return RunBenchmark(Run);
}
