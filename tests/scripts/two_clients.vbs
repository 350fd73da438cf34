' Two clients of the configuration manager in one script. Ends with 77 when everything was as it should be.
Option Explicit

Const kHide = 2

Sub Check(condition, what)
    If condition Then Exit Sub
    WScript.Echo "failed: " & what
    WScript.Quit 1
End Sub

Dim first, second, config, handle, form, picture
Set first = CreateObject("SentrelConfig.ConfigControl")
Set second = CreateObject("SentrelConfig.ConfigControl")
' A Long that is passed by reference must be an expression here.
Set config = first.ConfigInstance(CLng(kHide))
Check config Is second.ConfigInstance(CLng(kHide)), "both clients get the same Config"
handle = config.ConfigHwnd
Check TypeName(handle) = "Long", "ConfigHwnd is a Long, not " & TypeName(handle)
Set form = config.ConfigForm
Check Not form.Visible, "it is hidden"
form.b_OKtoUnload = True
Check form.b_OKtoUnload, "what is set is read"
form.b_OKtoUnload = False
Check form.ControlHwnd("CMDok") <> 0, "its controls have windows, in any letter case"

On Error Resume Next
Set picture = form.picTray(3)
Check Err.Number = 9, "a fourth tray picture is error 9, not " & Err.Number
Err.Clear
second.ReleaseConfig
Check Err.Number = 0, "ReleaseConfig returns"
first.ConfigInstance CLng(kHide)
Check Err.Number <> 0, "the manager has ended for both"
WScript.Quit 77
