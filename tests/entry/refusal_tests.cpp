// From ReleaseConfig on, every member of every object but those of IUnknown is refused. The objects' own
// members are asked in the suite "pairs_end"; these are the others.
#include <doctest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/com/class_object.h"
#include "tests/entry/alone.h"
#include "shell_notification_interface.h"

namespace {

// A member of an object that a client has, and a call of it.
struct Member {
    const char* name;
    std::function<HRESULT()> call;
};
using Members = std::vector<Member>;

// Those that come with IDispatch and with the errors' texts.
void AddDispatch(Members& members, IUnknown* object) {
    ComPtr<IDispatch> dispatch;
    REQUIRE(object->QueryInterface(IID_PPV_ARGS(&dispatch)) == S_OK);
    members.push_back({"GetTypeInfoCount", [dispatch] {
                           UINT count = 0;
                           return dispatch->GetTypeInfoCount(&count);
                       }});
    members.push_back({"GetTypeInfo", [dispatch] {
                           ComPtr<ITypeInfo> info;
                           return dispatch->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info);
                       }});
    members.push_back({"GetIDsOfNames", [dispatch] {
                           wchar_t text[] = L"hWnd";
                           LPOLESTR name = text;
                           DISPID id = 0;
                           return dispatch->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
                       }});
    members.push_back({"Invoke", [dispatch] {
                           DISPPARAMS none{};
                           return dispatch->Invoke(DISPID_UNKNOWN, IID_NULL, LOCALE_USER_DEFAULT,
                                                   DISPATCH_METHOD, &none, nullptr, nullptr, nullptr);
                       }});
    ComPtr<ISupportErrorInfo> errors;
    if (FAILED(dispatch.As(&errors))) return;
    members.push_back({"InterfaceSupportsErrorInfo",
                       [errors] { return errors->InterfaceSupportsErrorInfo(IID_IDispatch); }});
}

template <class Enumerator, class Item>
void AddEnumerator(Members& members, const ComPtr<Enumerator>& items) {
    members.push_back({"Next", [items] {
                           Item item{};
                           ULONG count = 0;
                           return items->Next(0, &item, &count);
                       }});
    members.push_back({"Skip", [items] { return items->Skip(0); }});
    members.push_back({"Reset", [items] { return items->Reset(); }});
    members.push_back({"Clone", [items] {
                           ComPtr<Enumerator> clone;
                           return items->Clone(&clone);
                       }});
}

// The connection point of an object, who enumerates them, and a sink that is connected.
void AddEvents(Members& members, IUnknown* source, REFIID events) {
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IEnumConnectionPoints> points;
    ComPtr<IConnectionPoint> point;
    ComPtr<IEnumConnections> connections;
    REQUIRE(source->QueryInterface(IID_PPV_ARGS(&container)) == S_OK);
    REQUIRE(container->EnumConnectionPoints(&points) == S_OK);
    REQUIRE(container->FindConnectionPoint(events, &point) == S_OK);
    REQUIRE(point->EnumConnections(&connections) == S_OK);
    CONNECTDATA connection{};
    if (connections->Next(1, &connection, nullptr) == S_OK) {
        AddDispatch(members, connection.pUnk);
        connection.pUnk->Release();
    }
    AddEnumerator<IEnumConnectionPoints, IConnectionPoint*>(members, points);
    AddEnumerator<IEnumConnections, CONNECTDATA>(members, connections);
    members.push_back({"EnumConnectionPoints", [container] {
                           ComPtr<IEnumConnectionPoints> others;
                           return container->EnumConnectionPoints(&others);
                       }});
    members.push_back({"FindConnectionPoint", [container, events] {
                           ComPtr<IConnectionPoint> other;
                           return container->FindConnectionPoint(events, &other);
                       }});
    members.push_back({"GetConnectionInterface", [point] {
                           IID id{};
                           return point->GetConnectionInterface(&id);
                       }});
    members.push_back({"GetConnectionPointContainer", [point] {
                           ComPtr<IConnectionPointContainer> owner;
                           return point->GetConnectionPointContainer(&owner);
                       }});
    members.push_back({"Advise", [point] {
                           DWORD cookie = 0;
                           return point->Advise(point.Get(), &cookie);
                       }});
    members.push_back({"Unadvise", [point] { return point->Unadvise(0); }});
    members.push_back({"EnumConnections", [point] {
                           ComPtr<IEnumConnections> others;
                           return point->EnumConnections(&others);
                       }});
}

IClassFactory* offered = nullptr;

HRESULT WINAPI TakeClassObject(REFCLSID, IUnknown* object, DWORD, DWORD, DWORD*) {
    return object->QueryInterface(IID_PPV_ARGS(&offered));
}

void AddClassObject(Members& members) {
    const ImportPatch registers("ole32.dll", "CoRegisterClassObject", &TakeClassObject);
    const ClassRegistration registration(__uuidof(ConfigControl), [](REFIID id, void** object) {
        return MakeObject<ConfigControl>()->QueryInterface(id, object);
    });
    ComPtr<IClassFactory> classObject;
    *classObject.GetAddressOf() = offered;
    members.push_back({"CreateInstance", [classObject] {
                           ComPtr<IUnknown> made;
                           return classObject->CreateInstance(nullptr, IID_PPV_ARGS(&made));
                       }});
    members.push_back({"LockServer", [classObject] { return classObject->LockServer(FALSE); }});
}

}  // namespace

TEST_CASE("after ReleaseConfig the members of IDispatch, of the events and of the class are refused too") {
    CheckInOwnProcess(L"alone: members that are not the objects' own");
}

TEST_CASE("alone: members that are not the objects' own" * doctest::skip(true)) {
    const NotedEnd end;
    InsideWithoutEngine inside;
    const auto config = inside.Instance(FormHide);
    ComPtr<IDispatch> icon;
    ComPtr<IDispatch> picture;
    REQUIRE(g_frmConfig->get_m_oShellIcon(&icon) == S_OK);
    REQUIRE(g_frmConfig->get_picShellIcon(&picture) == S_OK);
    Members members;
    for (IUnknown* const object : {static_cast<IUnknown*>(static_cast<_ConfigControl*>(inside.control.Get())),
                                   static_cast<IUnknown*>(config.Get()),
                                   static_cast<IUnknown*>(static_cast<_frmConfig*>(g_frmConfig.Get())),
                                   static_cast<IUnknown*>(icon.Get()), static_cast<IUnknown*>(picture.Get())})
        AddDispatch(members, object);
    AddEvents(members, config.Get(), __uuidof(__Config));
    AddEvents(members, icon.Get(), __uuidof(__ShellNotification));
    AddClassObject(members);
    for (const Member& member : members) {
        if (member.name == std::string("LockServer")) continue;
        CAPTURE(member.name);
        CHECK(member.call() != CO_E_SERVER_STOPPING);
    }
    REQUIRE(inside.control->ReleaseConfig() == S_OK);
    for (const Member& member : members) {
        CAPTURE(member.name);
        CHECK(member.call() == CO_E_SERVER_STOPPING);
    }
}
