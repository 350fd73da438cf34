// How a client looks over the events of an object and who is connected to them.
#include <doctest.h>

#include <windows.h>
#include <ocidl.h>
#include <olectl.h>

#include "platform/com/com_ptr.h"
#include "platform/com/counted_object.h"
#include "platform/com/event_connection.h"
#include "platform/com/event_source.h"

namespace {

constexpr IID kEvents = {0x6f1a2b3c, 0x1111, 0x4222, {0x83, 0x33, 0x44, 0x44, 0x55, 0x55, 0x66, 0x66}};

// An object with events. Nobody holds it or is connected to it at its end.
struct Owner : CountedObject<IUnknown> {
    ~Owner() override {
        CHECK(source.ConnectionCount() == 0);
        CHECK(AddRef() == 2);
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (!IsEqualIID(id, IID_IConnectionPointContainer)) return CountedObject::QueryInterface(id, object);
        *object = container;
        AddRef();
        return S_OK;
    }

    ComPtr<IConnectionPoint> Point() const {
        ComPtr<IConnectionPoint> point;
        REQUIRE(container->FindConnectionPoint(kEvents, &point) == S_OK);
        return point;
    }

    ComPtr<IEnumConnections> Connections() const {
        ComPtr<IEnumConnections> connections;
        REQUIRE(Point()->EnumConnections(&connections) == S_OK);
        return connections;
    }

    EventSource source{*this, kEvents};
    IConnectionPointContainer* const container = source.Container();
};

}  // namespace

TEST_CASE_FIXTURE(Owner,
                  "an object tells its one connection point, and the point tells its events and its object") {
    ComPtr<IEnumConnectionPoints> points;
    REQUIRE(container->EnumConnectionPoints(&points) == S_OK);
    IConnectionPoint* found[2] = {};
    ULONG count = 0;
    CHECK(points->Next(2, found, &count) == S_FALSE);
    REQUIRE(count == 1);
    CHECK(found[0] == Point().Get());
    found[0]->Release();
    IID events{};
    CHECK(Point()->GetConnectionInterface(&events) == S_OK);
    CHECK(IsEqualIID(events, kEvents));
    ComPtr<IConnectionPointContainer> ofPoint;
    CHECK(Point()->GetConnectionPointContainer(&ofPoint) == S_OK);
    CHECK(ofPoint.Get() == container);
    CHECK(container->FindConnectionPoint(IID_IDispatch, &found[0]) == CONNECT_E_NOCONNECTION);
    CHECK(found[0] == nullptr);
}

TEST_CASE_FIXTURE(Owner, "the connections are enumerated as they stood when they were asked for") {
    EventConnection first(this, kEvents, {});
    EventConnection second(this, kEvents, {});
    const ComPtr<IEnumConnections> connections = Connections();
    EventConnection third(this, kEvents, {});

    CONNECTDATA data[3] = {};
    ULONG count = 0;
    CHECK(connections->Next(1, data, nullptr) == S_OK);
    CHECK(data[0].dwCookie == 1);
    data[0].pUnk->Release();
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

    CHECK(clone->Reset() == S_OK);
    CHECK(clone->Skip(1) == S_OK);
    CHECK(clone->Skip(2) == S_FALSE);
    CHECK(clone->Next(1, data, &count) == S_FALSE);
    CHECK(clone->Next(2, data, nullptr) == E_POINTER);
    CHECK(clone->Next(1, nullptr, &count) == E_POINTER);
    CHECK(clone->Clone(nullptr) == E_POINTER);
}

TEST_CASE_FIXTURE(Owner, "connection points return an error for what makes no sense") {
    const ComPtr<IConnectionPoint> point = Point();
    DWORD cookie = 7;
    CHECK(point->Advise(nullptr, &cookie) == E_POINTER);
    CHECK(point->Advise(this, nullptr) == E_POINTER);
    CHECK(point->Advise(this, &cookie) == CONNECT_E_CANNOTCONNECT);
    CHECK(cookie == 0);
    CHECK(point->Unadvise(1) == CONNECT_E_NOCONNECTION);
    CHECK(point->GetConnectionInterface(nullptr) == E_POINTER);
    CHECK(point->GetConnectionPointContainer(nullptr) == E_POINTER);
    CHECK(point->EnumConnections(nullptr) == E_POINTER);
    CHECK(container->EnumConnectionPoints(nullptr) == E_POINTER);
    CHECK(container->FindConnectionPoint(kEvents, nullptr) == E_POINTER);
    ComPtr<IDispatch> dispatch;
    CHECK(point->QueryInterface(IID_PPV_ARGS(&dispatch)) == E_NOINTERFACE);
}

TEST_CASE_FIXTURE(
    Owner, "a sink of events tells no type information and no names, and one interface beside IDispatch") {
    EventConnection connection(this, kEvents, {});
    CONNECTDATA data{};
    REQUIRE(Connections()->Next(1, &data, nullptr) == S_OK);
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
