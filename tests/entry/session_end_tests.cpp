// Windows that go by a message that somebody else has sent: while this thread handles it, Windows lets no
// call out to the engine.
#include <doctest.h>

#include <atomic>
#include <thread>

#include "tests/engine_control/fake_engine.h"
#include "tests/entry/window_inside.h"
#include "tests/support/message_pump.h"

namespace {

struct SentMessages {
    SentMessages() {
        server.script.within["ReleasePopup"] = [this] {
            const bool isSent = (InSendMessageEx(nullptr) & (ISMEX_SEND | ISMEX_REPLIED)) == ISMEX_SEND;
            ++(isSent ? refused : taken);
            server.script.results["ReleasePopup"] = isSent ? RPC_E_CANTCALLOUT_ININPUTSYNCCALL : S_OK;
        };
        inside.Instance(FormHide);
    }

    // As another thread does, until the message has been handled.
    void Send(UINT message, WPARAM wParam) {
        const HWND window = Window();
        std::atomic<bool> isHandled = false;
        std::thread sender([&] {
            SendMessageW(window, message, wParam, 0);
            isHandled = true;
        });
        CHECK(PumpUntil([&] { return isHandled.load(); }));
        sender.join();
    }

    // The window has gone, and the engine hears of it once.
    void CheckLeave() {
        CHECK(PumpUntil([&] { return taken > 0; }));
        PumpFor(50);
        CHECK(taken == 1);
        CHECK_FALSE(IsWindow(Window()));
    }

    int refused = 0;
    int taken = 0;
    FakeEngine server;
    Inside inside;
};

}  // namespace

TEST_CASE_FIXTURE(SentMessages, "the end of the session reaches the engine, once, however it is announced") {
    SUBCASE("by a message that is sent") {
        Send(WM_ENDSESSION, TRUE);
    }
    SUBCASE("by a message from the thread itself") {
        SendMessageW(Window(), WM_ENDSESSION, TRUE, 0);
    }
    CheckLeave();
    CHECK(server.popup == nullptr);
}

TEST_CASE_FIXTURE(SentMessages, "a session that goes on after all leaves the window and its engine") {
    Send(WM_QUERYENDSESSION, 0);
    Send(WM_ENDSESSION, FALSE);
    PumpFor(50);
    CHECK(IsWindow(Window()));
    CHECK(refused + taken == 0);
}

TEST_CASE_FIXTURE(SentMessages, "a window that may be unloaded takes leave of the engine when it is closed") {
    g_frmConfig->put_b_OKtoUnload(VARIANT_TRUE);
    SUBCASE("by a message that is sent") {
        Send(WM_CLOSE, 0);
    }
    SUBCASE("by a message that is posted") {
        PostMessageW(Window(), WM_CLOSE, 0, 0);
    }
    CheckLeave();
}
