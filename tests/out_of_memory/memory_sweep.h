// Lets every single allocation of something fail in turn, of the program's own and of its texts for
// Automation.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <functional>

#include "tests/support/import_fake.h"

// While it exists, the kth call of operator new fails, counted from 1; all behind it too where isLasting. One
// at a time.
class FailingAllocation {
public:
    explicit FailingAllocation(long k, bool isLasting = false) noexcept {
        s_isLasting = isLasting;
        s_happened = false;
        s_left = k - 1;
    }
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation() { s_left = -1; }

    // Of the one that exists, or else of the last one.
    static bool Happened() noexcept { return s_happened; }
    static bool IsLasting() noexcept { return s_isLasting; }

    // Counts an allocation and says whether it fails.
    static bool IsNext() noexcept {
        if (s_left < 0 || s_left-- > 0) return false;
        s_happened = true;
        if (s_isLasting) s_left = 0;
        return true;
    }

private:
    // How many allocations still succeed before one fails; below 0 none fails.
    static inline long s_left = -1;
    static inline bool s_isLasting = false;
    static inline bool s_happened = false;
};

// Texts for Automation come from a heap of their own; while it exists they fail like the others.
struct FailingTexts {
    const ImportFake<"SysAllocStringLen", decltype(&SysAllocStringLen)> allocate{
        "oleaut32.dll", [this](const OLECHAR* text, UINT length) {
            return FailingAllocation::IsNext() ? nullptr : allocate.Original(text, length);
        }};
};

// Runs body with each allocation failing, once and from there on, until it has no such allocation; there are
// at least so many. prepare and check have memory; check is told whether body ended without an exception.
void Sweep(long least, const std::function<void()>& prepare, const std::function<void()>& body,
           const std::function<void(bool isDone)>& check);
