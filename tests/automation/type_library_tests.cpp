// What the manager's public type library says.
#include <doctest.h>

#include <map>
#include <set>
#include <string>

#include "platform/com/dispatch_object.h"
#include "tray/type_libraries.h"
#include "platform/com/variant.h"
#include "sentrel_config.h"

namespace {

ComPtr<ITypeLib> PublicLibrary() {
    ComPtr<ITypeLib> library;
    const ComPtr<ITypeInfo> info = OwnTypeInfo(kPublicTypeLibrary, __uuidof(_Config));
    UINT index = 0;
    ThrowIfFailed(info->GetContainingTypeLib(&library, &index));
    return library;
}

std::wstring NameOf(ITypeInfo* info, MEMBERID member = MEMBERID_NIL) {
    BSTR name = nullptr;
    ThrowIfFailed(info->GetDocumentation(member, &name, nullptr, nullptr, nullptr));
    std::wstring text(name, SysStringLen(name));
    SysFreeString(name);
    return text;
}

// A description that is released with its owner.
template <class Description, class Releaser>
class Described {
public:
    Described(ComPtr<ITypeInfo> info, Description* description)
        : m_info(std::move(info)), m_description(description) {}
    Described(const Described&) = delete;
    Described& operator=(const Described&) = delete;
    ~Described() { Releaser()(m_info.Get(), m_description); }
    Description* operator->() const { return m_description; }

private:
    const ComPtr<ITypeInfo> m_info;
    Description* const m_description;
};

struct ReleaseAttributes {
    void operator()(ITypeInfo* info, TYPEATTR* attributes) const { info->ReleaseTypeAttr(attributes); }
};
struct ReleaseFunction {
    void operator()(ITypeInfo* info, FUNCDESC* function) const { info->ReleaseFuncDesc(function); }
};

Described<TYPEATTR, ReleaseAttributes> AttributesOf(const ComPtr<ITypeInfo>& info) {
    TYPEATTR* attributes = nullptr;
    ThrowIfFailed(info->GetTypeAttr(&attributes));
    return {info, attributes};
}

Described<FUNCDESC, ReleaseFunction> FunctionOf(const ComPtr<ITypeInfo>& info, UINT index) {
    FUNCDESC* function = nullptr;
    ThrowIfFailed(info->GetFuncDesc(index, &function));
    return {info, function};
}

// The dual interfaces as vtables, whose functions follow those of IDispatch in the order of declaration.
ComPtr<ITypeInfo> Vtable(REFGUID id) {
    const ComPtr<ITypeInfo> dispatch = OwnTypeInfo(kPublicTypeLibrary, id);
    if (AttributesOf(dispatch)->typekind == TKIND_INTERFACE) return dispatch;
    HREFTYPE reference = 0;
    ThrowIfFailed(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
    ComPtr<ITypeInfo> vtable;
    ThrowIfFailed(dispatch->GetRefTypeInfo(reference, &vtable));
    return vtable;
}

constexpr WORD kDualFlags =
    TYPEFLAG_FDUAL | TYPEFLAG_FOLEAUTOMATION | TYPEFLAG_FNONEXTENSIBLE | TYPEFLAG_FHIDDEN;

}  // namespace

TEST_CASE("the library is SentrelConfig 1.0 and holds six types") {
    const auto library = PublicLibrary();
    BSTR name = nullptr;
    REQUIRE(library->GetDocumentation(-1, &name, nullptr, nullptr, nullptr) == S_OK);
    CHECK(std::wstring(name) == L"SentrelConfig");
    SysFreeString(name);
    TLIBATTR* attributes = nullptr;
    REQUIRE(library->GetLibAttr(&attributes) == S_OK);
    CHECK(attributes->wMajorVerNum == 1);
    CHECK(attributes->wMinorVerNum == 0);
    library->ReleaseTLibAttr(attributes);

    std::set<std::wstring> names;
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        ComPtr<ITypeInfo> info;
        REQUIRE(library->GetTypeInfo(index, &info) == S_OK);
        names.insert(NameOf(info.Get()));
    }
    CHECK(names == std::set<std::wstring>{L"_Config", L"__Config", L"Config", L"_ConfigControl",
                                          L"ConfigControl", L"ConfigState"});
}

TEST_CASE("_Config is dual, hidden, not extensible, with its three properties in order") {
    const auto vtable = Vtable(__uuidof(_Config));
    const auto attributes = AttributesOf(vtable);
    CHECK((attributes->wTypeFlags & kDualFlags) == kDualFlags);
    REQUIRE(attributes->cFuncs == 3);
    const std::pair<std::wstring, MEMBERID> members[] = {
        {L"ConfigHwnd", 0x68030002}, {L"ConfigForm", 0x68030001}, {L"ShellIconClass", 0x68030000}};
    for (UINT index = 0; index < 3; ++index) {
        CAPTURE(index);
        const auto function = FunctionOf(vtable, index);
        CHECK(NameOf(vtable.Get(), function->memid) == members[index].first);
        CHECK(function->memid == members[index].second);
        CHECK(function->invkind == INVOKE_PROPERTYGET);
        REQUIRE(function->cParams == 1);
        CHECK(function->lprgelemdescParam[0].tdesc.vt == VT_PTR);
        CHECK(function->lprgelemdescParam[0].tdesc.lptdesc->vt == VT_VARIANT);
        CHECK(function->oVft == static_cast<SHORT>((7 + index) * sizeof(void*)));
    }
}

TEST_CASE("_ConfigControl is dual, hidden, not extensible, with its two methods in order") {
    const auto vtable = Vtable(__uuidof(_ConfigControl));
    const auto attributes = AttributesOf(vtable);
    CHECK((attributes->wTypeFlags & kDualFlags) == kDualFlags);
    REQUIRE(attributes->cFuncs == 2);

    const auto instance = FunctionOf(vtable, 0);
    CHECK(NameOf(vtable.Get(), instance->memid) == L"ConfigInstance");
    CHECK(instance->memid == 0x60030000);
    CHECK(instance->invkind == INVOKE_FUNC);
    REQUIRE(instance->cParams == 2);
    const ELEMDESC& showType = instance->lprgelemdescParam[0];
    CHECK(showType.tdesc.vt == VT_PTR);
    CHECK(showType.tdesc.lptdesc->vt == VT_I4);
    CHECK((showType.paramdesc.wParamFlags & (PARAMFLAG_FIN | PARAMFLAG_FOUT)) ==
          (PARAMFLAG_FIN | PARAMFLAG_FOUT));
    CHECK(instance->oVft == static_cast<SHORT>(7 * sizeof(void*)));
    const ELEMDESC& config = instance->lprgelemdescParam[1];
    REQUIRE(config.tdesc.vt == VT_PTR);
    CHECK(config.tdesc.lptdesc->vt == VT_DISPATCH);
    CHECK((config.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0);

    const auto release = FunctionOf(vtable, 1);
    CHECK(NameOf(vtable.Get(), release->memid) == L"ReleaseConfig");
    CHECK(release->memid == 0x60030001);
    CHECK(release->invkind == INVOKE_FUNC);
    CHECK(release->cParams == 0);
    CHECK(release->oVft == static_cast<SHORT>(8 * sizeof(void*)));
}

TEST_CASE("__Config is a hidden event interface with ConfigClosed as member 1") {
    const auto info = OwnTypeInfo(kPublicTypeLibrary, __uuidof(__Config));
    const auto attributes = AttributesOf(info);
    CHECK(attributes->typekind == TKIND_DISPATCH);
    CHECK((attributes->wTypeFlags & TYPEFLAG_FHIDDEN) != 0);
    MEMBERID id = MEMBERID_NIL;
    LPOLESTR name = const_cast<LPOLESTR>(L"ConfigClosed");
    REQUIRE(info->GetIDsOfNames(&name, 1, &id) == S_OK);
    CHECK(id == 1);
    REQUIRE(attributes->cFuncs == 1);
    CHECK(attributes->cVars == 0);
    const auto event = FunctionOf(info, 0);
    CHECK(event->memid == 1);
    CHECK(event->cParams == 0);
    CHECK(event->elemdescFunc.tdesc.vt == VT_VOID);
}

TEST_CASE("Config cannot be created and has _Config and the source __Config as defaults") {
    const auto info = OwnTypeInfo(kPublicTypeLibrary, __uuidof(Config));
    const auto attributes = AttributesOf(info);
    CHECK(attributes->typekind == TKIND_COCLASS);
    CHECK((attributes->wTypeFlags & TYPEFLAG_FCANCREATE) == 0);
    REQUIRE(attributes->cImplTypes == 2);
    const std::pair<std::wstring, INT> interfaces[] = {
        {L"_Config", IMPLTYPEFLAG_FDEFAULT}, {L"__Config", IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE}};
    for (UINT index = 0; index < 2; ++index) {
        HREFTYPE reference = 0;
        ComPtr<ITypeInfo> implemented;
        INT flags = 0;
        REQUIRE(info->GetRefTypeOfImplType(index, &reference) == S_OK);
        REQUIRE(info->GetRefTypeInfo(reference, &implemented) == S_OK);
        REQUIRE(info->GetImplTypeFlags(index, &flags) == S_OK);
        CHECK(NameOf(implemented.Get()) == interfaces[index].first);
        CHECK(flags == interfaces[index].second);
    }
}

TEST_CASE("ConfigControl can be created and is the application object, predeclared") {
    const auto attributes = AttributesOf(OwnTypeInfo(kPublicTypeLibrary, __uuidof(ConfigControl)));
    CHECK(attributes->typekind == TKIND_COCLASS);
    CHECK((attributes->wTypeFlags & TYPEFLAG_FCANCREATE) != 0);
    CHECK((attributes->wTypeFlags & TYPEFLAG_FAPPOBJECT) != 0);
    CHECK((attributes->wTypeFlags & TYPEFLAG_FPREDECLID) != 0);
}

TEST_CASE("ConfigState names 1 and 2") {
    const auto library = PublicLibrary();
    MEMBERID ids[1] = {MEMBERID_NIL};
    ComPtr<ITypeInfo> info;
    USHORT count = 1;
    wchar_t name[] = L"ConfigState";
    REQUIRE(library->FindName(name, 0, info.GetAddressOf(), ids, &count) == S_OK);
    REQUIRE(count == 1);
    REQUIRE(AttributesOf(info)->cVars == 2);
    const std::pair<std::wstring, LONG> values[] = {{L"formShow", 1}, {L"FormHide", 2}};
    for (UINT index = 0; index < 2; ++index) {
        VARDESC* variable = nullptr;
        REQUIRE(info->GetVarDesc(index, &variable) == S_OK);
        CHECK(NameOf(info.Get(), variable->memid) == values[index].first);
        CHECK(ToLong(*variable->lpvarValue) == values[index].second);
        info->ReleaseVarDesc(variable);
    }
}
