// The base of small COM objects that never leave the process's own interfaces: counted references, one
// interface.
#pragma once

#include <windows.h>
#include <unknwn.h>

// Born with one reference; the last release deletes it.
template <class Interface>
class CountedObject : public Interface {
public:
    CountedObject(const CountedObject&) = delete;
    CountedObject& operator=(const CountedObject&) = delete;

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(id, IID_IUnknown) && !Supports(id)) return E_NOINTERFACE;
        *object = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }

    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }

    STDMETHODIMP_(ULONG) Release() override {
        const LONG references = InterlockedDecrement(&m_references);
        if (references == 0) delete this;
        return static_cast<ULONG>(references);
    }

protected:
    CountedObject() = default;
    virtual ~CountedObject() = default;

    // Whether id names an interface that Interface serves for.
    virtual bool Supports(REFIID id) const { return IsEqualIID(id, __uuidof(Interface)); }

private:
    LONG m_references = 1;
};
