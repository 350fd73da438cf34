// Registry functions that fail as told.
#pragma once

#include <windows.h>

#include "tests/support/import_patch.h"

// What the registry functions return while a test runs.
struct Faults {
    bool denyMachine = false;
    int failAt = 0;  // the number of the writing call that fails, from 1; 0 for none
    LSTATUS failure = ERROR_NO_SYSTEM_RESOURCES;
    int calls = 0;
};

// Arms the faults for its lifetime.
class FaultyRegistry {
public:
    explicit FaultyRegistry(const Faults& faults);
    FaultyRegistry(const FaultyRegistry&) = delete;
    FaultyRegistry& operator=(const FaultyRegistry&) = delete;
    ~FaultyRegistry();

    // How many writing calls there were.
    static int Calls();

private:
    ImportPatch m_create;
    ImportPatch m_set;
    ImportPatch m_open;
    ImportPatch m_delete;
    ImportPatch m_register;
};
