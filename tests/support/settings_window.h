// The controls of the configuration window in a hidden window of their own, with the parts that work on them,
// over throw-away registry roots.
#pragma once

#include <array>
#include <string>
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
#include "platform/automation_error.h"
#include "store/settings_schema.h"
#include "tests/support/message_recorder.h"
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
    // The link and the logo stay empty: what they show is the tests' to say.
    SettingsWindow() {
        SettingsControls::SetUp();
        BannerControls::SetUp();
        SearchControls::SetUp();
        cmdApply.Enabled(false);
    }

    // Sets the state of a button as Windows does it, without a click: so the handlers are passed by.
    static void Check(const Control& button, bool checked) {
        SendMessageW(button.Hwnd(), BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
    }

    // As Windows does it for the user who clicks on the row, which counts from 1.
    static void Select(const ListView& list, int position) {
        ListView_SetItemState(list.Hwnd(), position - 1, LVIS_SELECTED | LVIS_FOCUSED,
                              LVIS_SELECTED | LVIS_FOCUSED);
    }

    // Clicks as a user does.
    static void Click(const Control& button) { SendMessageW(button.Hwnd(), BM_CLICK, 0, 0); }

    // In the Settings key.
    void Store(const std::wstring& value, const std::wstring& text) const {
        user.Write(Schema::kSettingsKey, value, text);
    }
    std::wstring Stored(const std::wstring& value) const { return user.Text(Schema::kSettingsKey, value); }

    TestHive machine{HKEY_LOCAL_MACHINE};
    TestHive user{HKEY_CURRENT_USER};

    // The window of the product has none of these: they stand for what it may get one day.
    CheckBox chkExtra{L"chkExtra", 1};
    TextBox txtExtra{L"txtExtra", 2};
    ListBox lstExtra{L"lstExtra", 3};
    ListView lvwExtra{L"lvwExtra", 4};
    const std::array<Control*, 4> extra{&chkExtra, &txtExtra, &lstExtra, &lvwExtra};

    const std::vector<Control*> controls =
        Join({CommandControls::all, SettingsControls::all, ExcludeControls::all, LogControls::all,
              BannerControls::all, SearchControls::all, AboutControls::all, extra});
    TestWindow window{controls};

    std::wstring loaderPath = L"C:\\Program Files\\Calvane\\CalvaneConfigLoader.exe";
    std::function<std::wstring()> logFile = []() -> std::wstring { RaiseError(ErrorNumber::ObjectNotSet); };
    std::vector<std::string> events;  // "reload" and "hide", as Commands calls them
    Event onEvent;

    ChangeMark changeMark{cmdApply};
    int changes = 0;  // that were marked, also while settings are being loaded
    Event markChanged = [this] {
        ++changes;
        changeMark.MarkChanged();
    };
    MessageRecorder recorder;
    PopupNotice popupNotice{*this, markChanged};
    GeneralOptions generalOptions{*this, loaderPath, markChanged};
    AboutPage aboutPage{*this};
    ExcludeList excludeList{*this, [this] { changeMark.EnableApply(); }, markChanged};
    BannerSizes bannerSizes{*this, markChanged};
    SearchAddresses searchAddresses{*this, markChanged};
    ClosedLog closedLog{*this, lstExclude, [this] { return logFile(); }, markChanged};
    SettingsTransfer transfer{controls, changeMark, popupNotice, generalOptions, closedLog, cboPauseKey};
    Commands commands{*this, changeMark, transfer,
                      [this](const Event& done) {
                          Note("reload");
                          done();
                      },
                      [this] { Note("hide"); }};

private:
    void Note(const char* event) {
        events.push_back(event);
        if (onEvent) onEvent();
    }
};
