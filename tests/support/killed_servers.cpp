#include "tests/support/killed_servers.h"

#include <windows.h>
#include <winsvc.h>

#include "tests/support/manager.h"

void ForgetKilledServers() {
    const SC_HANDLE services = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    const SC_HANDLE service =
        OpenServiceW(services, L"RpcSs", SERVICE_STOP | SERVICE_START | SERVICE_QUERY_STATUS);
    SERVICE_STATUS status{};
    if (ControlService(service, SERVICE_CONTROL_STOP, &status)) {
        WaitUntil([&] {
            return !QueryServiceStatus(service, &status) || status.dwCurrentState == SERVICE_STOPPED;
        });
    }
    StartServiceW(service, 0, nullptr);
    WaitUntil(
        [&] { return QueryServiceStatus(service, &status) && status.dwCurrentState == SERVICE_RUNNING; });
    CloseServiceHandle(service);
    CloseServiceHandle(services);
}
