#include "tray/engine_leave.h"

#include <utility>

#include "platform/automation_error.h"
#include "platform/com/server_process.h"
#include "tray/patient_calls.h"

EngineLeave::EngineLeave() : m_tmAgain(kAgainInterval) {
    m_tmAgain.Tick = [this] { TakeAgain(); };
}

EngineLeave::~EngineLeave() {
    End();
}

void EngineLeave::Release(std::unique_ptr<EventConnection> events, ComPtr<_Popup> popup) noexcept {
    Take({std::move(events), std::move(popup), nullptr, 0, 0});
}

void EngineLeave::Disconnect(ComPtr<_SentrelApp> application, LONG configHwnd,
                             LONG formReferenceAddress) noexcept {
    Take({nullptr, nullptr, std::move(application), configHwnd, formReferenceAddress});
}

// What was refused earlier goes first.
void EngineLeave::Take(Step step) noexcept {
    if (m_steps.empty() && IsTaken(step)) return;
    if (!ResumeNext([&] { m_steps.push_back(std::move(step)); }) || m_isWaiting) return;
    m_isWaiting = true;
    ServerProcess::Lock();
    m_triesLeft = kTriesAgain;
    m_tmAgain.Start(nullptr);
}

bool EngineLeave::IsTaken(Step& step) noexcept {
    if (step.events != nullptr && IsRefusedForNow(step.events->Disconnect())) return false;
    step.events.reset();
    step.popup.Reset();
    return step.application == nullptr ||
           !IsRefusedForNow(step.application->ReleasePopup(step.configHwnd, step.formReferenceAddress));
}

void EngineLeave::TakeAgain() noexcept {
    m_tmAgain.Stop();
    while (!m_steps.empty() && m_triesLeft > 0) {
        // Taken out while the engine is called: what comes in meanwhile must not take the step too.
        Step step = std::move(m_steps.front());
        m_steps.erase(m_steps.begin());
        if (IsTaken(step)) continue;
        m_steps.insert(m_steps.begin(), std::move(step));
        --m_triesLeft;
        m_tmAgain.Start(nullptr);
        return;
    }
    End();
}

void EngineLeave::End() noexcept {
    m_steps.clear();
    m_tmAgain.Stop();
    if (std::exchange(m_isWaiting, false)) ServerProcess::Unlock();
}
