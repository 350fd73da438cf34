// Lets allocations of this program fail.
#pragma once

// While it exists, the kth call of operator new fails, counted from 1; all behind it too where isLasting. One
// at a time.
class FailingAllocation {
public:
    FailingAllocation(long k, bool isLasting) noexcept;
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation();

    // Of the one that exists, or else of the last one.
    static bool Happened() noexcept;
    static bool IsLasting() noexcept;

    // Counts an allocation and says whether it fails. For allocations that do not come from operator new.
    static bool IsNext() noexcept;
};
