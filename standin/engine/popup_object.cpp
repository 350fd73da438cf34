#include "standin/engine/popup_object.h"

#include "platform/com/bstr.h"

PopupObject::PopupObject(Engine& engine)
    : DispatchObject(Holder::Client), m_engine(engine), m_events(*static_cast<_Popup*>(this), DIID___Popup) {
    m_engine.Enter(this);
}

void* PopupObject::FindOtherInterface(REFIID id) {
    return IsEqualIID(id, IID_IConnectionPointContainer) ? m_events.Container() : nullptr;
}

STDMETHODIMP PopupObject::get_State(long* value) {
    if (value == nullptr) return E_POINTER;
    return ComMethod([&] {
        m_engine.calls.Receive(L"State");
        *value = m_engine.State();
    });
}

STDMETHODIMP PopupObject::Start() {
    return ComMethod([&] {
        m_engine.calls.Receive(L"Start");
        m_engine.Start();
    });
}

STDMETHODIMP PopupObject::Stop() {
    return ComMethod([&] {
        m_engine.calls.Receive(L"Stop");
        m_engine.Stop();
    });
}

STDMETHODIMP PopupObject::Pause() {
    return ComMethod([&] {
        m_engine.calls.Receive(L"Pause");
        m_engine.Pause();
    });
}

STDMETHODIMP PopupObject::ReloadSettings() {
    return ComMethod([&] { m_engine.ReloadSettings(); });
}

STDMETHODIMP PopupObject::get_LogFile(BSTR* value) {
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    return ComMethod([&] {
        m_engine.calls.Receive(L"LogFile");
        *value = NewBstr(m_engine.logFile);
    });
}
