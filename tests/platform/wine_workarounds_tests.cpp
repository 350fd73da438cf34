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
#include "tests/support/only_under_wine.h"

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
std::vector<Shown>* g_shown = nullptr;

HRESULT WINAPI RecordMarshal(IStream* stream, REFIID id, IUnknown* object, DWORD context, void* data,
                             DWORD flags) {
    const HRESULT result =
        g_patch->Original<decltype(&CoMarshalInterface)>()(stream, id, object, context, data, flags);
    g_shown->push_back({id, object, context, flags, result});
    return result;
}

// As on Windows, whose ntdll.dll has no such function.
FARPROC WINAPI FindNothingOfWine(HMODULE, LPCSTR) {
    return nullptr;
}

}  // namespace

TEST_CASE("under Wine interfaces are kept until COM goes, by an object that has no other" *
          OnlyUnderWine{"Windows needs nothing of the kind"}) {
    std::vector<Shown> shown;
    ULONG referencesWhileKept = 0;
    ULONG referencesAtEnd = 1;
    HRESULT otherInterface = S_OK;
    std::thread apartment([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        {
            const ImportPatch patch("ole32.dll", "CoMarshalInterface", &RecordMarshal);
            g_patch = &patch;
            g_shown = &shown;
            WorkAroundWine({IID_IDispatch, kUnknownToCom, IID_IConnectionPoint});
        }
        IUnknown* const object = shown.front().object;
        void* other = nullptr;
        otherInterface = object->QueryInterface(IID_IMarshal, &other);
        referencesWhileKept = object->AddRef() - 1;
        CoUninitialize();
        referencesAtEnd = object->Release();
    });
    apartment.join();

    REQUIRE(shown.size() == 5);
    CHECK(IsEqualIID(shown[0].id, IID_IDispatch));
    CHECK(IsEqualIID(shown[1].id, kUnknownToCom));
    CHECK(IsEqualIID(shown[2].id, IID_IConnectionPoint));
    CHECK(IsEqualIID(shown[3].id, IID_IUnknown));
    CHECK(IsEqualIID(shown[4].id, IID_IClassFactory));
    for (size_t i = 0; i < shown.size(); ++i)
        CHECK(SUCCEEDED(shown[i].result) == (i != 1));
    for (const Shown& each : shown) {
        CHECK(each.object == shown[0].object);
        CHECK(each.context == MSHCTX_LOCAL);
        CHECK(each.flags == MSHLFLAGS_TABLESTRONG);
    }
    CHECK(otherInterface == E_NOINTERFACE);
    CHECK(referencesWhileKept > 0);
    CHECK(referencesAtEnd == 0);
}

TEST_CASE("on Windows nothing is worked around") {
    std::vector<Shown> shown;
    std::thread apartment([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        {
            const ImportPatch marshal("ole32.dll", "CoMarshalInterface", &RecordMarshal);
            const ImportPatch find("kernel32.dll", "GetProcAddress", &FindNothingOfWine);
            g_patch = &marshal;
            g_shown = &shown;
            WorkAroundWine({IID_IDispatch});
        }
        CoUninitialize();
    });
    apartment.join();
    CHECK(shown.empty());
}
