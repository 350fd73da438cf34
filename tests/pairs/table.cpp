#include <doctest.h>

#include <cstdio>
#include <string_view>

#include "tests/pairs/pairs.h"

namespace {

bool IsMarked(Mark outer, Mark inner, bool isLoad) {
    if (outer == Mark::Cleared) return false;
    if (outer == Mark::Set) return true;
    if (outer == Mark::ClearedUnlessChanged && inner == Mark::Cleared) return false;
    return inner == Mark::SetEvenWhileLoading || (inner == Mark::Set && !isLoad);
}

// The rows that a key of the store holds, whose numbers begin with first.
int StoredRows(const Case& manager, const std::string& key, int first, const std::string& field) {
    const auto stored = manager.registry.contents.find("HKCU\\Software\\Calvane\\" + key);
    int rows = 0;
    while (stored != manager.registry.contents.end() &&
           stored->second.contains(std::to_string(first + rows) + field))
        ++rows;
    return rows;
}

void CheckWindow(const Case& manager, const OutgoingCall& row, const IncomingTraits& done) {
    const size_t windows = manager.Windows().size();
    CHECK(windows <= 1);
    if (row.IsUnload()) {
        CHECK((windows == 1) == done.showsWindow);
    } else if (!done.takesWindow) {
        CHECK_MESSAGE(windows == 1, "the window is gone");
    } else if (!row.IsStart()) {
        CHECK_MESSAGE(windows == 0, "the window is still there");
    }
    const Outside& outside = manager.outside;
    if (windows == 0) {
        CHECK_MESSAGE(outside.icons.empty(), "an icon without a window");
        CHECK_MESSAGE(outside.engine.popup == nullptr, "an engine without a window");
        return;
    }
    if (row.IsUnload()) CHECK(IsWindowVisible(manager.Window()));
    CHECK(IsWindowEnabled(manager.Window()));
    CHECK(g_lngConfigHwnd == HandleToLong(manager.Window()));
    CHECK((outside.engine.popup != nullptr && outside.engine.ConnectionCount() == 1));
    const bool mayHaveNoIcon = done.takesIcon || row.call == std::string_view("NIM_DELETE");
    CHECK((outside.icons.size() == 1 || (mayHaveNoIcon && outside.icons.empty())));
    CHECK_MESSAGE(manager.Gesture(WM_MOUSEMOVE), "the icon takes no gestures");
}

void CheckContents(const Case& manager, const OutgoingCall& row, const IncomingTraits& done, bool isFresh) {
    if (manager.Window() == nullptr) return;
    CHECK(ListBoxRows(manager.Child(IDC_LSTCLOSEDWND)) == manager.newestLines);
    if (!isFresh)
        CHECK(manager.IsEnabled(IDC_CMDAPPLY) == IsMarked(row.traits.mark, done.mark, row.traits.isLoad));
    const auto checkList = [&](int list, int stored) {
        CAPTURE(list);
        const int shown = manager.RowCount(list);
        CAPTURE(shown);
        CHECK((shown == stored || (list == done.editedList && shown == stored + done.edit)));
    };
    checkList(IDC_LSTEXCLUDE, StoredRows(manager, "Exclude", 0, ""));
    checkList(IDC_LVWBANNERS, StoredRows(manager, "Banners", 1, "Name"));
    checkList(IDC_LVWSEARCHURLS, StoredRows(manager, "Search", 1, "Name"));
}

// When the window goes and everybody lets go, nothing is left.
void CheckEnd(Case& manager) {
    if (const auto form = manager.Form()) form->Unload();
    manager.Settle();
    CHECK(manager.Windows().empty());
    CHECK(manager.outside.icons.empty());
    CHECK_FALSE(manager.outside.clock.AnyRuns());
    const EngineScript& script = manager.outside.engine.script;
    CHECK(script.Count("Popup gone with its events") == 0);
    CHECK(script.Count("SentrelApp gone") == script.Count("CreateInstance"));
    CHECK(script.Count("ReleasePopup") == script.Count("CreatePopup"));
    CHECK(manager.outside.pictureBoxes == 0);
    CHECK(Locks() == manager.locks);
    manager.LetGo();
    manager.outside.icons.clear();
    CHECK(Locks() == manager.locks);
}

struct Counts {
    size_t pairs = 0;
    int notPossible = 0;
};

// Takes the next piece of work that has something to come through, and whatever is before it, which does
// nothing. The window is made again only where the pair takes it: making it is most of the work.
void RunNext(Case& manager, const OutgoingCall& row, std::span<const IncomingWork>& columns, Moment moment,
             Counts& counts) {
    const size_t left = columns.size();
    IncomingWork column = columns.front();
    const std::string when = moment == Moment::BeforeReply ? ", before the reply" : ", behind the reply";
    INFO(row.name << " x " << column.name << when);
    std::array<ULONG, 3> held{};
    if (!row.IsStart()) {
        manager.HaveWindow();
        held = manager.Held();
    }
    manager.outside.mostIcons = 0;
    row.traits.prepare(manager);
    const HWND before = manager.Window();
    HWND within = nullptr;
    Came came = Came::NotPossible;
    manager.outside.LetIn(row.call, moment, [&] {
        within = manager.Window();
        while (came == Came::NotPossible && !columns.empty()) {
            column = columns.front();
            columns = columns.subspan(1);
            came = column.come(manager);
            if (came == Came::NotPossible) ++counts.notPossible;
        }
    });
    row.make(manager);
    manager.Settle();
    CHECK_MESSAGE(manager.outside.HasComeIn(), "the call did not come");
    if (columns.size() == left) columns = columns.subspan(1);
    manager.outside.LetNothingIn();
    const IncomingTraits& work = column.traits;
    const IncomingTraits done = came == Came::In ? work : IncomingTraits{};
    CheckWindow(manager, row, done);
    const bool isFresh = manager.Window() != (row.IsStart() ? within : before);
    CheckContents(manager, row, done, isFresh);
    CHECK(manager.outside.mostIcons <= 1);
    if (row.IsStart() || isFresh || manager.Window() == nullptr) {
        CheckEnd(manager);
        if (row.IsStart() && work.mark == Mark::Cleared) manager.FillStore();
    } else {
        manager.Restore(row.traits.mark != Mark::Untouched || work.mark != Mark::Untouched || work.typesText,
                        work.leavesCommands || row.traits.leavesCommands);
        CHECK_MESSAGE(manager.Held() == held, "a reference is kept");
        CHECK_FALSE(manager.outside.clock.AnyRuns());
        CHECK(manager.outside.pictureBoxes == 0);
    }
    manager.registry.ForgetOpenHandles();
    counts.pairs += left - columns.size();
}

void RunRow(const OutgoingCall& row, Counts& counts) {
    std::vector<IncomingWork> works = IncomingWorks();
    works.push_back({"the same once more", [&row](Case& manager) {
                         row.make(manager);
                         return Came::In;
                     }});
    Case manager;
    for (const Moment moment : {Moment::BeforeReply, Moment::AfterReply}) {
        if (moment == Moment::AfterReply && row.traits.hasOneMoment) continue;
        std::span<const IncomingWork> columns(works);
        while (!columns.empty())
            RunNext(manager, row, columns, moment, counts);
    }
    INFO(row.name << ", when the window goes");
    CheckEnd(manager);
}

}  // namespace

void RunRows(bool (*isWanted)(const OutgoingCall&)) {
    Counts counts;
    for (const OutgoingCall& row : OutgoingCalls()) {
        if (isWanted(row)) RunRow(row, counts);
    }
    std::printf("%u pairs; in %d there was nothing that the work could come through\n",
                static_cast<unsigned>(counts.pairs), counts.notPossible);
    CHECK(counts.pairs > 0);
}
