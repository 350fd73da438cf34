// The manager where no engine can be reached.
#include <doctest.h>

#include <commctrl.h>

#include <stdexcept>

#include "platform/handle.h"
#include "platform/com/own_type_library.h"
#include "sentrel1.h"
#include "tests/support/automation.h"
#include "tests/support/manager.h"
#include "tests/support/shown_text.h"
#include "tests/support/wine.h"
#include "tests/window/other_process.h"
#include "tests/window/test_manager.h"

namespace {

// Takes the registration of the engine's class away for a while.
class NoRegisteredEngine {
public:
    NoRegisteredEngine() {
        EndEngine();
        Move(m_server, m_hidden);
        ComPtr<IUnknown> engine;
        REQUIRE(FAILED(
            CoCreateInstance(__uuidof(SentrelApp), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&engine))));
    }
    NoRegisteredEngine(const NoRegisteredEngine&) = delete;
    NoRegisteredEngine& operator=(const NoRegisteredEngine&) = delete;
    ~NoRegisteredEngine() { Move(m_hidden, m_server); }

private:
    // Under Wine classes are registered for the machine, on Windows for the user.
    static void Move(const std::wstring& from, const std::wstring& to) {
        const HKEY hive = RunsUnderWine() ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
        const std::wstring classes = L"Software\\Classes\\CLSID\\";
        HKEY created = nullptr;
        if (RegCreateKeyExW(hive, (classes + to).c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &created,
                            nullptr) != ERROR_SUCCESS) {
            throw std::runtime_error("the engine's registration cannot be written");
        }
        const RegistryKey key(created);
        if (RegCopyTreeW(hive, (classes + from).c_str(), key.Get()) != ERROR_SUCCESS) {
            throw std::runtime_error("the engine is not registered");
        }
        RegDeleteTreeW(hive, (classes + from).c_str());
    }

    const std::wstring m_server = GuidText(__uuidof(SentrelApp));
    const std::wstring m_hidden = m_server + L"-hidden";
};

}  // namespace

TEST_CASE("without an engine the window loads, shows, saves and closes") {
    const NoRegisteredEngine none;
    Manager manager;
    manager.Instance(formShow);
    CHECK(IsWindowVisible(manager.Window()));
    const Variant popup = Get(manager.Form().Get(), L"m_oPopup");
    CHECK(popup.Value().vt == VT_DISPATCH);
    CHECK(popup.Value().pdispVal == nullptr);
    CHECK(Get(manager.Form().Get(), L"m_oShellIcon").Value().pdispVal != nullptr);
    CHECK(manager.Text(L"txtSpeed") == L"6");
    CHECK(ListViewRows(manager.Control(L"lvwSearchURLs")).size() == 6);

    manager.Click(L"chkBeep");
    CHECK(IsWindowEnabled(manager.Control(L"cmdApply")));
    manager.Click(L"cmdRefreshLog");
    CHECK(ListBoxRows(manager.Control(L"lstClosedWnd")).empty());
    manager.Click(L"cmdApply");
    CHECK_FALSE(IsWindowEnabled(manager.Control(L"cmdApply")));
    CHECK(Setting(L"Settings", L"chkBeep") == L"1");
    SendMessageW(manager.Window(), WM_CLOSE, 0, 0);
    CHECK_FALSE(IsWindowVisible(manager.Window()));
    CHECK(manager.Control()->ReleaseConfig() == S_OK);
    CHECK(manager.WaitForEnd());
    manager.LetGo();
}
