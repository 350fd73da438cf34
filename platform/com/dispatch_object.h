// The base of every COM object of ours: counted references and IDispatch over the type information of a dual
// interface.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include "platform/com/com_method.h"
#include "platform/com/com_ptr.h"
#include "platform/com/server_process.h"

// The type information of one interface in a type library embedded in the running executable; library is the
// number of the TYPELIB resource. Throws AutomationError when it cannot be had.
ComPtr<ITypeInfo> OwnTypeInfo(int library, REFGUID interfaceId);

// What IDispatch::Invoke does with a member of object, described by typeInfo. Arguments given to a property
// that takes none go to the default member of the object in it; DISP_E_NOTACOLLECTION where it holds none.
// Counts of arguments without the arguments are refused.
HRESULT InvokeMember(ITypeInfo* typeInfo, void* object, DISPID member, WORD flags, DISPPARAMS* arguments,
                     VARIANT* result, EXCEPINFO* exception, UINT* badArgument);

// Whose references keep the process alive. An object made for a client locks the process as long as it
// exists; one that the server itself holds (one reference) locks it only while somebody else holds it too.
enum class Holder { Client, Server };

// Interface: the dual interface; kLibrary: the TYPELIB resource that describes it. Born with one reference.
template <class Interface, int kLibrary>
class DispatchObject : public Interface, public ISupportErrorInfo {
public:
    DispatchObject(const DispatchObject&) = delete;
    DispatchObject& operator=(const DispatchObject&) = delete;

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = FindInterface(id);
        if (*object == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

    STDMETHODIMP_(ULONG) AddRef() override {
        const LONG references = InterlockedIncrement(&m_references);
        if (m_holder == Holder::Server && references == 2) ServerProcess::Lock();
        return static_cast<ULONG>(references);
    }

    STDMETHODIMP_(ULONG) Release() override {
        const LONG references = InterlockedDecrement(&m_references);
        if (m_holder == Holder::Server && references == 1) ServerProcess::Unlock();
        if (references == 0) delete this;
        return static_cast<ULONG>(references);
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) return E_POINTER;
        *count = 0;
        return ComMethod([&] { *count = 1; });
    }

    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        if (info == nullptr) return E_POINTER;
        *info = nullptr;
        return ComMethod([&] { return index == 0 ? m_typeInfo.CopyTo(info) : DISP_E_BADINDEX; });
    }

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        if (names == nullptr || ids == nullptr) return E_POINTER;
        return ComMethod([&] { return m_typeInfo->GetIDsOfNames(names, count, ids); });
    }

    STDMETHODIMP Invoke(DISPID member, REFIID id, LCID, WORD flags, DISPPARAMS* arguments, VARIANT* result,
                        EXCEPINFO* exception, UINT* badArgument) override {
        return ComMethod([&] {
            if (!IsEqualIID(id, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
            return InvokeMember(m_typeInfo.Get(), static_cast<Interface*>(this), member, flags, arguments,
                                result, exception, badArgument);
        });
    }

    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID id) override {
        return ComMethod([&] { return IsEqualIID(id, __uuidof(Interface)) ? S_OK : S_FALSE; });
    }

protected:
    explicit DispatchObject(Holder holder)
        : m_holder(holder), m_typeInfo(OwnTypeInfo(kLibrary, __uuidof(Interface))) {
        if (m_holder == Holder::Client) ServerProcess::Lock();
    }
    virtual ~DispatchObject() {
        if (m_holder == Holder::Client) ServerProcess::Unlock();
    }

    // What the object supports beside its dual interface; no reference is added. Null where it has none.
    virtual void* FindOtherInterface(REFIID) { return nullptr; }

private:
    void* FindInterface(REFIID id) {
        if (IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch) ||
            IsEqualIID(id, __uuidof(Interface))) {
            return static_cast<Interface*>(this);
        }
        if (IsEqualIID(id, IID_ISupportErrorInfo)) return static_cast<ISupportErrorInfo*>(this);
        return FindOtherInterface(id);
    }

    LONG m_references = 1;
    const Holder m_holder;
    const ComPtr<ITypeInfo> m_typeInfo;
};
