// Automation objects as a script uses them: by name.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <string>
#include <vector>

#include "platform/com/com_ptr.h"
#include "platform/com/variant.h"

// By number, as scripts do when they know the name. Returns what the object returned.
HRESULT InvokeByNumber(IDispatch* object, DISPID member, WORD flags, const std::vector<Variant>& arguments,
                       Variant& result);

// Each throws AutomationError with what the object returned.
Variant Call(IDispatch* object, const wchar_t* member, std::vector<Variant> arguments = {});
Variant Get(IDispatch* object, const wchar_t* property, std::vector<Variant> arguments = {});
void Put(IDispatch* object, const wchar_t* property, const Variant& value);

// The object in a value that holds one; throws std::runtime_error when it holds none.
ComPtr<IDispatch> ObjectIn(const Variant& value);

// Creates an object by the name under which scripts know it.
ComPtr<IDispatch> CreateByName(const wchar_t* programId);

// The first listener to an object's events; null where nobody listens.
ComPtr<IDispatch> ListenerTo(IUnknown* source, REFIID events);
