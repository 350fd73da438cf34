// Explorer's announcement of a new taskbar.
#include <doctest.h>

#include <vector>

#include "tests/entry/window_inside.h"

namespace {

// To a window of a program of more rights than the sender's Windows delivers no message but those that the
// window lets in.
struct Filter {
    static BOOL WINAPI Change(HWND window, UINT message, DWORD action, CHANGEFILTERSTRUCT* status) {
        CHECK(status == nullptr);
        if (action == MSGFLT_ALLOW) s_allowed.push_back({window, message});
        return TRUE;
    }

    static inline std::vector<std::pair<HWND, UINT>> s_allowed;
    const ImportPatch patch{"user32.dll", "ChangeWindowMessageFilterEx", &Change};
};

using Allowed = std::vector<std::pair<HWND, UINT>>;

}  // namespace

TEST_CASE("a manager of more rights than Explorer hears of a new taskbar, and of nothing else") {
    Filter::s_allowed.clear();
    const Filter filter;
    InsideWithoutEngine inside;
    inside.Instance(FormHide);
    const UINT taskbarCreated = RegisterWindowMessageW(L"TaskbarCreated");
    CHECK(Filter::s_allowed == Allowed{{Window(), taskbarCreated}});
    // A window that is made later, too.
    g_frmConfig->Unload();
    Filter::s_allowed.clear();
    g_frmConfig->Handle();
    CHECK(Filter::s_allowed == Allowed{{Window(), taskbarCreated}});
}
