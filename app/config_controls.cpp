#include "app/config_controls.h"

#include <algorithm>

ConfigControls::ConfigControls() noexcept {
    const ControlTable groups[] = {commands.all, settings.all, exclude.all, log.all,
                                   banners.all,  search.all,   about.all};
    auto next = m_all.begin();
    *next++ = &tab;
    for (const ControlTable group : groups)
        next = std::copy(group.begin(), group.end(), next);
}

void ConfigControls::SetUp() {
    settings.SetUp();
    banners.SetUp();
    search.SetUp();
    about.SetUp();
}

void ConfigControls::Scale() {
    banners.Scale();
    search.Scale();
    about.ShowLogo();
}
