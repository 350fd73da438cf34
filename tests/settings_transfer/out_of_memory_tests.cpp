#include <cstdlib>
#include <new>

#include "store/first_run.h"
#include "store/settings_schema.h"
#include "tests/support/settings_window.h"
#include "tests/support/shown_text.h"

namespace {

// How many allocations still succeed before one fails; below 0 none fails.
long g_allocationsLeft = -1;

class FailingAllocation {
public:
    explicit FailingAllocation(long number) { g_allocationsLeft = number; }
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation() { g_allocationsLeft = -1; }

    static bool Happened() { return g_allocationsLeft < 0; }
};

}  // namespace

void* operator new(std::size_t size) {
    if (g_allocationsLeft >= 0 && g_allocationsLeft-- == 0) throw std::bad_alloc();
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

TEST_CASE("a failing allocation, whichever it is, neither leaves a load or a save nor spoils the next one") {
    SettingsWindow page;
    WriteFirstRunDefaults();
    page.Store(L"txtExtra", L"a text that is too long to be kept within a string object");
    page.Store(L"SoundFile", L"C:\\Program Files\\Calvane\\Arc.wav");
    for (const wchar_t* const n : {L"0", L"1", L"2"}) {
        page.user.Write(Schema::kExcludeKey, n, std::wstring(L"http://a-site-with-a-long-name.example/") + n);
    }
    page.transfer.LoadSettings();
    const auto banners = SettingsWindow::Rows(page.lvwBanners, 2);
    const auto search = SettingsWindow::Rows(page.lvwSearchURLs, 1);
    const auto exclude = page.ExcludeRows();
    const std::wstring extra = page.txtExtra.Text();

    bool happened = true;
    long number = 0;
    for (; happened; ++number) {
        CAPTURE(number);
        {
            const FailingAllocation failing(number);
            page.transfer.LoadSettings();
            happened = FailingAllocation::Happened();
        }
        REQUIRE_FALSE(page.changeMark.m_bLoading);
        REQUIRE_FALSE(page.cmdApply.Enabled());
    }
    CHECK(number > 100);
    CHECK(page.ExcludeRows() == exclude);
    CHECK(SettingsWindow::Rows(page.lvwBanners, 2) == banners);
    CHECK(SettingsWindow::Rows(page.lvwSearchURLs, 1) == search);
    CHECK(page.txtExtra.Text() == extra);

    happened = true;
    for (number = 0; happened; ++number) {
        CAPTURE(number);
        const FailingAllocation failing(number);
        page.transfer.SaveSettings();
        happened = FailingAllocation::Happened();
    }
    CHECK(number > 100);
    page.transfer.LoadSettings();
    CHECK(page.ExcludeRows() == exclude);
    CHECK(SettingsWindow::Rows(page.lvwBanners, 2) == banners);
    CHECK(SettingsWindow::Rows(page.lvwSearchURLs, 1) == search);
    CHECK(page.txtExtra.Text() == extra);
}
