// Two clients of the configuration manager in one script. Ends with 77 when everything was as it should be.
var kShow = 1, kHide = 2, kAbout = 3;

function Check(condition, what) {
    if (condition) return;
    WScript.Echo("failed: " + what);
    WScript.Quit(1);
}

// The number of the error that the function ends with; 0 where it ends well.
function ErrorOf(action) {
    try {
        action();
    } catch (error) {
        return error.number & 0xFFFF;
    }
    return 0;
}

var first = new ActiveXObject("SentrelConfig.ConfigControl");
var second = new ActiveXObject("SentrelConfig.ConfigControl");
var config = first.ConfigInstance(kHide);
var same = second.ConfigInstance(kHide);

Check(typeof config.ConfigHwnd == "number", "ConfigHwnd is a number, not " + typeof config.ConfigHwnd);
Check(config.ConfigHwnd != 0, "there is a window");
Check(same.ConfigHwnd == config.ConfigHwnd, "both clients see the same window");

var form = config.ConfigForm;
Check(form.hWnd == config.ConfigHwnd, "the form is that window");
Check(form.Caption == "Calvane", "its caption");
Check(form.Visible === false, "it is hidden");
first.ConfigInstance(kShow);
Check(form.Visible === true, "show type 1 shows it");
form.Visible = false;
Check(form.Visible === false, "it is hidden again");
second.ConfigInstance(kAbout);
Check(form.Visible === true, "show type 3 shows it");
form.b_OKtoUnload = true;
Check(same.ConfigForm.b_OKtoUnload === true, "what one client sets the other sees");
form.b_OKtoUnload = false;
Check(form.ControlHwnd("cmdOK") != 0, "its controls have windows");
Check(form.m_oShellIcon != null, "there is a tray icon");
Check(config.ShellIconClass.ToolTip == "Calvane Sentrel", "ShellIconClass is the window's icon");
Check(ErrorOf(function () { form.ControlHwnd("cmdNone"); }) == 5, "an unknown control is error 5");
Check(ErrorOf(function () { form.NoSuchMember(); }) != 0, "an unknown member is an error");

Check(ErrorOf(function () { second.ReleaseConfig(); }) == 0, "ReleaseConfig returns");
Check(ErrorOf(function () { return config.ConfigHwnd; }) != 0, "the manager has ended for both");
Check(ErrorOf(function () { first.ConfigInstance(kHide); }) != 0, "the first client's control has gone with it");
WScript.Quit(77);
