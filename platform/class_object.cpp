#include "platform/class_object.h"

#include <utility>

#include "platform/automation_error.h"
#include "platform/com_method.h"
#include "platform/server_process.h"

namespace {

class ClassObject final : public IClassFactory {
public:
    explicit ClassObject(ObjectMaker maker) : m_maker(std::move(maker)) {}

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(id, IID_IUnknown) && !IsEqualIID(id, IID_IClassFactory)) return E_NOINTERFACE;
        *object = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }

    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }

    STDMETHODIMP_(ULONG) Release() override {
        const LONG references = InterlockedDecrement(&m_references);
        if (references == 0) delete this;
        return static_cast<ULONG>(references);
    }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        return ComMethod([&] { ThrowIfFailed(m_maker(id, object)); });
    }

    STDMETHODIMP LockServer(BOOL lock) override {
        lock ? ServerProcess::Lock() : ServerProcess::Unlock();
        return S_OK;
    }

private:
    ~ClassObject() = default;

    LONG m_references = 1;
    const ObjectMaker m_maker;
};

}  // namespace

ClassRegistration::ClassRegistration(REFCLSID classId, ObjectMaker maker) {
    const ComPtr<ClassObject> classObject = MakeObject<ClassObject>(std::move(maker));
    ThrowIfFailed(CoRegisterClassObject(classId, classObject.Get(), CLSCTX_LOCAL_SERVER,
                                        REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED, &m_cookie));
}

ClassRegistration::~ClassRegistration() {
    CoRevokeClassObject(m_cookie);
}
