// The class object that a server offers, called as COM calls it for a client.
#include "platform/com/class_object.h"

#include <doctest.h>

#include <windows.h>
#include <objbase.h>

#include "platform/automation_error.h"
#include "platform/com/counted_object.h"
#include "tests/support/import_fake.h"

namespace {

constexpr CLSID kClass = {0x3d2e1f00, 0x3333, 0x4444, {0x85, 0x55, 0x66, 0x66, 0x77, 0x77, 0x88, 0x88}};

constexpr DWORD kCookie = 4711;

class Made final : public CountedObject<IUnknown> {};

// A registration that has ended again; its class object stays with the test.
struct Offered {
    explicit Offered(ObjectMaker maker) {
        { const ClassRegistration registration(kClass, std::move(maker)); }
        CHECK(isRevoked);
    }

    ComPtr<IClassFactory> classObject;
    bool isRevoked = false;

    const ImportFake<"CoRegisterClassObject", decltype(&CoRegisterClassObject)> registers{
        "ole32.dll", [this](REFCLSID id, IUnknown* object, DWORD context, DWORD flags, DWORD* cookie) {
            CHECK(IsEqualGUID(id, kClass));
            CHECK(context == CLSCTX_LOCAL_SERVER);
            CHECK(flags == (REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED));
            *cookie = kCookie;
            return object->QueryInterface(IID_PPV_ARGS(&classObject));
        }};
    const ImportFake<"CoRevokeClassObject", decltype(&CoRevokeClassObject)> revokes{
        "ole32.dll", [this](DWORD cookie) {
            isRevoked = cookie == kCookie;
            return S_OK;
        }};
};

}  // namespace

TEST_CASE(
    "a class is offered to other processes, suspended, for many clients, and its object makes what is asked "
    "for, within no other object") {
    Offered offered([](REFIID id, void** object) { return MakeObject<Made>()->QueryInterface(id, object); });
    const ComPtr<IClassFactory>& classObject = offered.classObject;
    CHECK(classObject->CreateInstance(nullptr, IID_IUnknown, nullptr) == E_POINTER);
    CHECK(classObject->QueryInterface(IID_IUnknown, nullptr) == E_POINTER);
    ComPtr<IDispatch> dispatch;
    CHECK(classObject->QueryInterface(IID_PPV_ARGS(&dispatch)) == E_NOINTERFACE);
    ComPtr<IUnknown> made;
    CHECK(classObject->CreateInstance(nullptr, IID_PPV_ARGS(&made)) == S_OK);
    CHECK(made != nullptr);
    void* none = made.Get();
    CHECK(classObject->CreateInstance(made.Get(), IID_IUnknown, &none) == CLASS_E_NOAGGREGATION);
    CHECK(none == nullptr);
    none = made.Get();
    CHECK(classObject->CreateInstance(nullptr, IID_IDispatch, &none) == E_NOINTERFACE);
    CHECK(none == nullptr);
}

TEST_CASE("an object that cannot be made is an error to the client, whichever way that comes out") {
    const std::pair<ObjectMaker, HRESULT> rows[] = {
        {[](REFIID, void**) { return E_ACCESSDENIED; }, E_ACCESSDENIED},
        {[](REFIID, void**) -> HRESULT { throw std::bad_alloc(); }, E_OUTOFMEMORY},
        {[](REFIID, void**) -> HRESULT { throw AutomationError(CO_E_SERVER_STOPPING); },
         CO_E_SERVER_STOPPING},
    };
    for (const auto& [maker, result] : rows) {
        const Offered offered(maker);
        ComPtr<IUnknown> made;
        CHECK(offered.classObject->CreateInstance(nullptr, IID_PPV_ARGS(&made)) == result);
    }
}

TEST_CASE("a client's lock of the class object keeps the process until it is taken back") {
    Offered offered([](REFIID, void**) { return S_OK; });
    // The test's own, or the last unlock would end its message loop.
    const ULONG before = CoAddRefServerProcess();
    for (int locks = 0; locks < 2; ++locks)
        CHECK(offered.classObject->LockServer(TRUE) == S_OK);
    CHECK(CoAddRefServerProcess() == before + 3);
    for (int locks = 0; locks < 2; ++locks)
        CHECK(offered.classObject->LockServer(FALSE) == S_OK);
    CHECK(CoReleaseServerProcess() == before);
    CoReleaseServerProcess();
}
