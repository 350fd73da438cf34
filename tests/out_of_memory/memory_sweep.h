// Lets every single allocation of something fail in turn, of the program's own and of its texts for
// Automation.
#pragma once

#include <doctest.h>

#include <windows.h>
#include <oleauto.h>

#include <string>

#include "platform/automation_error.h"
#include "tests/support/import_fake.h"

// Each allocation of a piece of work by itself, then all of them from one on, until the work has no more:
//     for (Faults faults(100); faults.Next();) {
//         CAPTURE(faults.Name());
//         const bool isDone = faults.In([] { ... });
class Faults {
public:
    // There are at least so many.
    explicit Faults(long least) : m_least(least) {}
    ~Faults() {
        MESSAGE(m_faults << " faults");
        CHECK(m_faults >= m_least);
    }

    bool Next() {
        if (m_call == 0) {
            m_call = 1;
        } else if (s_happened) {
            m_call += m_isLasting ? 17 : 1;  // where all fail from one on, neighbours come to the same
        } else {
            if (m_isLasting) return false;
            m_isLasting = true;
            m_call = 1;
        }
        return true;
    }

    // Does the work with the fault and returns whether it ended without an exception.
    template <class Work>
    bool In(Work work) {
        s_isLasting = m_isLasting;
        s_happened = false;
        s_left = m_call - 1;
        const bool isDone = ResumeNext(work);
        s_left = -1;
        CHECK((s_happened || isDone));
        if (s_happened) ++m_faults;
        return isDone;
    }

    bool Happened() const noexcept { return s_happened; }
    bool IsLasting() const noexcept { return m_isLasting; }
    std::string Name() const {
        return "allocation " + std::to_string(m_call) + (m_isLasting ? " and all behind it" : "");
    }

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

    const long m_least;
    long m_faults = 0;
    long m_call = 0;
    bool m_isLasting = false;
    // Texts for Automation come from a heap of their own.
    const ImportFake<"SysAllocStringLen", decltype(&SysAllocStringLen)> m_texts{
        "oleaut32.dll", [this](const OLECHAR* text, UINT length) {
            return IsNext() ? nullptr : m_texts.Original(text, length);
        }};
};
