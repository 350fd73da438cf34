// What keeps the process alive, seen from inside: the same objects, made in the test's own process.
#include <doctest.h>

#include "tests/entry/inside.h"

TEST_CASE("the window, each client's control and each client's reference lock the process") {
    const ULONG before = Locks();
    {
        InsideWithoutEngine inside;
        CHECK(Locks() == before + 1);
        {
            const auto config = inside.Instance(FormHide);
            const ULONG held = Locks();
            CHECK(held > before + 1);
        }
        const ULONG loaded = Locks();
        g_frmConfig->Unload();
        CHECK(Locks() < loaded);
        CHECK(Locks() == before + 1);
        inside.control.Reset();
        CHECK(Locks() == before);
    }
    CHECK(Locks() == before);
}
