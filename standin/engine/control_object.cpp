#include "standin/engine/control_object.h"

#include "platform/com/bstr.h"

namespace {

// The body of a property's get: stores what read returns.
template <class Value, class Read>
HRESULT Get(Value* value, Read&& read) {
    if (value == nullptr) return E_POINTER;
    return ComMethod([&] { *value = read(); });
}

VARIANT_BOOL Flag(bool flag) {
    return flag ? VARIANT_TRUE : VARIANT_FALSE;
}

}  // namespace

STDMETHODIMP ControlObject::get_State(long* value) {
    return Get(value, [&] { return m_engine.State(); });
}

STDMETHODIMP ControlObject::put_State(long value) {
    return ComMethod([&] { m_engine.State(value); });
}

STDMETHODIMP ControlObject::get_LogFile(BSTR* value) {
    return ReturnText(m_engine.logFile, value);
}

STDMETHODIMP ControlObject::put_LogFile(BSTR value) {
    return ComMethod([&] { m_engine.logFile = ViewOf(value); });
}

STDMETHODIMP ControlObject::get_Calls(BSTR* value) {
    return ReturnText(m_engine.calls.Text(), value);
}

STDMETHODIMP ControlObject::get_Stamped(VARIANT_BOOL* value) {
    return Get(value, [&] { return Flag(m_engine.calls.Stamped()); });
}

STDMETHODIMP ControlObject::put_Stamped(VARIANT_BOOL value) {
    return ComMethod([&] { m_engine.calls.Stamped(value != VARIANT_FALSE); });
}

STDMETHODIMP ControlObject::get_RaiseByItself(VARIANT_BOOL* value) {
    return Get(value, [&] { return Flag(m_engine.raiseByItself); });
}

STDMETHODIMP ControlObject::put_RaiseByItself(VARIANT_BOOL value) {
    return ComMethod([&] { m_engine.raiseByItself = value != VARIANT_FALSE; });
}

STDMETHODIMP ControlObject::get_WatchValue(BSTR* value) {
    return ReturnText(m_engine.watchValue, value);
}

STDMETHODIMP ControlObject::put_WatchValue(BSTR value) {
    return ComMethod([&] { m_engine.watchValue = ViewOf(value); });
}

STDMETHODIMP ControlObject::get_Popups(long* value) {
    return Get(value, [&] { return static_cast<long>(m_engine.PopupCount()); });
}

STDMETHODIMP ControlObject::get_Connections(long* value) {
    return Get(value, [&] { return static_cast<long>(m_engine.ConnectionCount()); });
}

STDMETHODIMP ControlObject::RaiseKilled(long hwnd, BSTR caption) {
    return ComMethod([&] { m_engine.RaiseKilled(hwnd, std::wstring(ViewOf(caption))); });
}

STDMETHODIMP ControlObject::RaisePaused() {
    return ComMethod([&] { m_engine.RaisePaused(); });
}

STDMETHODIMP ControlObject::RaiseStarted() {
    return ComMethod([&] { m_engine.RaiseStarted(); });
}

STDMETHODIMP ControlObject::RaiseStopped() {
    return ComMethod([&] { m_engine.RaiseStopped(); });
}

STDMETHODIMP ControlObject::ClosePopup(long hwnd, BSTR address) {
    return ComMethod([&] { m_engine.ClosePopup(hwnd, std::wstring(ViewOf(address))); });
}

STDMETHODIMP ControlObject::ClearCalls() {
    m_engine.calls.Clear();
    return S_OK;
}

STDMETHODIMP ControlObject::FailNext(BSTR member, long result) {
    return ComMethod([&] { m_engine.calls.FailNext(std::wstring(ViewOf(member)), result); });
}

STDMETHODIMP ControlObject::HoldNext(BSTR member) {
    return ComMethod([&] { m_engine.calls.HoldNext(std::wstring(ViewOf(member))); });
}

STDMETHODIMP ControlObject::DieIn(BSTR member) {
    return ComMethod([&] { m_engine.calls.DieIn(std::wstring(ViewOf(member))); });
}

STDMETHODIMP ControlObject::OpenWindow() {
    return ComMethod(m_openWindow);
}

STDMETHODIMP ControlObject::Quit() {
    return ComMethod(m_engine.calls.Die);
}

STDMETHODIMP ControlObject::Reset() {
    return ComMethod([&] { m_engine.Reset(); });
}
