#include <doctest.h>

#include "platform/text.h"
#include "standin/engine/resource.h"
#include "tests/standin/engine_process.h"
#include "tests/support/message_pump.h"
#include "tests/support/test_folder.h"

namespace {

constexpr wchar_t kWindowTitle[] = L"Sentrel Stand-in";

HWND EngineWindow() {
    return FindWindowW(nullptr, kWindowTitle);
}

void Click(int id) {
    PostMessageW(EngineWindow(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(EngineWindow(), id)));
}

std::wstring ControlText(int id) {
    wchar_t text[256] = L"";
    SendDlgItemMessageW(EngineWindow(), id, WM_GETTEXT, 256, reinterpret_cast<LPARAM>(text));
    return text;
}

}  // namespace

TEST_CASE("started by hand, the engine that serves the clients opens its window") {
    const EngineProcess engine;
    const TestFolder folder;
    const std::wstring log = folder.Path(L"closed.log");
    const ComPtr<_Popup> popup = CreatePopup();
    EventLog events(popup.Get());
    CHECK(engine.control->put_LogFile(Text(log)) == S_OK);
    CHECK(EngineWindow() == nullptr);
    const std::vector<DWORD> serving = EngineProcesses();
    REQUIRE(serving.size() == 1);

    CHECK(RunProgram(kEngineProgram) == 0);
    REQUIRE(EngineWindow() != nullptr);
    CHECK(IsWindowVisible(EngineWindow()));
    DWORD owner = 0;
    GetWindowThreadProcessId(EngineWindow(), &owner);
    CHECK(owner == serving[0]);
    CHECK(EngineProcesses() == serving);
    CHECK(ControlText(IDC_STATE) == L"Running");

    struct Row {
        int button;
        const wchar_t* state;
    };
    Events expected;
    for (const Row& row :
         {Row{IDC_STOP, L"Stopped"}, Row{IDC_PAUSE, L"Paused"}, Row{IDC_START, L"Started"}}) {
        Click(row.button);
        expected.push_back(row.state);
        CHECK(PumpUntil([&] { return events.events == expected; }));
        CHECK(ControlText(IDC_STATE) == (row.button == IDC_START ? L"Running" : expected.back()));
    }
    CHECK(engine.control->put_State(8) == S_OK);
    CHECK(ControlText(IDC_STATE) == L"State 8");

    const std::wstring address = ControlText(IDC_ADDRESS);
    CHECK(address.starts_with(L"http://"));
    Click(IDC_CLOSE_POPUP);
    CHECK(PumpUntil([&] { return events.events.size() == 4; }));
    CHECK(events.events.back() == L"Killed 0 " + address);
    CHECK(BytesOf(log) == ToAnsi(address) + "\r\n");
    EndEngine();
}

TEST_CASE("an open window keeps the engine running, closing it ends it") {
    EndEngine();
    CHECK(RunProgram(kEngineProgram) == 0);
    REQUIRE(EngineWindow() != nullptr);
    {
        const ComPtr<_Popup> popup = CreatePopup();
        CHECK(EngineProcesses().size() == 1);
    }
    PumpFor(500);
    CHECK(EngineProcesses().size() == 1);
    // A second start brings the same window to the front.
    const HWND window = EngineWindow();
    CHECK(RunProgram(kEngineProgram) == 0);
    CHECK(EngineWindow() == window);
    PostMessageW(window, WM_CLOSE, 0, 0);
    CHECK(EngineEnds());
}

TEST_CASE("closing the window leaves an engine running that clients hold") {
    const EngineProcess engine;
    CHECK(engine.control->OpenWindow() == S_OK);
    REQUIRE(EngineWindow() != nullptr);
    PostMessageW(EngineWindow(), WM_CLOSE, 0, 0);
    CHECK(PumpUntil([] { return EngineWindow() == nullptr; }));
    CHECK(engine.State() == 1);
    CHECK(engine.control->OpenWindow() == S_OK);
    CHECK(EngineWindow() != nullptr);
    EndEngine();
}
