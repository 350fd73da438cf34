#include "platform/com/class_object.h"

#include <utility>

#include "platform/automation_error.h"
#include "platform/com/com_method.h"
#include "platform/com/counted_object.h"
#include "platform/com/server_process.h"

namespace {

class ClassObject final : public CountedObject<IClassFactory> {
public:
    explicit ClassObject(ObjectMaker maker) : m_maker(std::move(maker)) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        return ComMethod([&] { return outer == nullptr ? m_maker(id, object) : CLASS_E_NOAGGREGATION; });
    }

    STDMETHODIMP LockServer(BOOL lock) override {
        return ComMethod([&] { lock ? ServerProcess::Lock() : ServerProcess::Unlock(); });
    }

private:
    const ObjectMaker m_maker;
};

}  // namespace

ClassRegistration::ClassRegistration(REFCLSID classId, ObjectMaker maker) {
    const ComPtr<ClassObject> classObject = MakeObject<ClassObject>(std::move(maker));
    ThrowIfFailed(CoRegisterClassObject(classId, classObject.Get(), CLSCTX_LOCAL_SERVER,
                                        REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED, &m_cookie));
    ServerProcess::Offer(m_cookie);
}

ClassRegistration::~ClassRegistration() {
    CoRevokeClassObject(m_cookie);
}
