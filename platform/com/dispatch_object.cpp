#include "platform/com/dispatch_object.h"

#include "platform/com/own_type_library.h"
#include "platform/com/variant.h"

namespace {

// Whether the member is a property that is read without arguments.
bool IsPlainProperty(ITypeInfo* typeInfo, DISPID member) {
    ComPtr<ITypeInfo2> members;
    UINT index = 0;
    FUNCDESC* function = nullptr;
    if (FAILED(typeInfo->QueryInterface(IID_PPV_ARGS(&members))) ||
        FAILED(members->GetFuncIndexOfMemId(member, INVOKE_PROPERTYGET, &index)) ||
        FAILED(members->GetFuncDesc(index, &function))) {
        return false;
    }
    // The only parameter is the place for the result.
    const bool isPlain = function->cParams == 1;
    members->ReleaseFuncDesc(function);
    return isPlain;
}

}  // namespace

ComPtr<ITypeInfo> OwnTypeInfo(int library, REFGUID interfaceId) {
    ComPtr<ITypeInfo> typeInfo;
    ThrowIfFailed(LoadOwnTypeLibrary(library)->GetTypeInfoOfGuid(interfaceId, &typeInfo));
    return typeInfo;
}

HRESULT InvokeMember(ITypeInfo* typeInfo, void* object, DISPID member, WORD flags, DISPPARAMS* arguments,
                     VARIANT* result, EXCEPINFO* exception, UINT* badArgument) {
    if (arguments == nullptr) return E_POINTER;
    if (arguments->cNamedArgs > arguments->cArgs) return DISP_E_BADPARAMCOUNT;
    if ((arguments->cArgs != 0 && arguments->rgvarg == nullptr) ||
        (arguments->cNamedArgs != 0 && arguments->rgdispidNamedArgs == nullptr)) {
        return E_INVALIDARG;
    }
    SetErrorInfo(0, nullptr);
    if (arguments->cArgs == 0 || result == nullptr || (flags & DISPATCH_PROPERTYGET) == 0 ||
        !IsPlainProperty(typeInfo, member)) {
        return typeInfo->Invoke(object, member, flags, arguments, result, exception, badArgument);
    }

    // The arguments are meant for the object in the property. The system's own way to it does not look
    // whether there is one.
    DISPPARAMS none{};
    Variant value;
    const HRESULT read =
        typeInfo->Invoke(object, member, flags, &none, value.Receive(), exception, badArgument);
    if (FAILED(read)) return read;
    VariantInit(result);
    IDispatch* const inner = value.Value().vt == VT_DISPATCH ? value.Value().pdispVal : nullptr;
    if (inner == nullptr) return DISP_E_NOTACOLLECTION;
    return inner->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, arguments, result,
                         exception, badArgument);
}
