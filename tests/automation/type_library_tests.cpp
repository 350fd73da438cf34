// What the manager's public type library says.
#include <doctest.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "platform/com/bstr.h"
#include "platform/com/dispatch_object.h"
#include "platform/com/own_type_library.h"
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

std::string TypeName(const TYPEDESC& type) {
    if (type.vt == VT_PTR) return TypeName(*type.lptdesc) + '*';
    static const std::map<VARTYPE, std::string> names{{VT_VARIANT, "VARIANT"},
                                                      {VT_I4, "long"},
                                                      {VT_DISPATCH, "IDispatch*"},
                                                      {VT_HRESULT, "HRESULT"},
                                                      {VT_VOID, "void"}};
    const auto name = names.find(type.vt);
    return name != names.end() ? name->second : "type " + std::to_string(type.vt);
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
    Lines lines{Flags(attributes->wTypeFlags, {{TYPEFLAG_FDUAL, "dual"},
                                               {TYPEFLAG_FOLEAUTOMATION, "oleautomation"},
                                               {TYPEFLAG_FNONEXTENSIBLE, "nonextensible"},
                                               {TYPEFLAG_FHIDDEN, "hidden"},
                                               {TYPEFLAG_FCANCREATE, "creatable"},
                                               {TYPEFLAG_FAPPOBJECT, "appobject"},
                                               {TYPEFLAG_FPREDECLID, "predeclared"}})};
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

// A dual interface as its vtable, whose functions follow those of IDispatch in the order of declaration.
ComPtr<ITypeInfo> Vtable(REFGUID id) {
    const ComPtr<ITypeInfo> dispatch = OwnTypeInfo(kPublicTypeLibrary, id);
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> vtable;
    ThrowIfFailed(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
    ThrowIfFailed(dispatch->GetRefTypeInfo(reference, &vtable));
    return vtable;
}

}  // namespace

TEST_CASE(
    "the library is SentrelConfig 1.0 and holds six types; its two interfaces are dual, hidden, not "
    "extensible, with their members in order") {
    const auto library = LoadOwnTypeLibrary(kPublicTypeLibrary);
    BstrHandle name;
    REQUIRE(library->GetDocumentation(-1, name.Put(), nullptr, nullptr, nullptr) == S_OK);
    CHECK(ToAnsi(name.Get()) == "SentrelConfig");
    TLIBATTR* attributes = nullptr;
    REQUIRE(library->GetLibAttr(&attributes) == S_OK);
    CHECK(attributes->wMajorVerNum == 1);
    CHECK(attributes->wMinorVerNum == 0);
    library->ReleaseTLibAttr(attributes);

    std::map<std::string, Lines> types;
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        ComPtr<ITypeInfo> info;
        REQUIRE(library->GetTypeInfo(index, &info) == S_OK);
        types[NameOf(info.Get())] = Describe(info);
    }
    CHECK(types.size() == 6);
    CHECK(types["__Config"] == Lines{"hidden ", "00000001 void ConfigClosed()"});
    // It cannot be created.
    CHECK(types["Config"] == Lines{"", "default _Config", "default source __Config"});
    CHECK(types["ConfigControl"] == Lines{"creatable appobject predeclared ", "default _ConfigControl"});
    CHECK(types["ConfigState"] == Lines{"", "formShow = 1", "FormHide = 2"});
    CHECK(Describe(Vtable(__uuidof(_Config))) ==
          Lines{"dual oleautomation nonextensible hidden ",
                "68030002 in slot 7: get HRESULT ConfigHwnd(out retval VARIANT*)",
                "68030001 in slot 8: get HRESULT ConfigForm(out retval VARIANT*)",
                "68030000 in slot 9: get HRESULT ShellIconClass(out retval VARIANT*)"});
    CHECK(Describe(Vtable(__uuidof(_ConfigControl))) ==
          Lines{"dual oleautomation nonextensible hidden ",
                "60030000 in slot 7: HRESULT ConfigInstance(in out long*, out retval IDispatch**)",
                "60030001 in slot 8: HRESULT ReleaseConfig()"});
}
