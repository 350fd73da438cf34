// Lets every single allocation of something fail in turn, of the program's own and of its texts for
// Automation.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <functional>
#include <string>

#include "tests/support/import_patch.h"

// Texts for Automation come from a heap of their own.
class FailingTexts {
public:
    FailingTexts() : m_patch("oleaut32.dll", "SysAllocStringLen", &Allocate) {
        s_original = m_patch.Original<Function>();
    }

private:
    using Function = decltype(&SysAllocStringLen);
    static BSTR WINAPI Allocate(const OLECHAR* text, UINT length);
    static inline Function s_original = nullptr;
    const ImportPatch m_patch;
};

// Runs body with each allocation failing, once and from there on, until it has no such allocation. prepare
// and check have memory; check is told how body ended: 0 for well, 1 for an AutomationError, 2 for bad_alloc.
long Sweep(const std::function<void()>& prepare, const std::function<void()>& body,
           const std::function<void(int ending)>& check);

// Too long for a string object to keep within itself.
std::string LongText(const char* name);
