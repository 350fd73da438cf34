// An icon object on a window, with the shell's calls kept and pictures that can be told apart.
#pragma once

#include <array>
#include <string>

#include "platform/com/com_ptr.h"
#include "platform/com/variant.h"
#include "tests/support/plain_window.h"
#include "tests/tray_icon/fake_picture_box.h"
#include "tests/tray_icon/shell_calls.h"
#include "tray/picture_array.h"
#include "tray/shell_notification.h"

inline constexpr LONG kRestHandle = 100;
inline constexpr LONG kFrameHandle = 200;  // of frame 0; 201 of frame 1, and so on

struct TrayIconFixture {
    TrayIconFixture() : icon(MakeObject<ShellNotification>()) {
        for (LONG i = 0; i < 4; ++i)
            frames[static_cast<size_t>(i)] = MakeObject<FakePictureBox>(kFrameHandle + i);
    }

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

    HRESULT Animate(LONG interval, LONG upperBound = 3, LONG picsPerCycle = 1) {
        PictureArray pictures = Slots(upperBound);
        return icon->AnimateIcon(pictures.Reference(), interval, picsPerCycle, window.Number());
    }

    PlainWindow window;
    ShellCalls shell;
    ComPtr<FakePictureBox> rest = MakeObject<FakePictureBox>(kRestHandle);
    std::array<ComPtr<FakePictureBox>, 4> frames;
    ComPtr<ShellNotification> icon;
};
