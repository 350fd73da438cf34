// Two clients of the configuration manager in one script. Ends with 77 when everything was as it should be.
var kHide = 2;

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
Check(second.ConfigInstance(kHide).ConfigHwnd == config.ConfigHwnd, "both clients get the same window");
Check(typeof config.ConfigHwnd == "number", "ConfigHwnd is a number, not " + typeof config.ConfigHwnd);
Check(form.Visible === false, "it is hidden");
Check(ErrorOf(function () { form.ControlHwnd("cmdNone"); }) == 5, "an unknown control is error 5");
Check(ErrorOf(function () { second.ReleaseConfig(); }) == 0, "ReleaseConfig returns");
Check(ErrorOf(function () { first.ConfigInstance(kHide); }) != 0, "the manager has ended for both");
WScript.Quit(77);
