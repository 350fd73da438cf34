// What the objects tell scripts about themselves, and how long they keep the process.
#include <doctest.h>

#include "tests/entry/inside.h"

TEST_CASE_FIXTURE(InsideWithoutEngine, "the shared object tells its class, whose name a script asks for") {
    const auto config = Instance(FormHide);
    ComPtr<IProvideClassInfo> provider;
    REQUIRE(config->QueryInterface(IID_PPV_ARGS(&provider)) == S_OK);
    CHECK(provider->GetClassInfo(nullptr) == E_POINTER);
    ComPtr<ITypeInfo> info;
    REQUIRE(provider->GetClassInfo(&info) == S_OK);
    TYPEATTR* attributes = nullptr;
    REQUIRE(info->GetTypeAttr(&attributes) == S_OK);
    CHECK(attributes->typekind == TKIND_COCLASS);
    CHECK(IsEqualGUID(attributes->guid, CLSID_Config));
    info->ReleaseTypeAttr(attributes);
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "every object describes its one interface, and no second one") {
    const auto config = Instance(FormHide);
    IDispatch* const objects[] = {config.Get(), control.Get(), g_frmConfig.Get()};
    for (IDispatch* const object : objects) {
        CHECK(object->GetTypeInfoCount(nullptr) == E_POINTER);
        UINT count = 0;
        CHECK(object->GetTypeInfoCount(&count) == S_OK);
        CHECK(count == 1);
        CHECK(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, nullptr) == E_POINTER);
        ComPtr<ITypeInfo> info;
        CHECK(object->GetTypeInfo(1, LOCALE_USER_DEFAULT, &info) == DISP_E_BADINDEX);
        CHECK(info == nullptr);
        REQUIRE(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info) == S_OK);
        TYPEATTR* attributes = nullptr;
        REQUIRE(info->GetTypeAttr(&attributes) == S_OK);
        CHECK((attributes->wTypeFlags & TYPEFLAG_FDUAL) != 0);
        info->ReleaseTypeAttr(attributes);
    }
}

TEST_CASE("errors are told of the object's own interface") {
    const ComPtr<ConfigControl> control = MakeObject<ConfigControl>();
    ComPtr<ISupportErrorInfo> errors;
    REQUIRE(control.As(&errors) == S_OK);
    CHECK(errors->InterfaceSupportsErrorInfo(__uuidof(_ConfigControl)) == S_OK);
    CHECK(errors->InterfaceSupportsErrorInfo(__uuidof(_Config)) == S_FALSE);
}

TEST_CASE("the window, each client's control and each client's reference lock the process") {
    const ULONG before = Locks();
    {
        InsideWithoutEngine inside;
        CHECK(Locks() == before + 1);
        ComPtr<IDispatch> config = inside.Instance(FormHide);
        const ULONG held = Locks();
        config.Reset();
        const ULONG loaded = Locks();
        CHECK(loaded < held);
        g_frmConfig->Unload();
        CHECK(Locks() < loaded);
        CHECK(Locks() == before + 1);
    }
    CHECK(Locks() == before);
}
