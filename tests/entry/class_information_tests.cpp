// What the objects tell scripts about themselves.
#include <doctest.h>

#include "tests/entry/inside.h"

TEST_CASE("the shared object tells its class, whose name a script asks for") {
    InsideWithoutEngine inside;
    const auto config = inside.Instance(FormHide);
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

TEST_CASE("every object describes its one interface, and no second one") {
    InsideWithoutEngine inside;
    const auto config = inside.Instance(FormHide);
    IDispatch* const objects[] = {config.Get(), inside.control.Get(), g_frmConfig.Get()};
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
