// Memory that shows every use after its release and every step over its end as a crash. This program's own
// operator new and delete take it while a GuardedMemory exists.
#pragma once

// One at a time; one thread.
class GuardedMemory {
public:
    GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    ~GuardedMemory();

    // How many allocations there were.
    static unsigned long Allocations() noexcept;
};
