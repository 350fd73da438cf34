#include "tests/tray_icon/fake_picture_box.h"

namespace {

constexpr DISPID kPicture = 17;

}  // namespace

STDMETHODIMP FakePictureBox::QueryInterface(REFIID id, void** object) {
    *object = nullptr;
    if (!IsEqualIID(id, IID_IUnknown) && !IsEqualIID(id, IID_IDispatch)) return E_NOINTERFACE;
    *object = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) FakePictureBox::Release() {
    const LONG references = --m_references;
    if (references == 0) delete this;
    return static_cast<ULONG>(references);
}

STDMETHODIMP FakePictureBox::GetTypeInfoCount(UINT* count) {
    *count = 0;
    return S_OK;
}

STDMETHODIMP FakePictureBox::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
    if (count != 1 || lstrcmpiW(names[0], L"Picture") != 0) return DISP_E_UNKNOWNNAME;
    ids[0] = kPicture;
    return S_OK;
}

STDMETHODIMP FakePictureBox::Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* value,
                                    EXCEPINFO*, UINT*) {
    if (member == kPicture) {
        if (asked) asked();
        if (FAILED(result)) return result;
        value->vt = VT_DISPATCH;
        value->pdispVal = this;
        AddRef();
        return S_OK;
    }
    if (member != DISPID_VALUE) return DISP_E_MEMBERNOTFOUND;
    value->vt = VT_I4;
    value->lVal = m_handle;
    if (answered) answered();
    return S_OK;
}
