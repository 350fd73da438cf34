// A picture box whose picture has the icon handle that a test chose.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <functional>

#include "platform/com/com_ptr.h"

// It is its own picture: its property Picture is the object itself, whose default property is the handle.
class FakePictureBox final : public IDispatch {
public:
    explicit FakePictureBox(LONG handle) : m_handle(handle) {}

    LONG References() const noexcept { return m_references; }

    // Called each time somebody asks for the picture, before it is returned.
    std::function<void()> asked;

    // Called when the handle of the picture has been given, before that call returns.
    std::function<void()> answered;

    // Called when the last reference goes.
    std::function<void()> gone;

    // What asking for the picture returns.
    HRESULT result = S_OK;

    STDMETHODIMP QueryInterface(REFIID id, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++m_references); }
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override;
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* value, EXCEPINFO*,
                        UINT*) override;

private:
    ~FakePictureBox() {
        if (gone) gone();
    }

    LONG m_references = 1;
    const LONG m_handle;
};
