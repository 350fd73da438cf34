#include "tests/fault_sweep/memory_sweep.h"

#include <doctest.h>

#include <new>

#include "platform/automation_error.h"
#include "tests/fault_sweep/failing_allocation.h"

BSTR WINAPI FailingTexts::Allocate(const OLECHAR* text, UINT length) {
    return FailingAllocation::IsNext() ? nullptr : s_original(text, length);
}

long Sweep(const std::function<void()>& prepare, const std::function<void()>& body,
           const std::function<void(int ending)>& check) {
    long faults = 0;
    for (const bool isLasting : {false, true}) {
        // Where all fail from one on, neighbours come to the same.
        for (long k = 1;; k += isLasting ? 7 : 1) {
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
    return faults;
}

std::string LongText(const char* name) {
    return std::string(name) + " with a name that is too long for a string object to keep within itself";
}
