// Two clients of the configuration manager in one script. Ends with 77 when everything was as it should be.
var kShow = 1, kHide = 2;

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
var form = config.ConfigForm;

Check(typeof config.ConfigHwnd == "number", "ConfigHwnd is a number, not " + typeof config.ConfigHwnd);
Check(second.ConfigInstance(kHide).ConfigHwnd == config.ConfigHwnd, "both clients see the same window");
Check(form.hWnd == config.ConfigHwnd, "the form is that window");
Check(form.Visible === false, "it is hidden");
first.ConfigInstance(kShow);
Check(form.Visible === true, "show type 1 shows it");
form.Visible = false;
Check(form.Visible === false, "it is hidden again");
Check(config.ShellIconClass.ToolTip == "Calvane Sentrel", "ShellIconClass is the window's icon");
Check(ErrorOf(function () { form.ControlHwnd("cmdNone"); }) == 5, "an unknown control is error 5");
Check(ErrorOf(function () { form.NoSuchMember(); }) != 0, "an unknown member is an error");

Check(ErrorOf(function () { second.ReleaseConfig(); }) == 0, "ReleaseConfig returns");
Check(ErrorOf(function () { return config.ConfigHwnd; }) != 0, "the manager has ended for both");
Check(ErrorOf(function () { first.ConfigInstance(kHide); }) != 0, "the first client's control has gone with it");
WScript.Quit(77);
