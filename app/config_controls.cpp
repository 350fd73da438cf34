#include "app/config_controls.h"

#include "platform/automation_error.h"

namespace {

constexpr const wchar_t* kPages[] = {L"Settings", L"Exclude", L"Log", L"Banners", L"Search", L"About"};
constexpr const wchar_t* kBannerColumns[] = {L"Name", L"Width", L"Height"};
constexpr const wchar_t* kSearchColumns[] = {L"Engine Name", L"Engine URL"};
constexpr wchar_t kInitialSpeed[] = L"6";
constexpr wchar_t kInitialPause[] = L"5";
constexpr int kPauseLength = 3;  // characters
constexpr wchar_t kHomePage[] = L"http://www.calvane.example";

}  // namespace

void ConfigControls::DesignTabs() {
    for (const wchar_t* const caption : kPages)
        tab.AddTab(caption);
}

void ConfigControls::Design() {
    for (const wchar_t* const heading : kBannerColumns)
        lvwBanners.AddColumn(heading);
    for (const wchar_t* const heading : kSearchColumns)
        lvwSearchURLs.AddColumn(heading);
    for (const wchar_t* const key : Schema::kPauseKeys)
        cboPauseKey.AddItem(key);
    txtSpeed.Text(kInitialSpeed);
    txtPause.Text(kInitialPause);
    txtPause.MaxLength(kPauseLength);
    lblNavSite.Caption(kHomePage);
    ResumeNext([&] {
        imgLogo.Picture({{96, IDG_LOGO_96}, {120, IDG_LOGO_120}, {144, IDG_LOGO_144}, {192, IDG_LOGO_192}});
    });
}
