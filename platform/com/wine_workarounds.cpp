#include "platform/com/wine_workarounds.h"

#include <objbase.h>

#include <algorithm>

#include "platform/com/com_ptr.h"
#include "platform/com/counted_object.h"

namespace {

bool IsWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

// None of the members that the interfaces promise is ever called.
class NeverCalled final : public CountedObject<IUnknown> {
public:
    explicit NeverCalled(const std::vector<IID>& ids) : m_ids(ids) {}

protected:
    bool Supports(REFIID id) const override {
        return std::any_of(m_ids.begin(), m_ids.end(), [&](const IID& each) { return IsEqualIID(each, id); });
    }

private:
    const std::vector<IID> m_ids;
};

}  // namespace

void WorkAroundWine(std::vector<IID> interfaces) {
    if (!IsWine()) return;
    interfaces.insert(interfaces.end(), {IID_IUnknown, IID_IClassFactory});
    const ComPtr<IUnknown> object = MakeObject<NeverCalled>(interfaces);
    for (const IID& id : interfaces) {
        ComPtr<IStream> stream;
        if (SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, &stream))) {
            CoMarshalInterface(stream.Get(), id, object.Get(), MSHCTX_LOCAL, nullptr, MSHLFLAGS_TABLESTRONG);
        }
    }
}
