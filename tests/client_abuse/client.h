// Clients of the manager, in threads of their own.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include "platform/automation_error.h"
#include "platform/com/variant.h"
#include "tests/support/automation.h"
#include "tests/support/manager.h"

// A client with an apartment of its own.
struct Client {
    Client() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        ThrowIfFailed(
            CoCreateInstance(__uuidof(ConfigControl), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&control)));
        long showType = FormHide;
        ThrowIfFailed(control->ConfigInstance(&showType, &config));
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() {
        config.Reset();
        control.Reset();
        CoUninitialize();
    }

    LONG Window() { return ToLong(Get(config.Get(), L"ConfigHwnd")); }

    ComPtr<_ConfigControl> control;
    ComPtr<IDispatch> config;
};

// So many clients at once. The test does not have to wait for them.
class Clients {
public:
    Clients(int count, const std::function<void(Client& client, int number)>& body)
        : m_state(std::make_shared<State>()) {
        m_state->running = count;
        for (int number = 0; number < count; ++number) {
            std::thread([body, number, state = m_state] {
                const bool isDone = ResumeNext([&] {
                    Client client;
                    body(client, number);
                });
                if (!isDone) ++state->failed;
                --state->running;
            }).detach();
        }
    }

    // Whether all of them come to their end.
    bool End(DWORD milliseconds = kPatience) const {
        return PumpUntil([this] { return m_state->running == 0; }, milliseconds) && m_state->failed == 0;
    }

private:
    struct State {
        std::atomic<int> running = 0;
        std::atomic<int> failed = 0;
    };
    const std::shared_ptr<State> m_state;
};
