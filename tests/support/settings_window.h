// The controls of the configuration window in a hidden window of their own, with the parts that work on the
// options, over throw-away registry roots.
#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "lists/banner_sizes.h"
#include "lists/closed_log.h"
#include "lists/exclude_list.h"
#include "lists/search_addresses.h"
#include "options/about_page.h"
#include "options/change_mark.h"
#include "options/commands.h"
#include "options/general_options.h"
#include "options/popup_notice.h"
#include "options/settings_transfer.h"
#include "store/settings_schema.h"
#include "tests/support/test_hive.h"
#include "tests/support/test_window.h"

class SettingsWindow : public CommandControls,
                       public SettingsControls,
                       public ExcludeControls,
                       public LogControls,
                       public BannerControls,
                       public SearchControls,
                       public AboutControls {
public:
    SettingsWindow();

    // Sets the state of a button as Windows does it, without a click: so the handlers are passed by.
    static void Check(const Control& button, bool checked) {
        SendMessageW(button.Hwnd(), BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
    }

    // Clicks as a user does.
    static void Click(const Control& button) { SendMessageW(button.Hwnd(), BM_CLICK, 0, 0); }

    // Writes values, each with its text, into a key of the user.
    using Values = std::initializer_list<std::pair<const wchar_t*, const wchar_t*>>;
    void Write(const wchar_t* key, Values values) const {
        for (const auto& [name, text] : values)
            user.Write(key, name, text);
    }

    // In the Settings key.
    void Store(const std::wstring& value, const std::wstring& text) const {
        user.Write(Schema::kSettingsKey, value, text);
    }
    std::wstring Stored(const std::wstring& value) const { return user.Text(Schema::kSettingsKey, value); }
    bool HasStored(const std::wstring& value) const { return user.Exists(Schema::kSettingsKey, value); }

    TestHive machine{HKEY_LOCAL_MACHINE};
    TestHive user{HKEY_CURRENT_USER};

    // The window of the product has none of these: they stand for what it may get one day.
    CheckBox chkExtra{L"chkExtra", 1};
    TextBox txtExtra{L"txtExtra", 2};
    ListBox lstExtra{L"lstExtra", 3};
    ListView lvwExtra{L"lvwExtra", 4};
    const std::array<Control*, 4> extra{&chkExtra, &txtExtra, &lstExtra, &lvwExtra};

    const std::vector<Control*> controls;
    TestWindow window;

    std::wstring loaderPath = L"C:\\Program Files\\Calvane\\CalvaneConfigLoader.exe";
    std::function<std::wstring()> logFile;
    std::vector<std::string> events;  // "reload" and "hide", as Commands calls them
    Event onReload;
    Event onHide;

    ChangeMark changeMark{cmdApply};
    Event markChanged = [this] { changeMark.MarkChanged(); };
    PopupNotice popupNotice{*this, markChanged};
    GeneralOptions generalOptions{*this, loaderPath, markChanged};
    AboutPage aboutPage{*this};
    ClosedLog closedLog{*this, lstExclude, [this] { return logFile(); }, markChanged};
    SettingsTransfer transfer{controls, changeMark, popupNotice, generalOptions, closedLog, cboPauseKey};
    Commands commands{*this, changeMark, transfer, [this](const Event& done) { Reload(done); },
                      [this] { Hide(); }};

private:
    void Reload(const Event& done);
    void Hide();
};
