#include <doctest.h>

#include "platform/com/variant.h"
#include "tests/standin/engine_process.h"
#include "tests/support/automation.h"

namespace {

// A value below HKEY_CURRENT_USER, gone after the test.
struct TestValue {
    static constexpr wchar_t kKey[] = L"Software\\Calvane Standin Tests";

    static void Write(DWORD type, std::string_view data) {
        HKEY key = nullptr;
        REQUIRE(RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr) ==
                ERROR_SUCCESS);
        CHECK(RegSetValueExA(key, "txtSpeed", 0, type, reinterpret_cast<const BYTE*>(data.data()),
                             static_cast<DWORD>(data.size())) == ERROR_SUCCESS);
        RegCloseKey(key);
    }

    ~TestValue() { RegDeleteKeyW(HKEY_CURRENT_USER, kKey); }
};

}  // namespace

TEST_CASE("the calls are written down in their order with their arguments, and CreatePopup leaves the mode") {
    const EngineProcess engine;
    const ComPtr<_SentrelApp> app = Create<_SentrelApp>(CLSID_SentrelApp);
    const ComPtr<_Popup> popup = CreatePopup();
    CHECK(engine.Calls() == L"CreatePopup hwnd=1234 form=5678 mode=2\r\n");
    CHECK(engine.control->ClearCalls() == S_OK);
    for (const Member& member : Members())
        CHECK(member.call(*app.Get(), *popup.Get()) == S_OK);
    CHECK(engine.Calls() ==
          L"CreatePopup hwnd=1 form=2 mode=2\r\nReleasePopup hwnd=1 form=2\r\nState\r\nStart\r\nStop\r\n"
          L"Pause\r\nReloadSettings\r\nLogFile\r\n");
    CHECK(engine.control->ClearCalls() == S_OK);
    CHECK(engine.Calls() == L"");
    long mode = 3;
    ComPtr<_Popup> other;
    CHECK(app->CreatePopup(-1, -2, &mode, &other) == S_OK);
    CHECK(mode == 3);
    CHECK(engine.Calls() == L"CreatePopup hwnd=-1 form=-2 mode=3\r\n");
}

TEST_CASE("the members of the engine object stand in the order that its clients were built with") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    CHECK(engine.control->ClearCalls() == S_OK);

    // The first seven slots are IDispatch's.
    void* const* const slots = *reinterpret_cast<void* const* const*>(popup.Get());
    using Property = HRESULT(STDMETHODCALLTYPE*)(void*, void*);
    using Method = HRESULT(STDMETHODCALLTYPE*)(void*);
    long state = 0;
    BSTR log = nullptr;
    CHECK(reinterpret_cast<Property>(slots[7])(popup.Get(), &state) == S_OK);
    for (int slot = 8; slot <= 11; ++slot)
        CHECK(reinterpret_cast<Method>(slots[slot])(popup.Get()) == S_OK);
    CHECK(reinterpret_cast<Property>(slots[12])(popup.Get(), &log) == S_OK);
    CHECK(TakeText(log) == engine.LogFile());
    CHECK(engine.Calls() == L"State\r\nStart\r\nStop\r\nPause\r\nReloadSettings\r\nLogFile\r\n");
}

TEST_CASE("scripts reach the controls by name") {
    const EngineProcess engine;
    const ComPtr<IDispatch> script = CreateByName(L"SentrelStandin.Control");
    CHECK_THROWS(Get(script.Get(), L"NoSuchMember"));
    Put(script.Get(), L"state", 3L);
    CHECK(engine.State() == 3);
    CHECK(ToLong(Get(script.Get(), L"State")) == 3);
    CLSID classId{};
    REQUIRE(CLSIDFromProgID(L"Sentrel1.SentrelApp", &classId) == S_OK);
    CHECK(IsEqualCLSID(classId, CLSID_SentrelApp));
}

TEST_CASE("stamped lines start with the time of the call") {
    const EngineProcess engine;
    const ComPtr<_Popup> popup = CreatePopup();
    CHECK(engine.control->ClearCalls() == S_OK);
    CHECK(engine.control->put_Stamped(VARIANT_TRUE) == S_OK);
    const DWORD before = GetTickCount();
    CHECK(popup->Start() == S_OK);
    const DWORD after = GetTickCount();
    const std::wstring calls = engine.Calls();
    size_t digits = 0;
    const DWORD stamp = std::stoul(calls, &digits);
    CHECK(calls.substr(digits) == L" Start\r\n");
    CHECK(stamp >= before);
    CHECK(stamp <= after);
}

TEST_CASE("ReloadSettings tells what a watched value held when it arrived") {
    const EngineProcess engine;
    const TestValue value;
    const ComPtr<_Popup> popup = CreatePopup();
    const auto reload = [&] {
        CHECK(engine.control->ClearCalls() == S_OK);
        CHECK(popup->ReloadSettings() == S_OK);
        return engine.Calls();
    };
    CHECK(engine.control->put_WatchValue(Text(std::wstring(TestValue::kKey) + L"\\txtSpeed")) == S_OK);
    CHECK(reload() == L"ReloadSettings txtSpeed missing\r\n");
    struct Row {
        DWORD type;
        std::string_view stored;
        const wchar_t* told;
    };
    // Settings are stored without a terminating NUL.
    for (const Row& row : {Row{REG_SZ, "1000", L"=1000"}, Row{REG_SZ, "500", L"=500"}, Row{REG_SZ, "", L"="},
                           Row{REG_DWORD, "four", L" unreadable"}}) {
        TestValue::Write(row.type, row.stored);
        CHECK(reload() == std::wstring(L"ReloadSettings txtSpeed") + row.told + L"\r\n");
    }
    CHECK(engine.control->put_WatchValue(nullptr) == S_OK);
    CHECK(reload() == L"ReloadSettings\r\n");
}
