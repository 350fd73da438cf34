// Calls of Automation objects that make no sense.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <map>
#include <vector>

#include "platform/com/com_ptr.h"
#include "tests/client_abuse/chance.h"

struct Target {
    ComPtr<IDispatch> object;
    std::vector<DISPID> members;
    std::vector<DISPID> never;  // of them, those that are not called
};

class RandomCalls {
public:
    // windows: handles that may be passed as numbers. isNear: the objects are of this process, where places
    // for results and arguments may be missing altogether.
    RandomCalls(Chance& chance, std::vector<Target> targets, std::vector<LONG> windows, bool isNear);
    RandomCalls(const RandomCalls&) = delete;
    RandomCalls& operator=(const RandomCalls&) = delete;
    ~RandomCalls();

    void One();

    // How often each result came.
    const std::map<HRESULT, long>& Results() const noexcept { return m_results; }
    long Calls() const noexcept { return m_calls; }

private:
    HRESULT Invoke(const Target& target);
    HRESULT Ask(const Target& target);
    VARIANT Argument();

    Chance& m_chance;
    const std::vector<Target> m_targets;
    const std::vector<LONG> m_windows;
    const bool m_isNear;
    std::map<HRESULT, long> m_results;
    long m_calls = 0;

    // What arguments by reference refer to.
    LONG m_long = 0;
    SHORT m_short = 0;
    VARIANT m_variant{};
    SAFEARRAY* m_array = nullptr;
};
