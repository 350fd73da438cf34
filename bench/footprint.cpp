// What the manager takes while it waits: memory, and over a minute of doing nothing, processor time and
// wake-ups. A timer that ran would wake it.
#include <windows.h>
#include <objbase.h>

#include <string>
#include <utility>

#include "bench/support/comparison.h"
#include "bench/support/process_figures.h"
#include "bench/support/server_client.h"
#include "store/server_directory.h"
#include "tests/support/message_pump.h"

namespace {

constexpr DWORD kSettleMilliseconds = 4000;
constexpr DWORD kRestMilliseconds = 20000;
constexpr DWORD kIdleMilliseconds = 60000;
constexpr double kWantedMemory = 1.3;
constexpr double kWantedSize = 400;  // KB

constexpr std::pair<const char*, long> kLooks[] = {{"hidden", FormHide}, {"shown", formShow}};

struct Figures {
    ProcessFigures manager;
    ProcessFigures empty;
    ProcessFigures dialog;
};

class Servers {
public:
    Servers()
        : m_folder(ServerDirectory()), m_managerFolder(m_folder.substr(0, m_folder.find_last_of(L'\\'))) {}

    void Activate(long showType, DWORD settleMilliseconds) {
        for (ServerClient* const client : {&m_manager, &m_empty, &m_dialog})
            client->Activate(showType);
        PumpFor(settleMilliseconds);
    }

    Figures Now() const {
        return {FiguresOf(m_managerFolder.c_str(), m_manager.Program()),
                FiguresOf(m_folder.c_str(), m_empty.Program()),
                FiguresOf(m_folder.c_str(), m_dialog.Program())};
    }

    void End() {
        for (ServerClient* const client : {&m_manager, &m_empty, &m_dialog})
            client->End();
    }

    std::wstring ManagerPath() const { return m_managerFolder + L'\\' + m_manager.Program(); }

private:
    const std::wstring m_folder;
    const std::wstring m_managerFolder;
    ServerClient m_manager;
    ServerClient m_empty{kEmptyServer};
    ServerClient m_dialog{kDialogServer};
};

void ReportMemory(const char* size, const Figures& figures) {
    const auto amount = [](const ProcessFigures& process) { return static_cast<double>(process.memory); };
    const Amount manager{"the manager's process", amount(figures.manager)};
    ReportAmounts("Private memory", size, manager,
                  {"a bare server with an empty window", amount(figures.empty)}, "KB", kWantedMemory);
    ReportAmounts("Private memory", size, manager,
                  {"a bare server with the same controls and an icon", amount(figures.dialog)}, "KB",
                  kWantedMemory);
}

void ReportIdle(const char* size, const Figures& before, const Figures& after) {
    const auto text = [](const char* name, const ProcessFigures& from, const ProcessFigures& to) {
        return std::string(name) + ": " + std::to_string(to.cpu - from.cpu) + " ms of processor time, " +
               std::to_string(WakeUpsBetween(from, to)) + " wake-ups";
    };
    const bool isReached =
        after.manager.cpu == before.manager.cpu &&
        WakeUpsBetween(before.manager, after.manager) <= WakeUpsBetween(before.empty, after.empty);
    ReportFigure("Idle for 60 s", size,
                 text("the manager", before.manager, after.manager) + "; " +
                     text("a bare server with an empty window", before.empty, after.empty),
                 "none: " + Verdict(isReached));
}

// Without an engine, which the bare servers do not have either.
void CompareMemory(Servers& servers) {
    for (const auto& [size, showType] : kLooks) {
        servers.Activate(showType, kSettleMilliseconds);
        ReportMemory(size, servers.Now());
    }
    servers.End();
}

// Connected to an engine that runs. What the making of the window leaves to be done by other threads of COM
// is done within half a minute.
void CompareIdleness(Servers& servers) {
    const ComPtr<IDispatch> control = StartEngine();
    for (const auto& [size, showType] : kLooks) {
        servers.Activate(showType, kRestMilliseconds);
        const Figures before = servers.Now();
        PumpFor(kIdleMilliseconds);
        ReportIdle(size, before, servers.Now());
    }
    servers.End();
    EndEngine(control.Get());
}

void ReportSize(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA file{};
    GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &file);
    const double kilobytes = file.nFileSizeLow / 1024.0;
    ReportFigure("Size of the program", "`SentrelConfig.exe`",
                 std::to_string(static_cast<int>(kilobytes + 0.5)) + " KB",
                 "400 KB: " + Verdict(kilobytes <= kWantedSize));
}

void Run() {
    const BareServerRegistration emptyServer(kEmptyServer);
    const BareServerRegistration dialogServer(kDialogServer);
    Servers servers;
    CompareIdleness(servers);
    const NoEngineRegistered noEngine;
    CompareMemory(servers);
    ReportSize(servers.ManagerPath());
}

}  // namespace

int wmain() {
    return RunBenchmark(Run);
}
