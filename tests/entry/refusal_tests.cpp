// From ReleaseConfig on, every member of every object but those of IUnknown is refused. The objects' own
// members are asked in the suite "pairs_end"; these are the others.
#include <doctest.h>

#include <ocidl.h>

#include <string>
#include <vector>

#include "platform/com/class_object.h"
#include "shell_notification_interface.h"
#include "tests/entry/window_inside.h"
#include "tests/support/alone.h"
#include "tests/support/automation.h"
#include "tests/support/import_fake.h"

namespace {

// An interface, and how many arguments each of its members behind IUnknown's takes.
struct Interface {
    std::string name;
    ComPtr<IUnknown> object;
    std::vector<UINT> members;
};

const std::vector<UINT> kOfDispatch{1, 3, 5, 8};

template <class Wanted>
ComPtr<Wanted> As(IUnknown* object) {
    ComPtr<Wanted> found;
    REQUIRE(object->QueryInterface(IID_PPV_ARGS(&found)) == S_OK);
    return found;
}

// Those of the events, and of who enumerates them.
void AddEvents(std::vector<Interface>& all, IUnknown* source, REFIID events) {
    const auto container = As<IConnectionPointContainer>(source);
    ComPtr<IConnectionPoint> point;
    ComPtr<IEnumConnectionPoints> points;
    ComPtr<IEnumConnections> connections;
    REQUIRE(container->FindConnectionPoint(events, &point) == S_OK);
    REQUIRE(container->EnumConnectionPoints(&points) == S_OK);
    REQUIRE(point->EnumConnections(&connections) == S_OK);
    all.push_back({"IConnectionPointContainer", container, {1, 2}});
    all.push_back({"IConnectionPoint", point, {1, 1, 2, 1, 1}});
    all.push_back({"IEnumConnectionPoints", points, {3, 1, 0, 1}});
    all.push_back({"IEnumConnections", connections, {3, 1, 0, 1}});
}

// Who refuses looks at no argument, but empties the places of results: each argument is such a place.
HRESULT CallMember(IUnknown* object, size_t member, UINT argumentCount) {
    constexpr size_t kOfUnknown = 3;
    VARIANT place{};
    VARIANT argument{};
    argument.byref = &place;
    std::vector<VARTYPE> types(argumentCount, VT_I4);
    std::vector<VARIANTARG*> arguments(argumentCount, &argument);
    Variant result;
    REQUIRE(DispCallFunc(object, (kOfUnknown + member) * sizeof(void*), CC_STDCALL, VT_I4, argumentCount,
                         types.data(), arguments.data(), result.Receive()) == S_OK);
    return result.Value().lVal;
}

}  // namespace

TEST_CASE("after ReleaseConfig the members of IDispatch, of the events and of the class are refused too") {
    CheckAlone("alone: members that are not the objects' own");
}

TEST_CASE_FIXTURE(InsideWithoutEngine, "alone: members that are not the objects' own" * doctest::skip(true)) {
    const NotedEnd end;
    std::vector<Interface> all;
    const ImportFake<"CoRegisterClassObject", decltype(&CoRegisterClassObject)> registers{
        "ole32.dll", [&](REFCLSID, IUnknown* object, DWORD, DWORD, DWORD*) {
            all.push_back({"IClassFactory", As<IClassFactory>(object), {3, 1}});
            return S_OK;
        }};
    Instance(FormHide);
    for (const ComPtr<IDispatch>& object : Objects()) {
        all.push_back({"IDispatch", object, kOfDispatch});
        all.push_back({"ISupportErrorInfo", As<ISupportErrorInfo>(object.Get()), {1}});
    }
    const ComPtr<IDispatch> icon = Objects()[3];
    AddEvents(all, static_cast<_Config*>(g_oConfig.Get()), __uuidof(__Config));
    AddEvents(all, icon.Get(), __uuidof(__ShellNotification));
    const ComPtr<IDispatch> sink = ListenerTo(icon.Get(), __uuidof(__ShellNotification));
    REQUIRE(sink != nullptr);
    all.push_back({"IDispatch of the listener to the icon", sink, kOfDispatch});
    const ClassRegistration registration(__uuidof(ConfigControl), [](REFIID id, void** object) {
        return MakeObject<ConfigControl>()->QueryInterface(id, object);
    });
    REQUIRE(control->ReleaseConfig() == S_OK);
    for (const Interface& each : all) {
        for (size_t member = 0; member < each.members.size(); ++member) {
            CAPTURE(each.name);
            CAPTURE(member);
            CHECK(CallMember(each.object.Get(), member, each.members[member]) == CO_E_SERVER_STOPPING);
        }
    }
    NotePassed();
}
