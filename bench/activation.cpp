// What a client waits for: from the creation of the manager's class to the return of its first
// ConfigInstance, with the start of the process.
#include <windows.h>
#include <objbase.h>

#include "bench/support/comparison.h"
#include "bench/support/server_client.h"
#include "store/settings_schema.h"

namespace {

constexpr int kRounds = 9;
constexpr double kWanted = 1.25;

void Write(const wchar_t* key, const std::wstring& name, const std::wstring& text) {
    RegSetKeyValueW(HKEY_CURRENT_USER, key, name.c_str(), REG_SZ, text.c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

void EmptyStore() {
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Calvane");
}

// The settings of somebody who has used the manager for years.
void FullStore() {
    for (const Schema::Setting& setting : Schema::kOptionDefaults)
        Write(Schema::kSettingsKey, setting.name, setting.text);
    for (const Schema::Setting& setting : Schema::kClosingDefaults)
        Write(Schema::kSettingsKey, setting.name, setting.text);
    for (int n = 0; n < 200; ++n)
        Write(Schema::kExcludeKey, std::to_wstring(n), L"http://site" + std::to_wstring(n) + L".example");
    for (int n = 1; n <= 24; ++n) {
        Write(Schema::kBannersKey, std::to_wstring(n) + L"Name", L"User Banner " + std::to_wstring(n));
        Write(Schema::kBannersKey, std::to_wstring(n) + L"Width", L"468");
        Write(Schema::kBannersKey, std::to_wstring(n) + L"Height", L"60");
        Write(Schema::kBannersKey, std::to_wstring(n) + L"Use", L"True");
    }
    for (int n = 1; n <= 12; ++n) {
        Write(Schema::kSearchKey, std::to_wstring(n) + L"Name", L"Engine " + std::to_wstring(n));
        Write(Schema::kSearchKey, std::to_wstring(n) + L"Url", L"http://engine.example/?q=");
        Write(Schema::kSearchKey, std::to_wstring(n) + L"Use", L"True");
    }
}

// The whole of it; or the call alone, to a process that runs already.
enum class Part { Whole, Call };

Side Start(Part part, const char* name, ServerClient& client, const std::function<void()>& fillStore) {
    return {name, [&] { client.Activate(FormHide); },
            [&client, part, fillStore] {
                EmptyStore();
                fillStore();
                if (part == Part::Call) client.Create();
            },
            [&] { client.End(); }};
}

void Compare(const char* size, const std::function<void()>& fillStore) {
    ServerClient manager;
    ServerClient empty(kEmptyServer);
    ServerClient dialog(kDialogServer);
    const char* const emptyName = "a bare server with an empty window";
    const char* const dialogName = "a bare server with the same controls and an icon";
    Report({.what = "Activation",
            .size = size,
            .measured = Start(Part::Whole, "creation and first `ConfigInstance(2)`", manager, fillStore),
            .beside = Start(Part::Whole, emptyName, empty, fillStore),
            .rounds = kRounds,
            .wanted = kWanted});
    const Side call = Start(Part::Call, "`ConfigInstance(2)` alone", manager, fillStore);
    Report({.what = "Activation",
            .size = size,
            .measured = call,
            .beside = Start(Part::Call, emptyName, empty, fillStore),
            .rounds = kRounds});
    Report({.what = "Activation",
            .size = size,
            .measured = call,
            .beside = Start(Part::Call, dialogName, dialog, fillStore),
            .rounds = kRounds});
}

// The engine runs already: what the manager asks of it at its start.
void CompareWithEngine() {
    const ComPtr<IDispatch> control = StartEngine();
    ServerClient manager;
    ServerClient empty(kEmptyServer);
    Report({.what = "Activation",
            .size = "full settings, with an engine that runs",
            .measured = Start(Part::Whole, "creation and first `ConfigInstance(2)`", manager, FullStore),
            .beside = Start(Part::Whole, "a bare server with an empty window, which asks no engine", empty,
                            FullStore),
            .rounds = kRounds});
    EndEngine(control.Get());
}

void Run() {
    const BareServerRegistration emptyServer(kEmptyServer);
    const BareServerRegistration dialogServer(kDialogServer);
    CompareWithEngine();
    const NoEngineRegistered noEngine;
    Compare("first run", [] {});
    Compare("full settings", FullStore);
    EmptyStore();
}

}  // namespace

int wmain() {
    return RunBenchmark(Run);
}
