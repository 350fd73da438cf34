// Explorer's announcement of a new taskbar.
#include <doctest.h>

#include <vector>

#include "tests/entry/window_inside.h"

namespace {

// To a window of a program of more rights than the sender's Windows delivers no message but those that the
// window lets in.
struct Filter : InsideWithoutEngine {
    static BOOL WINAPI Change(HWND window, UINT message, DWORD action, CHANGEFILTERSTRUCT* status) {
        CHECK(status == nullptr);
        if (action == MSGFLT_ALLOW) s_allowed.push_back({window, message});
        return TRUE;
    }

    using Allowed = std::vector<std::pair<HWND, UINT>>;
    static inline Allowed s_allowed;
    const ImportPatch patch{"user32.dll", "ChangeWindowMessageFilterEx", &Change};
};

}  // namespace

TEST_CASE_FIXTURE(Filter,
                  "a manager of more rights than Explorer hears of a new taskbar, and of nothing else") {
    const UINT taskbarCreated = RegisterWindowMessageW(L"TaskbarCreated");
    Instance(FormHide);
    // Of each window that is made.
    for (int i = 0; i < 2; ++i) {
        CHECK(s_allowed == Allowed{{Window(), taskbarCreated}});
        s_allowed.clear();
        g_frmConfig->Unload();
        g_frmConfig->Handle();
    }
}
