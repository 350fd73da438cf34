// What the manager's public type library says.
#include <doctest.h>

#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "platform/com/bstr.h"
#include "platform/com/dispatch_object.h"
#include "platform/com/variant.h"
#include "platform/text.h"
#include "sentrel_config.h"
#include "tests/support/shown_text.h"
#include "tray/type_libraries.h"

namespace {

using Lines = std::vector<std::string>;

std::string NameOf(ITypeInfo* info, MEMBERID member = MEMBERID_NIL) {
    BstrHandle name;
    ThrowIfFailed(info->GetDocumentation(member, name.Put(), nullptr, nullptr, nullptr));
    return ToAnsi(name.Get());
}

// The flags that are set, by their names.
std::string Flags(int flags, std::initializer_list<std::pair<int, const char*>> names) {
    std::string text;
    for (const auto& [flag, name] : names) {
        if ((flags & flag) != 0) text += std::string(name) + ' ';
    }
    return text;
}

std::string TypeFlags(WORD flags) {
    return Flags(flags, {{TYPEFLAG_FDUAL, "dual"},
                         {TYPEFLAG_FOLEAUTOMATION, "oleautomation"},
                         {TYPEFLAG_FNONEXTENSIBLE, "nonextensible"},
                         {TYPEFLAG_FHIDDEN, "hidden"},
                         {TYPEFLAG_FCANCREATE, "creatable"},
                         {TYPEFLAG_FAPPOBJECT, "appobject"},
                         {TYPEFLAG_FPREDECLID, "predeclared"}});
}

std::string TypeName(const TYPEDESC& type) {
    switch (type.vt) {
        case VT_PTR:
            return TypeName(*type.lptdesc) + '*';
        case VT_VARIANT:
            return "VARIANT";
        case VT_I4:
            return "long";
        case VT_DISPATCH:
            return "IDispatch*";
        case VT_HRESULT:
            return "HRESULT";
        case VT_VOID:
            return "void";
        default:
            return "type " + std::to_string(type.vt);
    }
}

std::string FunctionLine(ITypeInfo* info, const FUNCDESC& function) {
    char number[16];
    std::snprintf(number, sizeof(number), "%08lX ", static_cast<unsigned long>(function.memid));
    std::string text = number;
    if (function.funckind == FUNC_PUREVIRTUAL)
        text += "in slot " + std::to_string(function.oVft / static_cast<int>(sizeof(void*))) + ": ";
    if (function.invkind == INVOKE_PROPERTYGET) text += "get ";
    text += TypeName(function.elemdescFunc.tdesc) + ' ' + NameOf(info, function.memid) + '(';
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        text += (i == 0 ? "" : ", ") +
                Flags(parameter.paramdesc.wParamFlags,
                      {{PARAMFLAG_FIN, "in"}, {PARAMFLAG_FOUT, "out"}, {PARAMFLAG_FRETVAL, "retval"}}) +
                TypeName(parameter.tdesc);
    }
    return text + ')';
}

// The flags of a type in the first line; its members, interfaces or values in the others.
Lines Describe(const ComPtr<ITypeInfo>& info) {
    TYPEATTR* attributes = nullptr;
    ThrowIfFailed(info->GetTypeAttr(&attributes));
    Lines lines{TypeFlags(attributes->wTypeFlags)};
    for (UINT i = 0; i < attributes->cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        ThrowIfFailed(info->GetFuncDesc(i, &function));
        lines.push_back(FunctionLine(info.Get(), *function));
        info->ReleaseFuncDesc(function);
    }
    for (UINT i = 0; i < attributes->cVars; ++i) {
        VARDESC* variable = nullptr;
        ThrowIfFailed(info->GetVarDesc(i, &variable));
        lines.push_back(NameOf(info.Get(), variable->memid) + " = " +
                        std::to_string(ToLong(*variable->lpvarValue)));
        info->ReleaseVarDesc(variable);
    }
    for (UINT i = 0; attributes->typekind == TKIND_COCLASS && i < attributes->cImplTypes; ++i) {
        HREFTYPE reference = 0;
        ComPtr<ITypeInfo> implemented;
        INT flags = 0;
        ThrowIfFailed(info->GetRefTypeOfImplType(i, &reference));
        ThrowIfFailed(info->GetRefTypeInfo(reference, &implemented));
        ThrowIfFailed(info->GetImplTypeFlags(i, &flags));
        lines.push_back(Flags(flags, {{IMPLTYPEFLAG_FDEFAULT, "default"}, {IMPLTYPEFLAG_FSOURCE, "source"}}) +
                        NameOf(implemented.Get()));
    }
    info->ReleaseTypeAttr(attributes);
    return lines;
}

ComPtr<ITypeInfo> Type(REFGUID id) {
    return OwnTypeInfo(kPublicTypeLibrary, id);
}

// A dual interface as its vtable, whose functions follow those of IDispatch in the order of declaration.
ComPtr<ITypeInfo> Vtable(REFGUID id) {
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> vtable;
    ThrowIfFailed(Type(id)->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
    ThrowIfFailed(Type(id)->GetRefTypeInfo(reference, &vtable));
    return vtable;
}

ComPtr<ITypeLib> Library() {
    ComPtr<ITypeLib> library;
    UINT index = 0;
    ThrowIfFailed(Type(__uuidof(_Config))->GetContainingTypeLib(&library, &index));
    return library;
}

}  // namespace

TEST_CASE("the library is SentrelConfig 1.0 and holds six types") {
    const auto library = Library();
    BstrHandle name;
    REQUIRE(library->GetDocumentation(-1, name.Put(), nullptr, nullptr, nullptr) == S_OK);
    CHECK(ToAnsi(name.Get()) == "SentrelConfig");
    TLIBATTR* attributes = nullptr;
    REQUIRE(library->GetLibAttr(&attributes) == S_OK);
    CHECK(attributes->wMajorVerNum == 1);
    CHECK(attributes->wMinorVerNum == 0);
    library->ReleaseTLibAttr(attributes);

    std::set<std::string> names;
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        ComPtr<ITypeInfo> info;
        REQUIRE(library->GetTypeInfo(index, &info) == S_OK);
        names.insert(NameOf(info.Get()));
    }
    CHECK(names == std::set<std::string>{"_Config", "__Config", "Config", "_ConfigControl", "ConfigControl",
                                         "ConfigState"});
}

TEST_CASE("_Config is dual, hidden, not extensible, with its three properties in order") {
    CHECK(Describe(Vtable(__uuidof(_Config))) ==
          Lines{"dual oleautomation nonextensible hidden ",
                "68030002 in slot 7: get HRESULT ConfigHwnd(out retval VARIANT*)",
                "68030001 in slot 8: get HRESULT ConfigForm(out retval VARIANT*)",
                "68030000 in slot 9: get HRESULT ShellIconClass(out retval VARIANT*)"});
}

TEST_CASE("_ConfigControl is dual, hidden, not extensible, with its two methods in order") {
    CHECK(Describe(Vtable(__uuidof(_ConfigControl))) ==
          Lines{"dual oleautomation nonextensible hidden ",
                "60030000 in slot 7: HRESULT ConfigInstance(in out long*, out retval IDispatch**)",
                "60030001 in slot 8: HRESULT ReleaseConfig()"});
}

TEST_CASE("__Config is a hidden event interface with ConfigClosed as member 1") {
    CHECK(Describe(Type(__uuidof(__Config))) == Lines{"hidden ", "00000001 void ConfigClosed()"});
}

TEST_CASE("Config cannot be created and has _Config and the source __Config as defaults") {
    CHECK(Describe(Type(__uuidof(Config))) == Lines{"", "default _Config", "default source __Config"});
}

TEST_CASE("ConfigControl can be created and is the application object, predeclared") {
    CHECK(Describe(Type(__uuidof(ConfigControl))) ==
          Lines{"creatable appobject predeclared ", "default _ConfigControl"});
}

TEST_CASE("ConfigState names 1 and 2") {
    MEMBERID ids[1] = {MEMBERID_NIL};
    ComPtr<ITypeInfo> info;
    USHORT count = 1;
    wchar_t name[] = L"ConfigState";
    REQUIRE(Library()->FindName(name, 0, info.GetAddressOf(), ids, &count) == S_OK);
    CHECK(Describe(info) == Lines{"", "formShow = 1", "FormHide = 2"});
}
