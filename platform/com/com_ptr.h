// References to COM objects.
#pragma once

#include <windows.h>
#include <wrl/client.h>

#include <utility>

using Microsoft::WRL::ComPtr;

// Makes an object that is born with one reference, which the returned pointer owns.
template <class Object, class... Arguments>
ComPtr<Object> MakeObject(Arguments&&... arguments) {
    ComPtr<Object> object;
    // Attach is no way: MinGW's adds a reference.
    *object.GetAddressOf() = new Object(std::forward<Arguments>(arguments)...);
    return object;
}
