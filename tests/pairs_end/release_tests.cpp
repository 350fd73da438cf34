// ReleaseConfig during every call that the manager makes, and everything else during the calls that
// ReleaseConfig makes. A process refuses everything from then on, so that each of these pairs has a process
// of its own.
#include <doctest.h>

#include <string>
#include <vector>

#include "platform/com/bstr.h"
#include "tests/pairs/guarded_memory.h"
#include "tests/pairs/incoming_work.h"
#include "tests/support/alone.h"
#include "tests/support/automation.h"
#include "tests/support/error_of.h"
#include "tray/picture_array.h"
#include "tray/picture_box.h"

namespace {

const char* TextOf(Moment moment) {
    return moment == Moment::BeforeReply ? " before the reply" : " behind the reply";
}

constexpr Moment kMoments[] = {Moment::BeforeReply, Moment::AfterReply};

template <class Body>
void ForEachPair(Body body) {
    for (const OutgoingCall& row : OutgoingCalls()) {
        for (const Moment moment : kMoments) {
            if (moment == Moment::BeforeReply || !row.hasOneMoment)
                body(row, moment, std::string(row.name) + TextOf(moment));
        }
    }
}

// What a client holds when ReleaseConfig comes.
struct Client {
    explicit Client(const Case& manager) {
        if (g_oConfig == nullptr) return;
        config = static_cast<_Config*>(g_oConfig.Get());
        form = static_cast<_frmConfig*>(g_frmConfig.Get());
        icon = manager.Icon();
        ComPtr<IDispatch> object;
        if (SUCCEEDED(form->get_picTray(0, &object))) object->QueryInterface(IID_PPV_ARGS(&picture));
    }

    ComPtr<_Config> config;
    ComPtr<_frmConfig> form;
    ComPtr<_ShellNotification> icon;
    ComPtr<_PictureBox> picture;
};

#define REFUSED(call) CHECK((call) == CO_E_SERVER_STOPPING)

void CheckControlRefused() {
    const auto control = MakeObject<ConfigControl>();
    for (long showType = 0; showType <= 4; ++showType) {
        ComPtr<IDispatch> config;
        REFUSED(control->ConfigInstance(&showType, &config));
    }
    REFUSED(control->ReleaseConfig());
}

void CheckConfigRefused(_Config& config) {
    Variant value;
    REFUSED(config.get_ConfigHwnd(value.Receive()));
    REFUSED(config.get_ConfigForm(value.Receive()));
    REFUSED(config.get_ShellIconClass(value.Receive()));
    ComPtr<IProvideClassInfo> provider;
    ComPtr<ITypeInfo> info;
    REQUIRE(SUCCEEDED(config.QueryInterface(IID_PPV_ARGS(&provider))));
    REFUSED(provider->GetClassInfo(&info));
}

void CheckFormRefused(_frmConfig& form) {
    VARIANT_BOOL boolean;
    LONG number;
    ComPtr<IDispatch> object;
    BstrHandle text;
    const Variant name(L"cmdApply");
    REFUSED(form.get_b_OKtoUnload(&boolean));
    REFUSED(form.put_b_OKtoUnload(VARIANT_TRUE));
    REFUSED(form.get_m_oShellIcon(&object));
    REFUSED(form.get_m_oPopup(&object));
    REFUSED(form.Show());
    REFUSED(form.Hide());
    REFUSED(form.get_Visible(&boolean));
    REFUSED(form.put_Visible(VARIANT_TRUE));
    REFUSED(form.put_Visible(VARIANT_FALSE));
    REFUSED(form.get_Caption(text.Put()));
    REFUSED(form.put_Caption(name.Value().bstrVal));
    REFUSED(form.get_hWnd(&number));
    REFUSED(form.get_picShellIcon(&object));
    REFUSED(form.get_picTray(0, &object));
    REFUSED(form.ControlHwnd(name.Value().bstrVal, &number));
    // By name, as scripts ask.
    for (const wchar_t* const member : {L"hWnd", L"Visible", L"Caption", L"m_oShellIcon"}) {
        REFUSED(ErrorOf([&] { Get(&form, member); }));
    }
}

void CheckIconRefused(_ShellNotification& icon, IDispatch* picture) {
    BstrHandle tip;
    PictureArray pictures(0, 3);
    REFUSED(icon.get_ToolTip(tip.Put()));
    REFUSED(icon.put_ToolTip(Variant(L"Sentrel").Value().bstrVal));
    REFUSED(icon.InitShellNotify(0, kTrayCallback));
    REFUSED(icon.AddIcon(picture));
    REFUSED(icon.RemoveIcon());
    REFUSED(icon.AnimateIcon(pictures.Reference(), 250, 1, 0));
}

void CheckPictureRefused(_PictureBox& box) {
    BstrHandle name;
    ComPtr<IDispatch> picture;
    REFUSED(box.get_Name(name.Put()));
    REFUSED(box.get_Picture(&picture));
}

void CheckAllRefused(const Client& client) {
    CheckControlRefused();
    if (client.config != nullptr) CheckConfigRefused(*client.config.Get());
    if (client.form != nullptr) CheckFormRefused(*client.form.Get());
    if (client.icon != nullptr) CheckIconRefused(*client.icon.Get(), client.picture.Get());
    if (client.picture != nullptr) CheckPictureRefused(*client.picture.Get());
}

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
    CHECK(manager.outside.clock.Running() == 0);
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
            row.prepare(manager);
            HRESULT ended = E_FAIL;
            manager.outside.LetIn(row.call, moment, [&] {
                const Client late(manager);
                ended = MakeObject<ConfigControl>()->ReleaseConfig();
                CheckAllRefused(late);
            });
            row.make(manager);
            CHECK(ended == S_OK);
            CHECK(isSuspended);
            CheckGone(manager);
            CheckAllRefused(client);
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
                        CHECK_MESSAGE(manager.Windows() <= 1, work.name);
                    }
                    CheckAllRefused(client);
                });
                CHECK(manager.control->ReleaseConfig() == S_OK);
                CHECK(manager.outside.HasComeIn());
                CheckGone(manager);
                CheckAllRefused(client);
                NotePassed();
            }
        }
    }
}
