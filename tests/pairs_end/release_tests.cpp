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

const char* TextOf(Moment moment) {
    return moment == Moment::BeforeReply ? " before the reply" : " behind the reply";
}

constexpr Moment kMoments[] = {Moment::BeforeReply, Moment::AfterReply};

template <class Body>
void ForEachPair(Body body) {
    for (const OutgoingCall& row : OutgoingCalls()) {
        for (const Moment moment : kMoments) {
            if (moment == Moment::BeforeReply || !row.traits.hasOneMoment)
                body(row, moment, std::string(row.name) + TextOf(moment));
        }
    }
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

    // Who refuses looks at no argument but for the places of results: all others are 0.
    static void CheckRefused(IDispatch* object, const FUNCDESC& member) {
        CAPTURE(member.oVft);
        constexpr SHORT kMost = 8;
        VARIANT place{};
        VARIANT values[kMost]{};
        VARIANTARG* arguments[kMost]{};
        VARTYPE types[kMost]{};
        REQUIRE(member.cParams <= kMost);
        for (SHORT i = 0; i < member.cParams; ++i) {
            if (member.lprgelemdescParam[i].tdesc.vt == VT_PTR) values[i].byref = &place;
            arguments[i] = &values[i];
            types[i] = VT_I4;
        }
        Variant result;
        REQUIRE(DispCallFunc(object, static_cast<ULONG_PTR>(member.oVft), CC_STDCALL, VT_I4,
                             static_cast<UINT>(member.cParams), types, arguments, result.Receive()) == S_OK);
        CHECK(result.Value().lVal == CO_E_SERVER_STOPPING);
    }

    std::vector<std::pair<ComPtr<IDispatch>, ComPtr<ITypeInfo>>> m_objects;
};

// Of this process, which ends nothing but notes that it would have ended.
struct Ending {
    // Class objects that still took new clients while the window goes would give them a dying process.
    static HRESULT WINAPI NoteSuspension() {
        isSuspended = true;
        return S_OK;
    }

    static inline bool isSuspended = false;
    const GuardedMemory memory;
    const ImportPatch suspend{"ole32.dll", "CoSuspendClassObjects", &NoteSuspension};
    const NotedEnd end;
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

constexpr const char* kAloneIn = "alone: ReleaseConfig in a call";
constexpr const char* kAloneDuring = "alone: everything during the calls of ReleaseConfig";
constexpr const char* kCallsOfRelease[] = {"Unadvise", "NIM_DELETE", "ReleasePopup"};

}  // namespace

TEST_CASE("ReleaseConfig during whatever call takes everything away for good") {
    std::vector<std::string> pairs;
    ForEachPair([&](const OutgoingCall&, Moment, const std::string& name) { pairs.push_back(name); });
    CheckAlone(kAloneIn, pairs);
}

TEST_CASE_FIXTURE(Ending, "alone: ReleaseConfig in a call" * doctest::skip(true)) {
    ForEachPair([&](const OutgoingCall& row, Moment moment, const std::string& name) {
        SUBCASE(name.c_str()) {
            CAPTURE(name);
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
    });
}

TEST_CASE("nothing that comes in while ReleaseConfig takes the window away brings anything back") {
    std::vector<std::string> pairs;
    for (const char* const call : kCallsOfRelease) {
        for (const Moment moment : kMoments)
            pairs.push_back(std::string(call) + TextOf(moment));
    }
    CheckAlone(kAloneDuring, pairs);
}

TEST_CASE_FIXTURE(Ending, "alone: everything during the calls of ReleaseConfig" * doctest::skip(true)) {
    for (const char* const call : kCallsOfRelease) {
        for (const Moment moment : kMoments) {
            SUBCASE((std::string(call) + TextOf(moment)).c_str()) {
                Case manager;
                manager.HaveWindow();
                const Client client(manager);
                manager.outside.LetIn(call, moment, [&] {
                    CHECK(isSuspended);
                    for (const IncomingWork& work : IncomingWorks()) {
                        work.come(manager);
                        CHECK_MESSAGE(manager.Windows() <= 1, std::string(work.name));
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
}
