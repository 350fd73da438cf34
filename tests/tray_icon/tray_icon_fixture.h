// An icon object on a window, with the shell's calls kept and pictures that can be told apart.
#pragma once

#include <algorithm>
#include <array>
#include <string>

#include "platform/com/com_ptr.h"
#include "platform/com/variant.h"
#include "tests/pairs/clock.h"
#include "tests/support/plain_window.h"
#include "tests/tray_icon/fake_picture_box.h"
#include "tests/tray_icon/shell_calls.h"
#include "tray/picture_array.h"
#include "tray/shell_notification.h"

inline constexpr LONG kRestHandle = 100;
inline constexpr LONG kFrameHandle = 200;  // of frame 0; 201 of frame 1, and so on
inline constexpr LONG kInterval = 250;     // of an animation, in milliseconds

inline const std::string kTipBytes = std::string("Calvane Sentrel\0", 16) + std::string(48, ' ');

struct TrayIconFixture {
    // The calls of a manager's window that is set up, as the manager makes them.
    void SetUp() {
        icon->InitShellNotify(window.Number(), 1025);
        icon->AddIcon(rest.Get());
        SetTip(L"Calvane Sentrel");
    }

    void SetTip(const std::wstring& tip) {
        const Variant text(tip);
        icon->put_ToolTip(text.Value().bstrVal);
    }

    // As many frames as asked for; the last slot stays empty, as in the manager.
    PictureArray Slots(LONG upperBound = 3) const {
        PictureArray pictures(0, upperBound);
        for (LONG i = 0; i < upperBound; ++i)
            pictures.Item(i, frames[static_cast<size_t>(i)].Get());
        return pictures;
    }

    HRESULT Animate(PictureArray pictures, LONG picsPerCycle = 1) {
        return icon->AnimateIcon(pictures.Reference(), kInterval, picsPerCycle, window.Number());
    }
    HRESULT Animate() { return Animate(Slots()); }

    // Whether nobody else holds a frame any longer.
    bool HasFramesAlone() const {
        return std::ranges::all_of(frames, [](const auto& frame) { return frame->References() == 1; });
    }

    // What the shell was asked, from a call on: "add rest, 0, 1, 2, delete, add rest", with the frames'
    // numbers. What is deleted is the record as it was sent last.
    std::string Story(size_t first = 0) const {
        std::string story;
        for (size_t i = first; i < shell.calls.size(); ++i) {
            const ShellCall& call = shell.calls[i];
            const auto handle = static_cast<LONG>(call.Icon());
            const std::string picture =
                handle == kRestHandle ? "rest" : std::to_string(handle - kFrameHandle);
            const bool isAsSent = i > 0 && call.record == shell.calls[i - 1].record;
            story += i == first ? "" : ", ";
            story += call.action == NIM_DELETE ? (isAsSent ? "delete" : "delete another")
                     : call.action == NIM_ADD  ? "add " + picture
                                               : picture;
        }
        return story;
    }

    PlainWindow window;
    ShellCalls shell;
    ComPtr<FakePictureBox> rest = MakeObject<FakePictureBox>(kRestHandle);
    const std::array<ComPtr<FakePictureBox>, 4> frames{
        MakeObject<FakePictureBox>(kFrameHandle), MakeObject<FakePictureBox>(kFrameHandle + 1),
        MakeObject<FakePictureBox>(kFrameHandle + 2), MakeObject<FakePictureBox>(kFrameHandle + 3)};
    ComPtr<ShellNotification> icon = MakeObject<ShellNotification>();
};

// What a whole animation does.
inline const std::string kRun = "0; 1; 2; delete, add rest";

// One whose timers tick when the test says so.
struct TickingIcon : TrayIconFixture {
    // What each tick of the only timer does until it stops, of those that do something.
    std::string RunToEnd(UINT interval = kInterval) {
        constexpr int kNeverEnds = 100;
        std::string run;
        for (int tick = 0; tick < kNeverEnds; ++tick) {
            const size_t before = shell.calls.size();
            if (clock.Tick(interval) != 1) break;
            run += (run.empty() || shell.calls.size() == before ? "" : "; ") + Story(before);
        }
        return clock.AnyRuns() ? run + ", and a timer runs" : run;
    }

    Clock clock;
};
