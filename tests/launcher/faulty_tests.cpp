// Not a suite: tests/launcher_test.sh runs these cases one by one and looks at what becomes of them, and
// tests/check_kit_test.sh in the kit.
#include <doctest.h>

#include <windows.h>
#include <objbase.h>

#include <thread>

#include "tests/support/program.h"

namespace {

// Its one method faults.
struct FaultyObject : IPersist {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        *object = id == __uuidof(IUnknown) || id == __uuidof(IPersist) ? this : nullptr;
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override {
        int* volatile nowhere = nullptr;
        *nowhere = 1;
        return S_OK;
    }
};

}  // namespace

TEST_CASE("left out" * doctest::skip() * doctest::description("it would not pass")) {
    FAIL("it runs");
}

TEST_CASE("passing") {
    CHECK(true);
}

TEST_CASE("failing") {
    CHECK(false);
}

TEST_CASE("a fault in a call from another apartment") {
    FaultyObject object;
    IStream* stream = nullptr;
    REQUIRE(CoMarshalInterThreadInterfaceInStream(__uuidof(IPersist), &object, &stream) == S_OK);
    std::thread([stream] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        IPersist* proxy = nullptr;
        CoGetInterfaceAndReleaseStream(stream, __uuidof(IPersist), reinterpret_cast<void**>(&proxy));
        CLSID id;
        proxy->GetClassID(&id);
    }).detach();
    HANDLE never = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD index;
    CoWaitForMultipleHandles(0, INFINITE, 1, &never, &index);
}

TEST_CASE("a call to nowhere") {
    void (*volatile nowhere)() = nullptr;
    nowhere();
}

TEST_CASE("a crash of another program") {
    RunProgram(L"tests\\crashing.exe");
}

TEST_CASE("waiting for ever") {
    Sleep(INFINITE);
}
