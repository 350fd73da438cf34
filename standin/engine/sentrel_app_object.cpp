#include "standin/engine/sentrel_app_object.h"

#include "standin/engine/popup_object.h"

namespace {

std::wstring ClientText(long configHwnd, long configForm) {
    return L"hwnd=" + TextOf(configHwnd) + L" form=" + TextOf(configForm);
}

}  // namespace

STDMETHODIMP SentrelAppObject::CreatePopup(long configHwnd, long configForm, long* mode, _Popup** popup) {
    if (mode == nullptr || popup == nullptr) return E_POINTER;
    *popup = nullptr;
    return ComMethod([&] {
        m_engine.calls.Receive(L"CreatePopup",
                               ClientText(configHwnd, configForm) + L" mode=" + TextOf(*mode));
        *popup = MakeObject<PopupObject>(m_engine).Detach();
    });
}

STDMETHODIMP SentrelAppObject::ReleasePopup(long configHwnd, long configForm) {
    return ComMethod([&] { m_engine.calls.Receive(L"ReleasePopup", ClientText(configHwnd, configForm)); });
}
