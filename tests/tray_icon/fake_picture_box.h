// A picture box whose picture has the icon handle that a test chose.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <functional>

#include "platform/com/counted_object.h"

// It is its own picture: its property Picture is the object itself, whose default property is the handle.
class FakePictureBox final : public CountedObject<IDispatch> {
public:
    explicit FakePictureBox(LONG handle) : m_handle(handle) {}

    LONG References() {
        AddRef();
        return static_cast<LONG>(Release());
    }

    // Called each time somebody asks for the picture, before it is returned.
    std::function<void()> asked;

    // Called when the handle of the picture has been given, before that call returns.
    std::function<void()> answered;

    // Called when the last reference goes.
    std::function<void()> gone;

    // What asking for the picture returns.
    HRESULT result = S_OK;

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        if (count != 1 || lstrcmpiW(names[0], L"Picture") != 0) return DISP_E_UNKNOWNNAME;
        ids[0] = kPicture;
        return S_OK;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* value, EXCEPINFO*,
                        UINT*) override {
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

private:
    static constexpr DISPID kPicture = 17;

    ~FakePictureBox() override {
        if (gone) gone();
    }

    const LONG m_handle;
};
