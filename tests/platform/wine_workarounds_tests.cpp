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

struct Shown {
    IID id;
    IUnknown* object;
    DWORD context;
    DWORD flags;
    HRESULT result;
};

// In an apartment of its own; body runs before COM goes.
std::vector<Shown> WorkAround(const std::vector<IID>& interfaces,
                              const std::function<void(IUnknown* object)>& body) {
    std::vector<Shown> shown;
    const ImportFake<"CoMarshalInterface", decltype(&CoMarshalInterface)> marshal{
        "ole32.dll",
        [&](IStream* stream, REFIID id, IUnknown* object, DWORD context, void* data, DWORD flags) {
            const HRESULT result = marshal.Original(stream, id, object, context, data, flags);
            shown.push_back({id, object, context, flags, result});
            return result;
        }};
    std::thread apartment([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        WorkAroundWine(interfaces);
        if (!shown.empty()) body(shown[0].object);
        CoUninitialize();
    });
    apartment.join();
    return shown;
}

}  // namespace

TEST_CASE("under Wine interfaces are kept until COM goes, by an object that has no other" *
          doctest::skip(!RunsUnderWine()) * doctest::description("Windows needs nothing of the kind")) {
    const auto shown = WorkAround({IID_IDispatch, kUnknownToCom, IID_IConnectionPoint}, [](IUnknown* object) {
        void* other = nullptr;
        CHECK(object->QueryInterface(IID_IMarshal, &other) == E_NOINTERFACE);
        CHECK(object->AddRef() > 1);
    });
    REQUIRE(shown.size() == 5);
    CHECK(shown[0].object->Release() == 0);
    constexpr const IID* kInterfaces[] = {&IID_IDispatch, &kUnknownToCom, &IID_IConnectionPoint,
                                          &IID_IUnknown, &IID_IClassFactory};
    for (size_t i = 0; i < shown.size(); ++i) {
        CAPTURE(i);
        CHECK(IsEqualIID(shown[i].id, *kInterfaces[i]));
        CHECK(SUCCEEDED(shown[i].result) == (i != 1));
        CHECK(shown[i].object == shown[0].object);
        CHECK(shown[i].context == MSHCTX_LOCAL);
        CHECK(shown[i].flags == MSHLFLAGS_TABLESTRONG);
    }
}

TEST_CASE("on Windows nothing is worked around") {
    // Its ntdll.dll has no such function.
    const ImportFake<"GetProcAddress", decltype(&GetProcAddress)> find{
        "kernel32.dll", [](HMODULE, LPCSTR) { return nullptr; }};
    CHECK(WorkAround({IID_IDispatch}, [](IUnknown*) {}).empty());
}
