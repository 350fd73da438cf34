// The manager as clients in other processes see it.
#include <doctest.h>

#include <cstdlib>

#include "platform/text.h"
#include "tests/support/manager.h"
#include "tests/support/program.h"
#include "tests/support/test_folder.h"
#include "tests/support/wine.h"

constexpr wchar_t kProgram[] = L"SentrelConfig.exe";

TEST_CASE("clients in script languages reach the manager, share it and end it") {
    // What the script ends with behind its last line, and in no other way.
    constexpr DWORD kDone = 77;
    const std::wstring host = std::wstring(_wgetenv(L"SystemRoot")) + L"\\system32\\cscript.exe";
    for (const wchar_t* const script : {L"two_clients.vbs", L"two_clients.js"}) {
        CAPTURE(ToAnsi(script));
        DeleteSettings();
        const std::wstring path = DataFile(std::wstring(L"tests\\scripts\\") + script);
        CHECK(RunProgram(host.c_str(), L"//nologo \"" + path + L'"') == kDone);
        const bool hasEnded = ProgramEnds(kProgram);
        CHECK(hasEnded);
        // The next script needs a manager of its own.
        if (!hasEnded) const Manager left(true);
    }
}

TEST_CASE("a manager that crashes ends the wait for it and fails the test" * doctest::should_fail()) {
    Manager manager;
    DWORD id = 0;
    GetWindowThreadProcessId(manager.Window(), &id);
    const ProcessHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, id));
    REQUIRE(TerminateProcess(process.Get(), static_cast<UINT>(STATUS_ACCESS_VIOLATION)));
    WaitUntil([] { return false; }, INFINITE);
    ForgetKilledServers();
}

TEST_CASE("clients cannot create Config themselves") {
    ComPtr<IUnknown> object;
    CHECK(CoCreateInstance(__uuidof(Config), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&object)) ==
          REGDB_E_CLASSNOTREG);
}

TEST_CASE("a control that is only created leaves no process behind, let go or told ReleaseConfig") {
    REQUIRE(ProgramEnds(kProgram));
    ComPtr<_ConfigControl> control;
    REQUIRE(CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&control)) ==
            S_OK);
    CHECK(ProcessesOf(kProgram).size() == 1);
    SUBCASE("let go") {
        control.Reset();
        CHECK(ProgramEnds(kProgram));
    }
    SUBCASE("told ReleaseConfig") {
        CHECK(control->ReleaseConfig() == S_OK);
        CHECK(ProgramEnds(kProgram));
        LONG hidden = FormHide;
        ComPtr<IDispatch> config;
        CHECK(FAILED(control->ConfigInstance(&hidden, &config)));
    }
}
