#include "tests/support/automation.h"

#include <ocidl.h>

#include <stdexcept>

#include "platform/automation_error.h"

namespace {

Variant Invoke(IDispatch* object, const wchar_t* member, WORD flags, const std::vector<Variant>& arguments) {
    LPOLESTR name = const_cast<LPOLESTR>(member);
    DISPID id = DISPID_UNKNOWN;
    ThrowIfFailed(object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id));
    Variant result;
    ThrowIfFailed(InvokeByNumber(object, id, flags, arguments, result));
    return result;
}

}  // namespace

HRESULT InvokeByNumber(IDispatch* object, DISPID member, WORD flags, const std::vector<Variant>& arguments,
                       Variant& result) {
    std::vector<VARIANT> values;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
        values.push_back(argument->Value());
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{values.data(), nullptr, static_cast<UINT>(values.size()), 0};
    if (flags == DISPATCH_PROPERTYPUT) {
        parameters.rgdispidNamedArgs = &put;
        parameters.cNamedArgs = 1;
    }
    EXCEPINFO exception{};
    const HRESULT outcome = object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                           result.Receive(), &exception, nullptr);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    return outcome == DISP_E_EXCEPTION && FAILED(exception.scode) ? exception.scode : outcome;
}

Variant Call(IDispatch* object, const wchar_t* member, std::vector<Variant> arguments) {
    return Invoke(object, member, DISPATCH_METHOD, std::move(arguments));
}

Variant Get(IDispatch* object, const wchar_t* property, std::vector<Variant> arguments) {
    return Invoke(object, property, DISPATCH_PROPERTYGET, std::move(arguments));
}

void Put(IDispatch* object, const wchar_t* property, const Variant& value) {
    Invoke(object, property, DISPATCH_PROPERTYPUT, {value});
}

ComPtr<IDispatch> ObjectIn(const Variant& value) {
    if (value.Value().vt != VT_DISPATCH || value.Value().pdispVal == nullptr)
        throw std::runtime_error("no object");
    return value.Value().pdispVal;
}

ComPtr<IDispatch> CreateByName(const wchar_t* programId) {
    CLSID classId;
    ThrowIfFailed(CLSIDFromProgID(programId, &classId));
    ComPtr<IDispatch> object;
    ThrowIfFailed(CoCreateInstance(classId, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&object)));
    return object;
}

ComPtr<IDispatch> ListenerTo(IUnknown* source, REFIID events) {
    ComPtr<IConnectionPointContainer> container;
    ThrowIfFailed(source->QueryInterface(IID_PPV_ARGS(&container)));
    ComPtr<IConnectionPoint> point;
    ThrowIfFailed(container->FindConnectionPoint(events, &point));
    ComPtr<IEnumConnections> connections;
    ThrowIfFailed(point->EnumConnections(&connections));
    CONNECTDATA connection{};
    ULONG fetched = 0;
    // Between processes Wine returns any result and any count; the connection itself is right.
    connections->Next(1, &connection, &fetched);
    ComPtr<IDispatch> listener;
    if (connection.pUnk == nullptr) return listener;
    connection.pUnk->QueryInterface(IID_PPV_ARGS(&listener));
    connection.pUnk->Release();
    return listener;
}
