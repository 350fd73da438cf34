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

void Sweep(long least, const std::function<void()>& prepare, const std::function<void()>& body,
           const std::function<void(bool isDone)>& check) {
    const FailingTexts texts;
    long faults = 0;
    for (const bool isLasting : {false, true}) {
        // Where all fail from one on, neighbours come to the same.
        for (long k = 1;; k += isLasting ? 17 : 1) {
            INFO("allocation " << k << (isLasting ? " and all behind it" : ""));
            prepare();
            bool isDone = true;
            {
                const FailingAllocation failing(k, isLasting);
                try {
                    body();
                } catch (const AutomationError&) {
                    isDone = false;
                } catch (const std::bad_alloc&) {
                    isDone = false;
                }
            }
            const bool happened = FailingAllocation::Happened();
            check(isDone);
            CHECK((happened || isDone));
            if (!happened) break;
            ++faults;
        }
    }
    MESSAGE(faults << " faults");
    CHECK(faults >= least);
}
