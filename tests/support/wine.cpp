#include "tests/support/wine.h"

#include <winsvc.h>

#include "tests/support/message_pump.h"

namespace {

void WaitFor(SC_HANDLE service, DWORD state) {
    SERVICE_STATUS status{};
    for (const DWORD start = GetTickCount(); GetTickCount() - start < kPatience; Sleep(10)) {
        if (!QueryServiceStatus(service, &status) || status.dwCurrentState == state) return;
    }
}

}  // namespace

void ForgetKilledServers() {
    if (!RunsUnderWine()) return;
    const SC_HANDLE services = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    const SC_HANDLE service =
        OpenServiceW(services, L"RpcSs", SERVICE_STOP | SERVICE_START | SERVICE_QUERY_STATUS);
    SERVICE_STATUS status{};
    if (ControlService(service, SERVICE_CONTROL_STOP, &status)) WaitFor(service, SERVICE_STOPPED);
    StartServiceW(service, 0, nullptr);
    WaitFor(service, SERVICE_RUNNING);
    CloseServiceHandle(service);
    CloseServiceHandle(services);
}
