// The manager of a test, with an engine that outlives it: starting a process through COM takes a second.
#pragma once

#include "standin.h"
#include "tests/support/manager.h"

// The orders of the running engine; it is started where none runs.
ComPtr<_Control> RunningEngine();

// Ends the engine and waits until it is gone.
void EndEngine();

struct EngineFirst {
    EngineFirst();
};

class TestManager : private EngineFirst, public Manager {
public:
    using Manager::Manager;
};
