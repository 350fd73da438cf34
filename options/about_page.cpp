#include "options/about_page.h"

#include <shellapi.h>

#include "platform/automation_error.h"
#include "platform/text.h"

namespace {

constexpr wchar_t kHomePage[] = L"http://www.calvane.example";

}  // namespace

void AboutControls::SetUp() {
    lblNavSite.Caption(kHomePage);
}

void AboutControls::ShowLogo() {
    ResumeNext([&] {
        imgLogo.Picture({{96, IDG_LOGO_96}, {120, IDG_LOGO_120}, {144, IDG_LOGO_144}, {192, IDG_LOGO_192}});
    });
}

AboutPage::AboutPage(AboutControls& controls) : m_controls(controls) {
    m_controls.lblNavSite.Click = [this] { lblNavSite_Click(); };
    m_controls.imgLogo.Click = [this] { imgLogo_Click(); };
}

void AboutPage::OpenAddress(const std::wstring& address) {
    ShellExecuteA(nullptr, "open", ToAnsi(address).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

void AboutPage::lblNavSite_Click() {
    OpenAddress(m_controls.lblNavSite.Caption());
}

void AboutPage::imgLogo_Click() {
    OpenAddress(m_controls.lblNavSite.Caption());
}
