#include "tests/window/test_manager.h"

#include <stdexcept>

#include "platform/automation_error.h"
#include "tests/support/program.h"

namespace {

ComPtr<_Control> engine;

}  // namespace

ComPtr<_Control> RunningEngine() {
    if (engine == nullptr) {
        ThrowIfFailed(CoCreateInstance(CLSID_Control, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&engine)));
    }
    return engine;
}

void EndEngine() {
    if (engine != nullptr) engine->Quit();
    engine.Reset();
    if (!ProgramEnds(L"SentrelStandin.exe")) throw std::runtime_error("the engine does not end");
}

EngineFirst::EngineFirst() {
    ThrowIfFailed(RunningEngine()->Reset());
}
