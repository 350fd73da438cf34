// The same thing done many times: what it may leave behind, and a user who ends whatever waits for one.
#pragma once

#include <windows.h>

#include <string>

#include "tests/long_runs/resources.h"

// How often something is done: count times, or as many times more as the environment variable LONG_RUN holds.
int Times(int count);

// Checks that what is kept since start is nothing but caches of Windows that fill once, and prints it. keys:
// registry keys that stay open by design. bare: what Windows itself has kept in this process for its part of
// the same thing.
void CheckKept(const std::string& what, long count, const Resources& kept, long keys, DWORD start,
               const Resources& bare = {});

// Ends the menus and dialogs of its thread as soon as they wait for a user, and counts them.
class Impatience {
public:
    Impatience();
    Impatience(const Impatience&) = delete;
    Impatience& operator=(const Impatience&) = delete;
    ~Impatience();

    long Menus() const noexcept { return s_menus; }
    long Dialogs() const noexcept { return s_dialogs; }

private:
    static LRESULT CALLBACK Watch(int code, WPARAM wParam, LPARAM lParam);

    static long s_menus;
    static long s_dialogs;
    HHOOK m_hook = nullptr;
};
