// Lets every single allocation fail in a load, in a save, in the first run and in a reading of the log.
#include <algorithm>

#include "platform/handle.h"
#include "store/first_run.h"
#include "tests/out_of_memory/memory_sweep.h"
#include "tests/settings_transfer/transfer_page.h"
#include "tests/support/other_process.h"
#include "tests/support/test_folder.h"

namespace {

struct Page : TransferPage {
    Page() { registry.contents = UsualStore(); }

    // Rows of the log, each with a text that no string object keeps within itself.
    void WriteLog(int count, size_t length) {
        std::string bytes;
        for (int i = 1; i <= count; ++i)
            bytes += "http://a-closed-window-" + std::to_string(i) + std::string(length, 'x') + "\r\n";
        const std::wstring path = folder.Write(L"closed.log", bytes);
        logFile = [path] { return path; };
    }

    const TestFolder folder;
};

}  // namespace

TEST_CASE_FIXTURE(Page, "memory that runs out in a load spoils nothing but what it was needed for") {
    WriteLog(2, 0);
    transfer.LoadSettings();
    const WindowState ideal = StateOf(*this);
    const Rows idealBanners = ListViewRows(lvwBanners.Hwnd());
    REQUIRE(lstClosedWnd.ListCount() == 2);
    for (Faults faults(201); faults.Next();) {
        CAPTURE(faults.Name());
        Put(*this, designed);
        cmdApply.Enabled(false);
        CHECK(faults.In([&] { transfer.LoadSettings(); }));
        CHECK_FALSE(changeMark.m_bLoading);
        CHECK_FALSE(cmdApply.Enabled());
        if (!faults.IsLasting()) {
            // What could not be had ends a list or is a field of one row; no other row goes without its
            // fields.
            const Rows banners = ListViewRows(lvwBanners.Hwnd());
            CHECK(std::ranges::count_if(banners, [&](const std::wstring& row) {
                      return std::ranges::count(idealBanners, row) == 0;
                  }) <= 1);
        }
        transfer.LoadSettings();
        CHECK(Difference(StateOf(*this), ideal) == "");
    }
    CHECK(registry.contents == UsualStore());
}

TEST_CASE_FIXTURE(
    Page, "memory that runs out in a save never empties a list of the store, and the next save repairs it") {
    transfer.LoadSettings();
    const WindowState shown = StateOf(*this);
    for (Faults faults(201); faults.Next();) {
        CAPTURE(faults.Name());
        registry.contents = UsualStore();
        Put(*this, shown);
        events.clear();
        CHECK(faults.In([&] { commands.cmdOK_Click(); }));
        CHECK_FALSE(cmdApply.Enabled());
        CHECK_FALSE(changeMark.m_bLoading);
        CHECK(events == std::vector<std::string>{"hide"});
        if (!faults.IsLasting()) {
            // One failure costs one value.
            long missing = 0;
            for (const auto& [key, values] : UsualStore()) {
                for (const auto& [name, value] : values)
                    missing += registry.contents[key].contains(name) ? 0 : 1;
            }
            CHECK(missing <= 1);
        }
        Put(*this, shown);
        transfer.SaveSettings();
        CHECK(Difference(registry.contents, UsualStore()) == "");
    }
}

TEST_CASE("memory that runs out in the first run is an error, and the next start writes every default") {
    RegistryCalls registry(RegistryCalls::Of::Memory);
    WriteFirstRunDefaults();
    const RegistryContents ideal = registry.contents;
    for (Faults faults(101); faults.Next();) {
        CAPTURE(faults.Name());
        registry.contents.clear();
        const bool isDone = faults.In(WriteFirstRunDefaults);
        CHECK(isDone != faults.Happened());
        CHECK(registry.contents[kSettings].contains("First Time") == isDone);
        WriteFirstRunDefaults();
        CHECK(Difference(registry.contents, ideal) == "");
    }
}

TEST_CASE_FIXTURE(
    Page,
    "memory that runs out while the log is read leaves its newest lines, and the log is not kept open") {
    WriteLog(30, 3000);
    const auto rows = [&] { return ListBoxRows(lstClosedWnd.Hwnd()); };
    closedLog.ReadClosedLog();
    const Rows expected = rows();
    REQUIRE(expected.size() == 25);
    for (Faults faults(51); faults.Next();) {
        CAPTURE(faults.Name());
        faults.In([&] { closedLog.ReadClosedLog(); });
        const Rows shown = rows();
        CHECK(std::equal(shown.begin(), shown.end(), expected.begin()));
        const FileHandle alone(
            CreateFileW(logFile().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        CHECK(static_cast<bool>(alone));
    }
    closedLog.ReadClosedLog();
    CHECK(rows() == expected);
}
