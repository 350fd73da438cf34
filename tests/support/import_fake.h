// A function that this program imports, played by a body of the test's own.
#pragma once

#include <windows.h>

#include <algorithm>
#include <functional>

#include "tests/support/import_patch.h"

// The name of a function as an argument of a template.
template <size_t size>
struct ImportName {
    consteval ImportName(const char (&name)[size]) { std::copy_n(name, size, text); }
    char text[size];
};

template <ImportName name, class Function>
class ImportFake;

// ImportFake<"MessageBeep", decltype(&MessageBeep)> beep{"user32.dll", [](UINT) { return FALSE; }};
// Of several for one function the last one plays it; they end in reverse.
template <ImportName name, class Result, class... Arguments>
class ImportFake<name, Result(WINAPI*)(Arguments...)> {
public:
    ImportFake(const char* module, std::function<Result(Arguments...)> body)
        : m_body(std::move(body)), m_patch(module, name.text, &Call) {
        s_current = this;
    }
    ~ImportFake() { s_current = m_outer; }

    // Calls the function that was replaced.
    Result Original(Arguments... arguments) const {
        if (m_outer != nullptr) return m_outer->m_body(arguments...);
        return m_patch.template Original<Result(WINAPI*)(Arguments...)>()(arguments...);
    }

private:
    static Result WINAPI Call(Arguments... arguments) { return s_current->m_body(arguments...); }

    static inline const ImportFake* s_current = nullptr;
    const ImportFake* const m_outer = s_current;
    const std::function<Result(Arguments...)> m_body;
    const ImportPatch m_patch;
};
