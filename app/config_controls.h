// Every control of the configuration window, in the groups of its frame and pages.
#pragma once

#include <array>
#include <tuple>

#include "app/resource.h"
#include "lists/banner_sizes.h"
#include "lists/closed_log.h"
#include "lists/exclude_list.h"
#include "lists/search_addresses.h"
#include "options/about_page.h"
#include "options/commands.h"
#include "options/settings_controls.h"
#include "platform/controls/tab_strip.h"

// How many controls some groups have together.
template <typename... Groups>
inline constexpr size_t kControlCount = (std::tuple_size_v<decltype(Groups::all)> + ...);

class ConfigControls {
public:
    ConfigControls() noexcept;
    ConfigControls(const ConfigControls&) = delete;
    ConfigControls& operator=(const ConfigControls&) = delete;

    // In the window's control order, the order in which settings are loaded and saved: the frame, then page
    // by page.
    ControlTable All() const noexcept { return m_all; }

    // Gives the controls of the pages what no dialog template holds. To be called when their windows have
    // just been made.
    void SetUp();

    // The pages have been laid out: what lies inside their controls follows.
    void Scale();

    TabStrip tab{L"tab", IDC_TAB};
    CommandControls commands;
    SettingsControls settings;
    ExcludeControls exclude;
    LogControls log;
    BannerControls banners;
    SearchControls search;
    AboutControls about;

private:
    std::array<Control*, 1 + kControlCount<CommandControls, SettingsControls, ExcludeControls, LogControls,
                                           BannerControls, SearchControls, AboutControls>>
        m_all;
};
