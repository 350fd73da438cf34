// The calls that the engine received, and what was ordered for the next ones.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "platform/handle.h"

class CallRecord {
public:
    // Ends the process without any clean-up, as a crash would; set before the first call.
    std::function<void()> Die;

    // Called first in every member of the engine's own interfaces. Writes the call down, then carries out
    // what was ordered for it: throws AutomationError for an ordered failure, and does not return from an
    // ordered death.
    void Receive(std::wstring_view member, const std::wstring& arguments = {});

    // Each throws AutomationError (5) for a member that the engine does not have, and for a result that is
    // none of a failure.
    void FailNext(const std::wstring& member, HRESULT result);
    void HoldNext(const std::wstring& member);
    void DieIn(const std::wstring& member);

    bool Stamped() const noexcept { return m_stamped; }
    void Stamped(bool stamped) noexcept { m_stamped = stamped; }

    // One call a line, each ended by CR LF.
    const std::wstring& Text() const noexcept { return m_text; }
    void Clear() noexcept { m_text.clear(); }

    // As at first: no calls, no stamps, no orders.
    void Reset() noexcept;

private:
    struct Orders {
        HRESULT result = S_OK;
        FileHandle arrived;  // both events are valid, or none
        FileHandle letGo;
        bool death = false;
    };

    static const wchar_t* Known(const std::wstring& member);

    std::wstring m_text;
    bool m_stamped = false;
    std::map<std::wstring_view, Orders> m_orders;
};
