#include "tests/out_of_memory/memory_sweep.h"

#include <doctest.h>

#include <cstdlib>
#include <new>

#include "platform/automation_error.h"

void* operator new(std::size_t size) {
    if (FailingAllocation::IsNext()) throw std::bad_alloc();
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

long Sweep(const std::function<void()>& prepare, const std::function<void()>& body,
           const std::function<void(int ending)>& check) {
    long faults = 0;
    for (const bool isLasting : {false, true}) {
        // Where all fail from one on, neighbours come to the same.
        for (long k = 1;; k += isLasting ? 17 : 1) {
            INFO("allocation " << k << (isLasting ? " and all behind it" : ""));
            prepare();
            int ending = 0;
            {
                const FailingAllocation failing(k, isLasting);
                try {
                    body();
                } catch (const AutomationError&) {
                    ending = 1;
                } catch (const std::bad_alloc&) {
                    ending = 2;
                }
            }
            const bool happened = FailingAllocation::Happened();
            check(ending);
            if (!happened) {
                CHECK(ending == 0);
                break;
            }
            ++faults;
        }
    }
    MESSAGE(faults << " faults");
    return faults;
}
