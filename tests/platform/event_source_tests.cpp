// How a client looks over the events of an object and who is connected to them.
#include <doctest.h>

#include <windows.h>
#include <ocidl.h>
#include <olectl.h>

#include "platform/com/com_ptr.h"
#include "platform/com/event_connection.h"
#include "platform/com/event_source.h"

namespace {

constexpr IID kEvents = {0x6f1a2b3c, 0x1111, 0x4222, {0x83, 0x33, 0x44, 0x44, 0x55, 0x55, 0x66, 0x66}};

// An object with events, on the test's own stack. Nobody holds it or is connected to it at its end.
struct Owner final : IUnknown {
    Owner() = default;
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() {
        CHECK(source.ConnectionCount() == 0);
        CHECK(references == 1);
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        *object = nullptr;
        if (IsEqualIID(id, IID_IConnectionPointContainer)) *object = source.Container();
        if (IsEqualIID(id, IID_IUnknown)) *object = static_cast<IUnknown*>(this);
        if (*object == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }

    ComPtr<IConnectionPoint> Point() {
        ComPtr<IConnectionPoint> point;
        REQUIRE(source.Container()->FindConnectionPoint(kEvents, &point) == S_OK);
        return point;
    }

    ULONG references = 1;
    EventSource source{*this, kEvents};
};

ComPtr<IEnumConnections> ConnectionsOf(Owner& owner) {
    ComPtr<IEnumConnections> connections;
    REQUIRE(owner.Point()->EnumConnections(&connections) == S_OK);
    return connections;
}

}  // namespace

TEST_CASE("an object tells its one connection point, and the point tells its events and its object") {
    Owner owner;
    ComPtr<IEnumConnectionPoints> points;
    REQUIRE(owner.source.Container()->EnumConnectionPoints(&points) == S_OK);
    IConnectionPoint* found[2] = {};
    ULONG count = 0;
    CHECK(points->Next(2, found, &count) == S_FALSE);
    REQUIRE(count == 1);
    IID events{};
    CHECK(found[0]->GetConnectionInterface(&events) == S_OK);
    CHECK(IsEqualIID(events, kEvents));
    ComPtr<IConnectionPointContainer> container;
    CHECK(found[0]->GetConnectionPointContainer(&container) == S_OK);
    CHECK(container.Get() == owner.source.Container());
    CHECK(found[0] == owner.Point().Get());
    found[0]->Release();

    IConnectionPoint* other = found[0];
    CHECK(owner.source.Container()->FindConnectionPoint(IID_IDispatch, &other) == CONNECT_E_NOCONNECTION);
    CHECK(other == nullptr);
}

TEST_CASE("the connections are enumerated as they stood when they were asked for") {
    Owner owner;
    EventConnection first(&owner, kEvents, {});
    EventConnection second(&owner, kEvents, {});
    const ComPtr<IEnumConnections> connections = ConnectionsOf(owner);
    EventConnection third(&owner, kEvents, {});

    CONNECTDATA data[3] = {};
    ULONG count = 0;
    CHECK(connections->Next(1, data, nullptr) == S_OK);
    CHECK(data[0].dwCookie == 1);
    ComPtr<IEnumConnections> clone;
    CHECK(connections->Clone(&clone) == S_OK);
    for (IEnumConnections* const each : {connections.Get(), clone.Get()}) {
        CHECK(each->Next(3, data + 1, &count) == S_FALSE);
        CHECK(count == 1);
        CHECK(data[1].dwCookie == 2);
        CHECK(data[1].pUnk != data[0].pUnk);
        data[1].pUnk->Release();
        CHECK(each->Next(1, data + 1, &count) == S_FALSE);
        CHECK(count == 0);
    }
    data[0].pUnk->Release();

    CHECK(clone->Reset() == S_OK);
    CHECK(clone->Skip(1) == S_OK);
    CHECK(clone->Skip(2) == S_FALSE);
    CHECK(clone->Next(1, data, &count) == S_FALSE);
    CHECK(clone->Next(2, data, nullptr) == E_POINTER);
    CHECK(clone->Next(1, nullptr, &count) == E_POINTER);
    CHECK(clone->Clone(nullptr) == E_POINTER);
}

TEST_CASE("connection points return an error for what makes no sense") {
    Owner owner;
    const ComPtr<IConnectionPoint> point = owner.Point();
    DWORD cookie = 7;
    CHECK(point->Advise(nullptr, &cookie) == E_POINTER);
    CHECK(point->Advise(&owner, nullptr) == E_POINTER);
    CHECK(point->Advise(&owner, &cookie) == CONNECT_E_CANNOTCONNECT);
    CHECK(cookie == 0);
    CHECK(point->Unadvise(1) == CONNECT_E_NOCONNECTION);
    CHECK(point->GetConnectionInterface(nullptr) == E_POINTER);
    CHECK(point->GetConnectionPointContainer(nullptr) == E_POINTER);
    CHECK(point->EnumConnections(nullptr) == E_POINTER);
    CHECK(owner.source.Container()->EnumConnectionPoints(nullptr) == E_POINTER);
    CHECK(owner.source.Container()->FindConnectionPoint(kEvents, nullptr) == E_POINTER);
    ComPtr<IDispatch> dispatch;
    CHECK(point->QueryInterface(IID_PPV_ARGS(&dispatch)) == E_NOINTERFACE);
}

TEST_CASE("a sink of events tells no type information and no names, and one interface beside IDispatch") {
    Owner owner;
    EventConnection connection(&owner, kEvents, {});
    CONNECTDATA data{};
    REQUIRE(ConnectionsOf(owner)->Next(1, &data, nullptr) == S_OK);
    ComPtr<IDispatch> sink;
    CHECK(data.pUnk->QueryInterface(IID_PPV_ARGS(&sink)) == S_OK);
    data.pUnk->Release();
    UINT count = 1;
    CHECK(sink->GetTypeInfoCount(&count) == S_OK);
    CHECK(count == 0);
    CHECK(sink->GetTypeInfoCount(nullptr) == E_POINTER);
    ITypeInfo* info = nullptr;
    CHECK(sink->GetTypeInfo(0, 0, &info) == E_NOTIMPL);
    DISPID id = 0;
    wchar_t name[] = L"Killed";
    wchar_t* names = name;
    CHECK(sink->GetIDsOfNames(IID_NULL, &names, 1, 0, &id) == DISP_E_UNKNOWNNAME);
    ComPtr<IUnknown> events;
    CHECK(sink->QueryInterface(kEvents, reinterpret_cast<void**>(events.GetAddressOf())) == S_OK);
    ComPtr<IConnectionPoint> other;
    CHECK(sink->QueryInterface(IID_PPV_ARGS(&other)) == E_NOINTERFACE);
    CHECK(sink->QueryInterface(IID_IUnknown, nullptr) == E_POINTER);
}
