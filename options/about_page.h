// The About page: the link to the maker's site.
#pragma once

#include <array>
#include <string>

#include "options/resource.h"
#include "platform/controls/image_box.h"
#include "platform/controls/label.h"
#include "platform/controls/link_label.h"

struct AboutControls {
    // Fills the link. To be called when the windows of the controls have just been made.
    void SetUp();
    // Shows the picture that suits the size of its place.
    void ShowLogo();

    Label Label11{L"Label11", IDC_LABEL11};
    LinkLabel lblNavSite{L"lblNavSite", IDC_LBLNAVSITE};
    ImageBox imgLogo{L"imgLogo", IDC_IMGLOGO};
    Label lblAbout{L"lblAbout", IDC_LBLABOUT};
    const std::array<Control*, 4> all{&Label11, &lblNavSite, &imgLogo, &lblAbout};
};

class AboutPage {
public:
    // The controls outlive this object.
    explicit AboutPage(AboutControls& controls);
    AboutPage(const AboutPage&) = delete;
    AboutPage& operator=(const AboutPage&) = delete;

    // Opens an address in the browser. Reports nothing.
    void OpenAddress(const std::wstring& address);

    void lblNavSite_Click();
    void imgLogo_Click();

private:
    AboutControls& m_controls;
};
