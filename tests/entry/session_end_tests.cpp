// Windows that go by a message that somebody else has sent: while this thread handles it, Windows lets no
// call out to the engine.
#include <doctest.h>

#include <atomic>
#include <thread>

#include "tests/engine_control/fake_engine.h"
#include "tests/entry/window_inside.h"
#include "tests/support/message_pump.h"

namespace {

enum class How { Sent, SentByItself, Posted };

// Sent: as another thread does it, until the message has been handled.
void Deliver(How how, UINT message, WPARAM wParam) {
    const HWND window = Window();
    if (how == How::SentByItself) SendMessageW(window, message, wParam, 0);
    if (how == How::Posted) PostMessageW(window, message, wParam, 0);
    if (how != How::Sent) return;
    std::atomic<bool> isHandled = false;
    std::thread sender([&] {
        SendMessageW(window, message, wParam, 0);
        isHandled = true;
    });
    CHECK(PumpUntil([&] { return isHandled.load(); }));
    sender.join();
}

}  // namespace

TEST_CASE("the engine hears once of a window that goes, however that is told, and not of one that stays") {
    const struct {
        const char* what;
        How how;
        UINT message;
        WPARAM wParam;
        bool mayUnload;
        bool goes;
    } rows[] = {
        {"the end of the session", How::Sent, WM_ENDSESSION, TRUE, false, true},
        {"the end of the session, told by itself", How::SentByItself, WM_ENDSESSION, TRUE, false, true},
        {"a question whether the session may end", How::Sent, WM_QUERYENDSESSION, 0, false, false},
        {"a session that goes on after all", How::Sent, WM_ENDSESSION, FALSE, false, false},
        {"a close of a window that may be unloaded", How::Sent, WM_CLOSE, 0, true, true},
        {"the same, posted", How::Posted, WM_CLOSE, 0, true, true},
    };
    for (const auto& [what, how, message, wParam, mayUnload, goes] : rows) {
        CAPTURE(what);
        int refused = 0;
        int taken = 0;
        FakeEngine server;
        server.script.within["ReleasePopup"] = [&] {
            const bool isSent = (InSendMessageEx(nullptr) & (ISMEX_SEND | ISMEX_REPLIED)) == ISMEX_SEND;
            ++(isSent ? refused : taken);
            server.script.results["ReleasePopup"] = isSent ? RPC_E_CANTCALLOUT_ININPUTSYNCCALL : S_OK;
        };
        Inside inside;
        inside.Instance(FormHide);
        if (mayUnload) g_frmConfig->put_b_OKtoUnload(VARIANT_TRUE);
        Deliver(how, message, wParam);
        if (goes) CHECK(PumpUntil([&] { return taken > 0; }));
        PumpFor(50);
        CHECK(taken == (goes ? 1 : 0));
        CHECK((IsWindow(Window()) == FALSE) == goes);
        CHECK((server.popup == nullptr) == goes);
        if (!goes) CHECK(refused == 0);
    }
}
