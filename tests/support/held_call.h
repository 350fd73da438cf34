// A call of the stand-in engine that waits until the test lets it go. The engine serves other calls
// meanwhile.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

#include "platform/handle.h"
#include "tests/support/message_pump.h"

class HeldCall {
public:
    // The next call of this member; the engine has been given the order.
    explicit HeldCall(const std::wstring& member)
        : m_arrived(Open(member + L".Arrived")), m_letGo(Open(member + L".LetGo")) {}
    HeldCall(const HeldCall&) = delete;
    HeldCall& operator=(const HeldCall&) = delete;
    ~HeldCall() { LetGo(); }

    bool HasArrived() const { return WaitForSingleObject(m_arrived.Get(), 0) == WAIT_OBJECT_0; }

    // Whether the call comes.
    bool Arrives() const {
        return PumpUntil([this] { return HasArrived(); });
    }

    void LetGo() const { SetEvent(m_letGo.Get()); }

private:
    static FileHandle Open(const std::wstring& name) {
        const HANDLE event =
            OpenEventW(SYNCHRONIZE | EVENT_MODIFY_STATE, FALSE, (L"SentrelStandin." + name).c_str());
        if (event == nullptr) throw std::runtime_error("the engine holds no such call");
        return FileHandle(event);
    }

    const FileHandle m_arrived;
    const FileHandle m_letGo;
};
