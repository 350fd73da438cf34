#include "platform/dispatch_object.h"

#include "platform/text.h"
#include "platform/variant.h"

ComPtr<ITypeInfo> OwnTypeInfo(int library, REFGUID interfaceId) {
    const std::wstring path = ServerPath() + L'\\' + TextOf(static_cast<long>(library));
    ComPtr<ITypeLib> typeLibrary;
    ThrowIfFailed(LoadTypeLibEx(path.c_str(), REGKIND_NONE, &typeLibrary));
    ComPtr<ITypeInfo> typeInfo;
    ThrowIfFailed(typeLibrary->GetTypeInfoOfGuid(interfaceId, &typeInfo));
    return typeInfo;
}
