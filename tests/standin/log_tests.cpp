#include <doctest.h>

#include "platform/text.h"
#include "tests/standin/engine_process.h"
#include "tests/support/message_pump.h"
#include "tests/support/test_folder.h"

TEST_CASE("the log lies in the user's own folder until told otherwise, and is not made by asking") {
    const EngineProcess engine;
    const wchar_t* const folder = _wgetenv(L"APPDATA");
    REQUIRE(folder != nullptr);
    CHECK(GetFileAttributesW(folder) != INVALID_FILE_ATTRIBUTES);
    const std::wstring path = std::wstring(folder) + L"\\Sentrel closed windows.log";
    DeleteFileW(path.c_str());
    CHECK(engine.LogFile() == path);
    CHECK_FALSE(FileExists(path));

    const TestFolder other;
    CHECK(engine.control->put_LogFile(Text(other.Path(L"closed.log"))) == S_OK);
    CHECK(engine.LogFile() == other.Path(L"closed.log"));
    CHECK_FALSE(FileExists(other.Path(L"closed.log")));
}

TEST_CASE("a closed pop-up is appended to the log as an ANSI line, then reported") {
    const EngineProcess engine;
    const TestFolder folder;
    const std::wstring log = folder.Path(L"closed.log");
    const ComPtr<_Popup> popup = CreatePopup();
    EventLog events(popup.Get());
    CHECK(engine.control->put_LogFile(Text(log)) == S_OK);
    CHECK(engine.control->ClosePopup(11, Text(L"http://one.example/caf\xe9")) == S_OK);
    CHECK(engine.control->ClosePopup(12, Text(L"http://two.example/")) == S_OK);
    CHECK(BytesOf(log) == ToAnsi(L"http://one.example/caf\xe9") + "\r\nhttp://two.example/\r\n");
    CHECK(events.events == Events{L"Killed 11 http://one.example/caf\xe9", L"Killed 12 http://two.example/"});
}

TEST_CASE("a log that cannot be written is an error, and nothing is reported") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    EventLog events(popup.Get());
    CHECK(engine.control->put_LogFile(Text(L"C:\\no such folder\\closed.log")) == S_OK);
    CHECK(engine.control->ClosePopup(1, Text(L"http://one.example/")) ==
          HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    PumpFor(200);
    CHECK(events.events.empty());
}
