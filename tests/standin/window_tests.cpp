// The stand-in engine's window.
#include <doctest.h>

#include "platform/text.h"
#include "standin/engine/resource.h"
#include "tests/standin/client.h"
#include "tests/support/automation.h"
#include "tests/support/message_pump.h"
#include "tests/support/other_process.h"
#include "tests/support/test_folder.h"

namespace {

HWND EngineWindow() {
    return FindWindowW(nullptr, L"Sentrel Stand-in");
}

std::wstring ControlText(int id) {
    return ShownText(GetDlgItem(EngineWindow(), id));
}

void Click(int id) {
    PostMessageW(EngineWindow(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
}

}  // namespace

TEST_CASE_FIXTURE(Client, "started by hand, the engine that serves the clients opens its window") {
    const TestFolder folder;
    const std::wstring logFile = folder.Path(L"closed.log");
    const EventLog log(popup.Get());
    Set(L"LogFile", logFile);
    const std::vector<DWORD> serving = ProcessesOf(kStandInProgram);
    CHECK(EngineWindow() == nullptr);
    CHECK(RunProgram(kStandInProgram) == 0);
    CHECK(IsWindowVisible(EngineWindow()));
    CHECK(ProcessesOf(kStandInProgram) == serving);
    CHECK(ControlText(IDC_STATE) == L"Running");

    struct Row {
        int button;
        std::wstring event;
        std::wstring state;
    };
    Lines expected;
    for (const Row& row : {Row{IDC_STOP, L"Stopped", L"Stopped"}, Row{IDC_PAUSE, L"Paused", L"Paused"},
                           Row{IDC_START, L"Started", L"Running"}}) {
        Click(row.button);
        expected.push_back(row.event);
        CHECK(PumpUntil([&] { return log.events == expected; }));
        CHECK(ControlText(IDC_STATE) == row.state);
    }
    State(8);
    CHECK(ControlText(IDC_STATE) == L"State 8");

    const std::wstring address = ControlText(IDC_ADDRESS);
    CHECK(address.starts_with(L"http://"));
    Click(IDC_CLOSE_POPUP);
    CHECK(PumpUntil([&] { return log.events.size() == 4; }));
    CHECK(log.events.back() == L"Killed 0 " + address);
    CHECK(BytesOf(logFile) == ToAnsi(address) + "\r\n");
    End();
}

TEST_CASE("an open window keeps the engine running; closing it ends one that no client holds") {
    StandIn::End();
    CHECK(RunProgram(kStandInProgram) == 0);
    const HWND window = EngineWindow();
    REQUIRE(window != nullptr);
    {
        const Client client;
        PostMessageW(window, WM_CLOSE, 0, 0);
        CHECK(PumpUntil([] { return EngineWindow() == nullptr; }));
        CHECK(client.State() == 1);
        StandIn::End();
    }
    CHECK(RunProgram(kStandInProgram) == 0);
    Client::NewPopup().Reset();
    PumpFor(500);
    const HWND second = EngineWindow();
    REQUIRE(second != nullptr);
    // Started once more, it brings the same window to the front.
    CHECK(RunProgram(kStandInProgram) == 0);
    CHECK(EngineWindow() == second);
    PostMessageW(second, WM_CLOSE, 0, 0);
    CHECK(ProgramEnds(kStandInProgram));
}
