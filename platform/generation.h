// What a part may assume after a call out of the process.
//
// Such a call (of the engine, of a client's object, of a source of events) lets other work in before it
// returns: clients' calls, events, messages, timers, and so any member of the part that makes it. A part
// therefore
//   - holds references of its own to what it calls and to whatever it goes on with afterwards, and
//   - takes what it knew before the call as old. It notes its generation before the call. Where another
//     generation has begun when the call returns, newer work has done or undone what was under way: the rest
//     of the older work is left.
#pragma once

class Generation {
public:
    // A note of the generation that was the current one. Valid as long as its Generation exists.
    class Mark {
    public:
        bool IsCurrent() const noexcept { return m_number == m_generation.m_number; }

    private:
        friend class Generation;
        explicit Mark(const Generation& generation) noexcept
            : m_generation(generation), m_number(generation.m_number) {}

        const Generation& m_generation;
        const unsigned m_number;
    };

    Generation() noexcept = default;
    Generation(const Generation&) = delete;
    Generation& operator=(const Generation&) = delete;

    // Begins a generation. All earlier ones are over, whether or not anybody notes the new one.
    Mark Begin() noexcept {
        ++m_number;
        return Current();
    }

    Mark Current() const noexcept { return Mark(*this); }

private:
    unsigned m_number = 0;
};
