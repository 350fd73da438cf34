// What comes in while the window goes; and ReleaseConfig during every call that the manager makes, and
// everything else during the calls that ReleaseConfig makes. A process refuses everything from then on, so
// that each of these pairs has a process of its own.
#include <doctest.h>

#include <ocidl.h>

#include <string>
#include <vector>

#include "platform/com/class_object.h"
#include "tests/pairs/pairs.h"
#include "tests/support/alone.h"
#include "tests/support/automation.h"

namespace {

struct Pair {
    const OutgoingCall& row;
    Moment moment;
    bool isOfRelease;  // the call is one of ReleaseConfig's
    std::string name;
};

std::vector<Pair> Pairs() {
    std::vector<Pair> pairs;
    for (const OutgoingCall& row : OutgoingCalls()) {
        for (const Moment moment : {Moment::BeforeReply, Moment::AfterReply}) {
            if (moment == Moment::AfterReply && row.traits.hasOneMoment) continue;
            const std::string when =
                moment == Moment::BeforeReply ? " before the reply" : " behind the reply";
            pairs.push_back({row, moment, false, "ReleaseConfig while " + row.name + when});
            if (row.IsExit()) pairs.push_back({row, moment, true, "ReleaseConfig calls: " + row.name + when});
        }
    }
    return pairs;
}

// A member that a client could call, by its place in the object's table.
struct Member {
    ComPtr<IUnknown> object;
    ULONG_PTR place;
    size_t arguments;
};

// Those of an interface behind IUnknown's, by the counts of their arguments.
void Add(std::vector<Member>& members, const ComPtr<IUnknown>& object,
         std::initializer_list<size_t> argumentCounts) {
    ULONG_PTR place = 3 * sizeof(void*);
    for (const size_t arguments : argumentCounts) {
        members.push_back({object, place, arguments});
        place += sizeof(void*);
    }
}

constexpr auto kOfDispatch = {size_t{1}, size_t{3}, size_t{5}, size_t{8}};

// Those of an object's events, of who enumerates them and of who listens to them.
void AddEvents(std::vector<Member>& members, const ComPtr<IDispatch>& source, REFIID events) {
    if (source == nullptr) return;
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IConnectionPoint> point;
    ComPtr<IEnumConnectionPoints> points;
    ComPtr<IEnumConnections> connections;
    REQUIRE(source.As(&container) == S_OK);
    REQUIRE(container->FindConnectionPoint(events, &point) == S_OK);
    REQUIRE(container->EnumConnectionPoints(&points) == S_OK);
    REQUIRE(point->EnumConnections(&connections) == S_OK);
    Add(members, container, {1, 2});
    Add(members, point, {1, 1, 2, 1, 1});
    Add(members, points, {3, 1, 0, 1});
    Add(members, connections, {3, 1, 0, 1});
    if (const auto listener = ListenerTo(source.Get(), events)) Add(members, listener, kOfDispatch);
}

// All of what a client could have as of now: ReleaseConfig refuses this question, too.
std::vector<Member> MembersOf(const Case& manager) {
    std::vector<Member> members;
    for (const ComPtr<IDispatch>& object :
         {ComPtr<IDispatch>(static_cast<_ConfigControl*>(manager.control.Get())),
          ComPtr<IDispatch>(static_cast<_Config*>(g_oConfig.Get())),
          ComPtr<IDispatch>(static_cast<_frmConfig*>(g_frmConfig.Get())),
          ComPtr<IDispatch>(manager.Icon().Get()), manager.Picture()}) {
        if (object == nullptr) continue;
        Add(members, object, kOfDispatch);
        ComPtr<ITypeInfo> ofScripts;
        ComPtr<ITypeInfo> info;
        HREFTYPE reference = 0;
        REQUIRE(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, &ofScripts) == S_OK);
        // The interface itself, as C++ sees it.
        REQUIRE(ofScripts->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference) == S_OK);
        REQUIRE(ofScripts->GetRefTypeInfo(reference, &info) == S_OK);
        FUNCDESC* member = nullptr;
        for (UINT i = 0; SUCCEEDED(info->GetFuncDesc(i, &member)); ++i) {
            members.push_back(
                {object, static_cast<ULONG_PTR>(member->oVft), static_cast<size_t>(member->cParams)});
            info->ReleaseFuncDesc(member);
        }
        ComPtr<ISupportErrorInfo> errors;
        ComPtr<IProvideClassInfo> provider;
        REQUIRE(object.As(&errors) == S_OK);
        Add(members, errors, {1});
        if (SUCCEEDED(object.As(&provider))) Add(members, provider, {1});
    }
    AddEvents(members, static_cast<_Config*>(g_oConfig.Get()), __uuidof(__Config));
    AddEvents(members, manager.Icon().Get(), __uuidof(__ShellNotification));
    const auto addClass = [&](REFCLSID, IUnknown* factory, DWORD, DWORD, DWORD*) {
        Add(members, factory, {3, 1});
        return S_OK;
    };
    const ImportFake<"CoRegisterClassObject", decltype(&CoRegisterClassObject)> fake{"ole32.dll", addClass};
    const ClassRegistration registration(__uuidof(ConfigControl), [](REFIID, void**) { return E_FAIL; });
    return members;
}

void CheckRefused(const std::vector<Member>& members) {
    CHECK(members.size() >= 2);
    for (const auto& [object, place, count] : members) {
        CAPTURE(place);
        // Who refuses looks at no argument, but empties the places of results: each argument is such a place.
        VARIANT emptied{};
        VARIANT argument{};
        argument.byref = &emptied;
        std::vector<VARTYPE> types(count, VT_I4);
        std::vector<VARIANTARG*> arguments(count, &argument);
        Variant result;
        REQUIRE(DispCallFunc(object.Get(), place, CC_STDCALL, VT_I4, static_cast<UINT>(count), types.data(),
                             arguments.data(), result.Receive()) == S_OK);
        CHECK(result.Value().lVal == CO_E_SERVER_STOPPING);
    }
}

}  // namespace

TEST_CASE("whatever comes in while the window goes breaks nothing") {
    RunRows([](const OutgoingCall& row) { return row.IsUnload(); });
}

TEST_CASE(
    "ReleaseConfig during whatever call takes everything away for good, and nothing that comes in meanwhile "
    "brings anything back") {
    std::vector<std::string> names;
    for (const Pair& pair : Pairs())
        names.push_back(pair.name);
    CheckAlone("alone: ReleaseConfig", names);
}

TEST_CASE("alone: ReleaseConfig" * doctest::skip(true)) {
    const NotedEnd end;
    // Class objects that still took new clients while the window goes would give them a dying process.
    bool isSuspended = false;
    const auto suspend = [&] {
        isSuspended = true;
        return S_OK;
    };
    const ImportFake<"CoSuspendClassObjects", decltype(&CoSuspendClassObjects)> fake{"ole32.dll", suspend};
    bool isRevoked = false;
    const ClassRegistration offered(__uuidof(ConfigControl), nullptr);
    const auto revoke = [&](DWORD) {
        isRevoked = isSuspended;
        return S_OK;
    };
    const ImportFake<"CoRevokeClassObject", decltype(&CoRevokeClassObject)> revokes{"ole32.dll", revoke};
    for (const auto& [row, moment, isOfRelease, name] : Pairs()) {
        SUBCASE(name.c_str()) {
            Case manager;
            Outside& outside = manager.outside;
            if (!row.IsStart()) manager.HaveWindow();
            const std::vector<Member> members = MembersOf(manager);
            row.traits.prepare(manager);
            const auto release = [&] {
                const std::vector<Member> late = MembersOf(manager);
                CHECK(MakeObject<ConfigControl>()->ReleaseConfig() == S_OK);
                CHECK(isRevoked);
                CheckRefused(late);
            };
            const auto comeIn = [&] {
                CHECK(isRevoked);
                for (const IncomingWork& work : IncomingWorks()) {
                    work.come(manager);
                    CHECK_MESSAGE(manager.Windows().size() <= 1, work.name);
                }
                CheckRefused(members);
            };
            outside.LetIn(row.call, moment, isOfRelease ? std::function<void()>(comeIn) : release);
            isOfRelease ? release() : row.make(manager);
            CHECK(outside.HasComeIn());
            CheckRefused(members);
            manager.Settle();
            CHECK(manager.Windows().empty());
            CHECK(outside.icons.empty());
            CHECK(outside.mostIcons <= 1);
            CHECK(outside.engine.popup == nullptr);
            CHECK(outside.engine.script.Count("Popup gone with its events") == 0);
            CHECK(!outside.clock.AnyRuns());
            CHECK(NotedEnd::Count() == 1);
            CHECK(g_frmConfig == nullptr);
            NotePassed();
        }
    }
}
