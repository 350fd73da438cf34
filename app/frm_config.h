// The configuration window: it owns every control and every part, and is the object that Config.ConfigForm
// hands out.
#pragma once

#include <array>

#include "app/config_controls.h"
#include "app/config_page.h"
#include "calvane_forms.h"
#include "options/change_mark.h"
#include "options/general_options.h"
#include "options/popup_notice.h"
#include "options/settings_transfer.h"
#include "platform/controls/dialog.h"
#include "platform/com/dispatch_object.h"
#include "platform/handle.h"
#include "platform/icon.h"
#include "tray/picture_box.h"
#include "tray/type_libraries.h"
#include "tray/bas_shell_notify.h"
#include "tray/engine_control.h"
#include "tray/shell_notification.h"
#include "tray/tray_gestures.h"
#include "tray/tray_menu.h"

class frmConfig final : public DispatchObject<_frmConfig, kFormsTypeLibrary>,
                        private Dialog,
                        private TrayWindow {
public:
    frmConfig();
    ~frmConfig() override;

    // The window object comes to life: its window is made, the engine is connected to, the tray icon set up.
    // Throws AutomationError when there can be no window; an engine or an icon that is missing is no error.
    void Initialise();

    // The window's handle. The first reading loads the window: first-run defaults, list columns, all
    // settings. After an unloading it is made and loaded again. An error of the loading passes to the caller.
    LONG Handle();

    // Each loads the window first, where it is not loaded. While the window is being made, loaded or unloaded
    // the show follows when that is done.
    void ShowModeless() override;
    void ShowAbout();

    // Takes the window away, whatever b_OKtoUnload says. Nothing happens where there is none.
    void Unload();

    // The main message loop asks first whether a message is the window's: keyboard navigation.
    bool IsFormMessage(MSG& message);

    STDMETHODIMP get_b_OKtoUnload(VARIANT_BOOL* value) override;
    STDMETHODIMP put_b_OKtoUnload(VARIANT_BOOL value) override;
    STDMETHODIMP get_m_oShellIcon(IDispatch** value) override;
    STDMETHODIMP get_m_oPopup(IDispatch** value) override;
    STDMETHODIMP Show() override;
    STDMETHODIMP Hide() override;
    STDMETHODIMP get_Visible(VARIANT_BOOL* value) override;
    STDMETHODIMP put_Visible(VARIANT_BOOL value) override;
    STDMETHODIMP get_Caption(BSTR* value) override;
    STDMETHODIMP put_Caption(BSTR value) override;
    STDMETHODIMP get_hWnd(LONG* value) override;
    STDMETHODIMP get_picShellIcon(IDispatch** value) override;
    STDMETHODIMP get_picTray(short index, IDispatch** value) override;
    STDMETHODIMP ControlHwnd(BSTR name, LONG* value) override;

private:
    enum class State { None, Initialising, Initialised, Loading, Loaded, Unloading };

    // Those of the pages too: where Enter presses a button, the dialog manager tells the outermost dialog.
    ControlTable Controls() override { return m_controls.All(); }
    bool OnInit() override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;
    void PopupTrayMenu(bool pauseIsDefault) override;

    void MakePages();
    void OnScaled(int dpi) override;
    void MakeImageList1(int dpi);
    void SelectPage();
    void SelectAbout();
    void NextPage(int step);
    bool IsOnHiddenPage(HWND window) const noexcept;
    void SetUpTray();
    void LoadTrayPictures();
    void AnimateTray();
    void Load();
    bool IsChanging() const noexcept;
    void ShowIfAsked();
    void TakeDown();
    bool QueryUnload() const noexcept;
    void HideWindow() noexcept;
    LONG Reference() noexcept;

    bool b_OKtoUnload = false;

    ConfigControls m_controls;
    std::array<ConfigPage, 6> m_pages;
    const ComPtr<PictureBox> m_picShellIcon;
    const std::array<ComPtr<PictureBox>, 3> m_picTray;
    ImageListHandle m_imageList1;
    WindowIcons m_icons;

    ChangeMark m_changeMark;
    const Event m_markChanged = [this] { m_changeMark.MarkChanged(); };
    PopupNotice m_popupNotice;
    GeneralOptions m_generalOptions;
    AboutPage m_aboutPage;
    TrayMenu m_mnuConfig;
    TrayGestures m_trayGestures;
    EngineControl m_engine;
    ComPtr<ShellNotification> m_oShellIcon;
    ExcludeList m_excludeList;
    ClosedLog m_closedLog;
    BannerSizes m_bannerSizes;
    SearchAddresses m_searchAddresses;
    SettingsTransfer m_transfer;
    Commands m_commands;

    State m_state = State::None;
    // The show that was asked for while the window was being made, loaded or unloaded.
    Event m_showLater;
    _frmConfig* m_reference = this;
    const UINT m_taskbarCreated;
};
