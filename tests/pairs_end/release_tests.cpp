// ReleaseConfig during every call that the manager makes, and everything else during the calls that
// ReleaseConfig makes. A process refuses everything from then on, so that each of these pairs has a process
// of its own.
#include <doctest.h>

#include <string>
#include <vector>

#include "tests/pairs/guarded_memory.h"
#include "tests/pairs/pairs.h"
#include "tests/support/alone.h"

namespace {

struct Pair {
    const OutgoingCall& row;
    Moment moment;
    std::string name;
};

std::vector<Pair> PairsOf(bool (*isWanted)(const OutgoingCall&)) {
    std::vector<Pair> pairs;
    for (const OutgoingCall& row : OutgoingCalls()) {
        if (!isWanted(row)) continue;
        pairs.push_back({row, Moment::BeforeReply, row.name + " before the reply"});
        if (!row.traits.hasOneMoment)
            pairs.push_back({row, Moment::AfterReply, row.name + " behind the reply"});
    }
    return pairs;
}
std::vector<Pair> AllPairs() {
    return PairsOf([](const OutgoingCall&) { return true; });
}
std::vector<Pair> PairsOfRelease() {
    return PairsOf([](const OutgoingCall& row) { return row.IsExit(); });
}

void CheckEachAlone(const char* test, const std::vector<Pair>& pairs) {
    std::vector<std::string> names;
    for (const Pair& pair : pairs)
        names.push_back(pair.name);
    CheckAlone(test, names);
}

// The objects that a client holds when ReleaseConfig comes, and what their members are.
class Client {
public:
    explicit Client(const Case& manager) {
        Take(static_cast<_ConfigControl*>(manager.control.Get()));
        Take(static_cast<_Config*>(g_oConfig.Get()));
        Take(static_cast<_frmConfig*>(g_frmConfig.Get()));
        Take(manager.Icon().Get());
        Take(manager.Picture().Get());
    }

    void CheckAllRefused() const {
        for (const auto& [object, info] : m_objects) {
            FUNCDESC* member = nullptr;
            UINT members = 0;
            for (; SUCCEEDED(info->GetFuncDesc(members, &member)); ++members) {
                CheckRefused(object.Get(), *member);
                info->ReleaseFuncDesc(member);
            }
            CHECK(members >= 2);
            ComPtr<IProvideClassInfo> provider;
            ComPtr<ITypeInfo> ofClass;
            if (SUCCEEDED(object.As(&provider)))
                CHECK(provider->GetClassInfo(&ofClass) == CO_E_SERVER_STOPPING);
        }
    }

private:
    void Take(IDispatch* object) {
        ComPtr<ITypeInfo> members;
        ComPtr<ITypeInfo> ofInterface;
        HREFTYPE reference = 0;
        if (object == nullptr) return;
        REQUIRE(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, &members) == S_OK);
        // The interface itself, as C++ sees it.
        REQUIRE(members->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference) == S_OK);
        REQUIRE(members->GetRefTypeInfo(reference, &ofInterface) == S_OK);
        m_objects.emplace_back(object, ofInterface);
    }

    // Who refuses looks at no argument, but empties the places of results: each argument is such a place.
    static void CheckRefused(IDispatch* object, const FUNCDESC& member) {
        CAPTURE(member.oVft);
        VARIANT place{};
        VARIANT argument{};
        argument.byref = &place;
        const auto count = static_cast<size_t>(member.cParams);
        std::vector<VARTYPE> types(count, VT_I4);
        std::vector<VARIANTARG*> arguments(count, &argument);
        Variant result;
        REQUIRE(DispCallFunc(object, static_cast<ULONG_PTR>(member.oVft), CC_STDCALL, VT_I4,
                             static_cast<UINT>(count), types.data(), arguments.data(),
                             result.Receive()) == S_OK);
        CHECK(result.Value().lVal == CO_E_SERVER_STOPPING);
    }

    std::vector<std::pair<ComPtr<IDispatch>, ComPtr<ITypeInfo>>> m_objects;
};

// Of this process, which ends nothing but notes that it would have ended.
struct Ending {
    const GuardedMemory memory;
    const NotedEnd end;
    // Class objects that still took new clients while the window goes would give them a dying process.
    bool isSuspended = false;
    const ImportFake<"CoSuspendClassObjects", decltype(&CoSuspendClassObjects)> suspend{"ole32.dll", [this] {
                                                                                            isSuspended =
                                                                                                true;
                                                                                            return S_OK;
                                                                                        }};
};

void CheckGone(Case& manager) {
    manager.Settle();
    CHECK(manager.Windows() == 0);
    CHECK(manager.outside.icons.empty());
    CHECK(manager.outside.mostIcons <= 1);
    CHECK(manager.outside.engine.popup == nullptr);
    CHECK(manager.outside.engine.script.Count("Popup gone with its events") == 0);
    CHECK(!manager.outside.clock.AnyRuns());
    CHECK(NotedEnd::Count() == 1);
    CHECK(g_frmConfig == nullptr);
}

}  // namespace

TEST_CASE("ReleaseConfig during whatever call takes everything away for good") {
    CheckEachAlone("alone: ReleaseConfig in a call", AllPairs());
}

TEST_CASE_FIXTURE(Ending, "alone: ReleaseConfig in a call" * doctest::skip(true)) {
    for (const auto& [row, moment, name] : AllPairs()) {
        SUBCASE(name.c_str()) {
            Case manager;
            if (!row.IsStart()) manager.HaveWindow();
            const Client client(manager);
            row.traits.prepare(manager);
            HRESULT ended = E_FAIL;
            manager.outside.LetIn(row.call, moment, [&] {
                const Client late(manager);
                ended = MakeObject<ConfigControl>()->ReleaseConfig();
                late.CheckAllRefused();
            });
            row.make(manager);
            CHECK(ended == S_OK);
            CHECK(isSuspended);
            client.CheckAllRefused();
            CheckGone(manager);
            NotePassed();
        }
    }
}

TEST_CASE("nothing that comes in while ReleaseConfig takes the window away brings anything back") {
    CheckEachAlone("alone: everything during the calls of ReleaseConfig", PairsOfRelease());
}

TEST_CASE_FIXTURE(Ending, "alone: everything during the calls of ReleaseConfig" * doctest::skip(true)) {
    for (const auto& [row, moment, name] : PairsOfRelease()) {
        SUBCASE(name.c_str()) {
            Case manager;
            manager.HaveWindow();
            const Client client(manager);
            manager.outside.LetIn(row.call, moment, [&] {
                CHECK(isSuspended);
                for (const IncomingWork& work : IncomingWorks()) {
                    work.come(manager);
                    CHECK_MESSAGE(manager.Windows() <= 1, work.name);
                }
                client.CheckAllRefused();
            });
            CHECK(manager.control->ReleaseConfig() == S_OK);
            CHECK(manager.outside.HasComeIn());
            client.CheckAllRefused();
            CheckGone(manager);
            NotePassed();
        }
    }
}
