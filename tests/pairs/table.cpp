#include "tests/pairs/table.h"

#include <doctest.h>

#include <cstdio>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "lists/resource.h"
#include "options/resource.h"
#include "tests/pairs/guarded_memory.h"
#include "tests/pairs/incoming_work.h"

namespace {

struct Problems {
    std::vector<std::string> texts;

    void Check(bool holds, const std::string& text) {
        if (!holds) texts.push_back(text);
    }
};

bool IsMarked(Mark outer, Mark inner, bool isLoad) {
    if (outer == Mark::Cleared) return false;
    if (outer == Mark::Set) return true;
    if (outer == Mark::ClearedUnlessChanged && inner == Mark::Cleared) return false;
    return inner == Mark::SetEvenWhileLoading || (inner == Mark::Set && !isLoad);
}

void CheckList(Problems& problems, const char* list, size_t shown, size_t stored, int edit) {
    const auto edited = static_cast<size_t>(static_cast<long>(stored) + edit);
    problems.Check(shown == stored || shown == edited, std::string(list) + ": " + std::to_string(shown) +
                                                           " rows, stored " + std::to_string(stored));
}

void CheckWindow(Problems& problems, const Case& manager, const OutgoingCall& row, const IncomingWork& column,
                 bool hasComeIn) {
    const size_t windows = manager.Windows();
    problems.Check(windows <= 1, std::to_string(windows) + " windows");
    const bool takes = hasComeIn && column.takesWindow;
    const bool shows = hasComeIn && column.showsWindow;
    if (row.IsUnload()) {
        problems.Check((windows == 1) == shows,
                       shows ? "no window although one was asked for" : "a window came back");
    } else if (!takes) {
        problems.Check(windows == 1, "the window is gone");
    } else if (!row.IsStart()) {
        problems.Check(windows == 0, "the window is still there");
    }
    if (windows == 0) {
        problems.Check(manager.outside.icons.empty(), "an icon without a window");
        problems.Check(manager.outside.engine.popup == nullptr, "an engine without a window");
        return;
    }
    if (shows && row.IsUnload())
        problems.Check(IsWindowVisible(manager.Window()) != FALSE, "the window is not shown");
    problems.Check(IsWindowEnabled(manager.Window()) != FALSE, "the window is disabled");
    problems.Check(g_lngConfigHwnd == HandleToLong(manager.Window()), "g_lngConfigHwnd is not the window");
    problems.Check(manager.outside.engine.popup != nullptr && manager.outside.engine.ConnectionCount() == 1,
                   "no engine, or not one connection");
    const size_t icons = manager.outside.icons.size();
    problems.Check(icons == 1 || (hasComeIn && column.takesIcon && icons == 0) ||
                       (row.call == std::string("NIM_DELETE") && icons == 0),
                   std::to_string(icons) + " icons");
    problems.Check(manager.Gesture(WM_MOUSEMOVE), "the icon takes no gestures");
}

void CheckContents(Problems& problems, const Case& manager, const OutgoingCall& row,
                   const IncomingWork& column, Mark mark, bool isFresh) {
    if (manager.Window() == nullptr) return;
    const auto rows = manager.RowsOf(IDC_LSTCLOSEDWND);
    problems.Check(rows.size() <= 25, std::to_string(rows.size()) + " rows in the log");
    problems.Check(std::set(rows.begin(), rows.end()).size() == rows.size(), "equal rows in the log");
    problems.Check(rows == manager.newestLines,
                   "the log is not shown as it is: " + std::to_string(rows.size()) + " rows");
    if (!isFresh) {
        const bool marked = IsMarked(row.mark, mark, row.isLoad);
        problems.Check(manager.IsEnabled(IDC_CMDAPPLY) == marked,
                       marked ? "a change is not marked" : "a mark without a change");
    }
    CheckList(problems, "lstExclude", manager.RowsOf(IDC_LSTEXCLUDE).size(),
              manager.StoredRows("Exclude", 0, ""), column.editsExclude);
    CheckList(problems, "lvwBanners", static_cast<size_t>(manager.ItemCount(IDC_LVWBANNERS)),
              manager.StoredRows("Banners", 1, "Name"), column.editsBanners);
    CheckList(problems, "lvwSearchURLs", static_cast<size_t>(manager.ItemCount(IDC_LVWSEARCHURLS)),
              manager.StoredRows("Search", 1, "Name"), column.editsSearch);
}

// When the window goes and everybody lets go, nothing is left.
void CheckEnd(Problems& problems, Case& manager) {
    if (const auto form = manager.Form()) form->Unload();
    manager.Settle();
    problems.Check(manager.Windows() == 0, "a window after the unload");
    problems.Check(manager.outside.icons.empty(), "an icon after the unload");
    problems.Check(manager.outside.clock.Running() == 0, "a timer after the unload");
    const auto& script = manager.outside.engine.script;
    problems.Check(script.Count("Popup gone with its events") == 0, "an engine released with its events");
    problems.Check(script.Count("SentrelApp gone") == script.Count("CreateInstance"), "an engine is kept");
    problems.Check(script.Count("ReleasePopup") == script.Count("CreatePopup"),
                   "a leave not taken, or twice");
    problems.Check(manager.outside.pictureBoxes == 0, "a picture box is kept");
    problems.Check(Locks() == manager.locks, "the process is kept");
    manager.LetGo();
    manager.outside.icons.clear();
    problems.Check(Locks() == manager.locks, "the process is kept by what is gone");
}

struct Counts {
    int pairs = 0;
    int passed = 0;
    int notPossible = 0;
};

// Takes the next piece of work that has something to come through, and whatever is before it, which does
// nothing. The window is made again only where the pair takes it: making it is most of the work.
void RunNext(Case& manager, const OutgoingCall& row, std::span<const IncomingWork>& columns, Moment moment,
             Counts& counts) {
    Problems problems;
    Case::References held{};
    if (!row.IsStart()) {
        manager.HaveWindow();
        held = manager.Held();
    }
    manager.outside.mostIcons = 0;
    row.prepare(manager);
    const HWND before = manager.Window();
    HWND within = nullptr;
    const auto first = columns.begin();
    IncomingWork column = columns.front();
    Came came = Came::NotPossible;
    manager.outside.LetIn(row.call, moment, [&] {
        within = manager.Window();
        while (came == Came::NotPossible && !columns.empty()) {
            column = columns.front();
            columns = columns.subspan(1);
            if (column.come == nullptr) row.make(manager);
            came = column.come == nullptr ? Came::In : column.come(manager);
            if (came == Came::NotPossible) ++counts.notPossible;
        }
    });
    row.make(manager);
    manager.Settle();
    if (columns.begin() == first) {
        problems.Check(false, "the call did not come");
        columns = columns.subspan(1);
    }
    manager.outside.LetNothingIn();
    const bool hasComeIn = came == Came::In;
    CheckWindow(problems, manager, row, column, hasComeIn);
    const bool isFresh = manager.Window() != (row.IsStart() ? within : before);
    CheckContents(problems, manager, row, column, hasComeIn ? column.mark : Mark::Untouched, isFresh);
    problems.Check(manager.outside.mostIcons <= 1, "more than one icon at a time");
    if (row.IsStart() || isFresh || manager.Window() == nullptr) {
        CheckEnd(problems, manager);
        if (row.IsStart() && column.mark == Mark::Cleared) manager.FillStore();
    } else {
        manager.Restore(row.mark != Mark::Untouched || column.mark != Mark::Untouched || column.typesText,
                        column.leavesCommands || row.LeavesCommands());
        problems.Check(manager.Held() == held, "a reference is kept");
        problems.Check(manager.outside.clock.Running() == 0, "a timer is kept");
        problems.Check(manager.outside.pictureBoxes == 0, "a picture box is kept");
    }
    manager.registry.ForgetOpenHandles();
    const auto pairs = static_cast<int>(columns.begin() - first);
    counts.pairs += pairs;
    if (problems.texts.empty()) {
        counts.passed += pairs;
        return;
    }
    std::string texts = std::string(row.name) + " x " + column.name +
                        (moment == Moment::BeforeReply ? ", before the reply" : ", behind the reply");
    for (const std::string& text : problems.texts)
        texts += "\n  " + text;
    FAIL_CHECK(texts);
}

void RunRow(const OutgoingCall& row, const std::vector<IncomingWork>& works, Counts& counts) {
    Case manager;
    for (const Moment moment : {Moment::BeforeReply, Moment::AfterReply}) {
        if (moment == Moment::AfterReply && row.hasOneMoment) continue;
        std::span<const IncomingWork> columns(works);
        while (!columns.empty())
            RunNext(manager, row, columns, moment, counts);
    }
    Problems last;
    CheckEnd(last, manager);
    CHECK_MESSAGE(last.texts.empty(), row.name << ", when the window goes");
}

}  // namespace

void RunRows(bool (*isWanted)(const OutgoingCall&)) {
    std::vector<IncomingWork> works = IncomingWorks();
    works.push_back({.name = "the same once more", .come = nullptr});
    const GuardedMemory memory;
    Counts counts;
    int rows = 0;
    for (const OutgoingCall& row : OutgoingCalls()) {
        if (!isWanted(row)) continue;
        ++rows;
        RunRow(row, works, counts);
    }
    std::printf(
        "%d calls x %d kinds of work: %d pairs, %d passed; in %d there was nothing that the work could "
        "come through\n",
        rows, static_cast<int>(works.size()), counts.pairs, counts.passed, counts.notPossible);
    CHECK(counts.passed == counts.pairs);
    CHECK(GuardedMemory::Allocations() > 0);
}
