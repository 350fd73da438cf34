// The interfaces that a server keeps known to COM under Wine.
#include <doctest.h>

#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <functional>
#include <thread>
#include <vector>

#include "platform/com/com_ptr.h"
#include "platform/com/wine_workarounds.h"
#include "tests/support/import_fake.h"
#include "tests/support/wine.h"

namespace {

constexpr IID kUnknownToCom = {0x0a5c6f10, 0x2222, 0x4333, {0x84, 0x44, 0x55, 0x55, 0x66, 0x66, 0x77, 0x77}};

// The interfaces that are marshalled, all of one object, in an apartment of their own; body runs before COM
// goes.
std::vector<IID> WorkAround(const std::vector<IID>& interfaces,
                            const std::function<void(IUnknown* object)>& body) {
    std::vector<IID> marshalled;
    IUnknown* only = nullptr;
    const ImportFake<"CoMarshalInterface", decltype(&CoMarshalInterface)> marshal{
        "ole32.dll",
        [&](IStream* stream, REFIID id, IUnknown* object, DWORD context, void* data, DWORD flags) {
            CHECK((only == nullptr || object == only));
            CHECK(context == MSHCTX_LOCAL);
            CHECK(flags == MSHLFLAGS_TABLESTRONG);
            only = object;
            marshalled.push_back(id);
            const HRESULT result = marshal.Original(stream, id, object, context, data, flags);
            CHECK(FAILED(result) == IsEqualIID(id, kUnknownToCom));
            return result;
        }};
    std::thread apartment([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        WorkAroundWine(interfaces);
        if (only != nullptr) body(only);
        CoUninitialize();
    });
    apartment.join();
    return marshalled;
}

}  // namespace

TEST_CASE("under Wine interfaces are kept until COM goes, by an object that has no other" *
          doctest::skip(!RunsUnderWine()) * doctest::description("Windows needs nothing of the kind")) {
    IUnknown* kept = nullptr;
    const auto marshalled =
        WorkAround({IID_IDispatch, kUnknownToCom, IID_IConnectionPoint}, [&](IUnknown* object) {
            void* other = nullptr;
            CHECK(object->QueryInterface(IID_IMarshal, &other) == E_NOINTERFACE);
            CHECK(object->AddRef() > 1);
            kept = object;
        });
    REQUIRE(kept != nullptr);
    CHECK(kept->Release() == 0);
    CHECK(marshalled == std::vector<IID>{IID_IDispatch, kUnknownToCom, IID_IConnectionPoint, IID_IUnknown,
                                         IID_IClassFactory});
}

TEST_CASE("on Windows nothing is worked around") {
    // Its ntdll.dll has no such function.
    const ImportFake<"GetProcAddress", decltype(&GetProcAddress)> find{
        "kernel32.dll", [](HMODULE, LPCSTR) { return nullptr; }};
    CHECK(WorkAround({IID_IDispatch}, [](IUnknown*) {}).empty());
}
