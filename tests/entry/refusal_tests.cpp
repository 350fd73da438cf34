// From ReleaseConfig on, every member of every object but those of IUnknown is refused. The objects' own
// members are asked in the suite "pairs_end"; these are the others.
#include <doctest.h>

#include "platform/com/class_object.h"
#include "shell_notification_interface.h"
#include "tests/entry/inside.h"
#include "tests/support/alone.h"

namespace {

bool isRefused = false;

void Check(const char* member, HRESULT result) {
    CAPTURE(member);
    CAPTURE(isRefused);
    CHECK((result == CO_E_SERVER_STOPPING) == isRefused);
}

// Those that come with IDispatch and with the errors' texts.
void CheckDispatch(IUnknown* object) {
    ComPtr<IDispatch> dispatch;
    ComPtr<ITypeInfo> info;
    UINT count = 0;
    wchar_t text[] = L"hWnd";
    LPOLESTR name = text;
    DISPID id = 0;
    DISPPARAMS none{};
    REQUIRE(object->QueryInterface(IID_PPV_ARGS(&dispatch)) == S_OK);
    Check("GetTypeInfoCount", dispatch->GetTypeInfoCount(&count));
    Check("GetTypeInfo", dispatch->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info));
    Check("GetIDsOfNames", dispatch->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id));
    Check("Invoke", dispatch->Invoke(DISPID_UNKNOWN, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none,
                                     nullptr, nullptr, nullptr));
    ComPtr<ISupportErrorInfo> errors;
    if (SUCCEEDED(dispatch.As(&errors)))
        Check("InterfaceSupportsErrorInfo", errors->InterfaceSupportsErrorInfo(IID_IDispatch));
}

template <class Item, class Enumerator>
void CheckEnumerator(Enumerator& items) {
    Item item{};
    ULONG count = 0;
    ComPtr<Enumerator> clone;
    Check("Next", items.Next(0, &item, &count));
    Check("Skip", items.Skip(0));
    Check("Reset", items.Reset());
    Check("Clone", items.Clone(&clone));
}

// The connection point of an object, who enumerates them, and a sink that is connected.
class Events {
public:
    Events(IUnknown* source, const IID& events) : m_events(events) {
        REQUIRE(source->QueryInterface(IID_PPV_ARGS(&m_container)) == S_OK);
        REQUIRE(m_container->EnumConnectionPoints(&m_points) == S_OK);
        REQUIRE(m_container->FindConnectionPoint(events, &m_point) == S_OK);
        REQUIRE(m_point->EnumConnections(&m_connections) == S_OK);
        CONNECTDATA connection{};
        if (m_connections->Next(1, &connection, nullptr) == S_OK) *m_sink.GetAddressOf() = connection.pUnk;
    }

    void Check() const {
        IID id{};
        DWORD cookie = 0;
        ComPtr<IEnumConnectionPoints> points;
        ComPtr<IEnumConnections> connections;
        ComPtr<IConnectionPoint> point;
        ComPtr<IConnectionPointContainer> container;
        if (m_sink != nullptr) CheckDispatch(m_sink.Get());
        CheckEnumerator<IConnectionPoint*>(*m_points.Get());
        CheckEnumerator<CONNECTDATA>(*m_connections.Get());
        ::Check("EnumConnectionPoints", m_container->EnumConnectionPoints(&points));
        ::Check("FindConnectionPoint", m_container->FindConnectionPoint(m_events, &point));
        ::Check("GetConnectionInterface", m_point->GetConnectionInterface(&id));
        ::Check("GetConnectionPointContainer", m_point->GetConnectionPointContainer(&container));
        ::Check("Advise", m_point->Advise(m_point.Get(), &cookie));
        ::Check("Unadvise", m_point->Unadvise(0));
        ::Check("EnumConnections", m_point->EnumConnections(&connections));
    }

private:
    const IID m_events;
    ComPtr<IConnectionPointContainer> m_container;
    ComPtr<IEnumConnectionPoints> m_points;
    ComPtr<IConnectionPoint> m_point;
    ComPtr<IEnumConnections> m_connections;
    ComPtr<IUnknown> m_sink;
};

IClassFactory* offered = nullptr;

HRESULT WINAPI TakeClassObject(REFCLSID, IUnknown* object, DWORD, DWORD, DWORD*) {
    return object->QueryInterface(IID_PPV_ARGS(&offered));
}

}  // namespace

TEST_CASE("after ReleaseConfig the members of IDispatch, of the events and of the class are refused too") {
    CheckAlone("alone: members that are not the objects' own");
}

TEST_CASE("alone: members that are not the objects' own" * doctest::skip(true)) {
    const NotedEnd end;
    const ImportPatch registers("ole32.dll", "CoRegisterClassObject", &TakeClassObject);
    InsideWithoutEngine inside;
    const auto config = inside.Instance(FormHide);
    ComPtr<IDispatch> icon;
    ComPtr<IDispatch> picture;
    REQUIRE(g_frmConfig->get_m_oShellIcon(&icon) == S_OK);
    REQUIRE(g_frmConfig->get_picShellIcon(&picture) == S_OK);
    IUnknown* const objects[] = {static_cast<_ConfigControl*>(inside.control.Get()), config.Get(),
                                 static_cast<_frmConfig*>(g_frmConfig.Get()), icon.Get(), picture.Get()};
    const Events ofConfig(config.Get(), __uuidof(__Config));
    const Events ofIcon(icon.Get(), __uuidof(__ShellNotification));
    const ClassRegistration registration(__uuidof(ConfigControl), [](REFIID id, void** object) {
        return MakeObject<ConfigControl>()->QueryInterface(id, object);
    });
    for (const bool isReleased : {false, true}) {
        if (isReleased) REQUIRE(inside.control->ReleaseConfig() == S_OK);
        isRefused = isReleased;
        for (IUnknown* const object : objects)
            CheckDispatch(object);
        ofConfig.Check();
        ofIcon.Check();
        ComPtr<IUnknown> made;
        Check("CreateInstance", offered->CreateInstance(nullptr, IID_PPV_ARGS(&made)));
        Check("LockServer", offered->LockServer(TRUE));
    }
    NotePassed();
}
