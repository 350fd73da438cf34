// The interfaces that a server keeps known to COM under Wine.
#include <doctest.h>

#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <thread>
#include <vector>

#include "platform/com/com_ptr.h"
#include "platform/com/wine_workarounds.h"
#include "tests/support/import_patch.h"
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

const ImportPatch* g_patch = nullptr;
std::vector<Shown> g_shown;

HRESULT WINAPI RecordMarshal(IStream* stream, REFIID id, IUnknown* object, DWORD context, void* data,
                             DWORD flags) {
    const HRESULT result =
        g_patch->Original<decltype(&CoMarshalInterface)>()(stream, id, object, context, data, flags);
    g_shown.push_back({id, object, context, flags, result});
    return result;
}

// As on Windows, whose ntdll.dll has no such function.
FARPROC WINAPI FindNothingOfWine(HMODULE, LPCSTR) {
    return nullptr;
}

// In an apartment of its own; body runs before COM goes.
template <class Body>
void WorkAround(const std::vector<IID>& interfaces, Body body) {
    g_shown.clear();
    std::thread apartment([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        {
            const ImportPatch patch("ole32.dll", "CoMarshalInterface", &RecordMarshal);
            g_patch = &patch;
            WorkAroundWine(interfaces);
        }
        body();
        CoUninitialize();
    });
    apartment.join();
}

}  // namespace

TEST_CASE("under Wine interfaces are kept until COM goes, by an object that has no other" *
          doctest::skip(!RunsUnderWine()) * doctest::description("Windows needs nothing of the kind")) {
    WorkAround({IID_IDispatch, kUnknownToCom, IID_IConnectionPoint}, [] {
        void* other = nullptr;
        CHECK(g_shown.at(0).object->QueryInterface(IID_IMarshal, &other) == E_NOINTERFACE);
        CHECK(g_shown.at(0).object->AddRef() > 1);
    });
    REQUIRE(g_shown.size() == 5);
    CHECK(g_shown[0].object->Release() == 0);
    constexpr const IID* kInterfaces[] = {&IID_IDispatch, &kUnknownToCom, &IID_IConnectionPoint,
                                          &IID_IUnknown, &IID_IClassFactory};
    for (size_t i = 0; i < g_shown.size(); ++i) {
        CAPTURE(i);
        CHECK(IsEqualIID(g_shown[i].id, *kInterfaces[i]));
        CHECK(SUCCEEDED(g_shown[i].result) == (i != 1));
        CHECK(g_shown[i].object == g_shown[0].object);
        CHECK(g_shown[i].context == MSHCTX_LOCAL);
        CHECK(g_shown[i].flags == MSHLFLAGS_TABLESTRONG);
    }
}

TEST_CASE("on Windows nothing is worked around") {
    const ImportPatch find("kernel32.dll", "GetProcAddress", &FindNothingOfWine);
    WorkAround({IID_IDispatch}, [] {});
    CHECK(g_shown.empty());
}
