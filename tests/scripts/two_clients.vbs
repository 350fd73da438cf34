' Two clients of the configuration manager in one script. Ends with 77 when everything was as it should be.
Option Explicit

Const kHide = 2
Const kAbout = 3

Sub Check(condition, what)
    If Not condition Then
        WScript.Echo "failed: " & what
        WScript.Quit 1
    End If
End Sub

Dim first, second, config, form, handle, picture

Set first = CreateObject("SentrelConfig.ConfigControl")
Set second = CreateObject("SentrelConfig.ConfigControl")
' A Long that is passed by reference must be an expression here.
Set config = first.ConfigInstance(CLng(kHide))
Check config Is second.ConfigInstance(CLng(kHide)), "both clients get the same Config"

handle = config.ConfigHwnd
Check TypeName(handle) = "Long", "ConfigHwnd is a Long, not " & TypeName(handle)
Check handle <> 0, "there is a window"
Set form = config.ConfigForm
Check form.Caption = "Calvane", "its caption"
Check Not form.Visible, "it is hidden"
second.ConfigInstance CLng(kAbout)
Check form.Visible, "show type 3 shows it"
form.Hide
Check Not form.Visible, "Hide hides it"
form.Show
Check form.Visible, "Show shows it"
form.b_OKtoUnload = True
Check form.b_OKtoUnload, "what is set is read"
form.b_OKtoUnload = False
Check form.ControlHwnd("CMDok") <> 0, "its controls have windows, in any letter case"
Check TypeName(form.m_oShellIcon) <> "Nothing", "there is a tray icon"
Check form.picTray(2).Name = "picTray", "the third tray picture"

On Error Resume Next
Set picture = form.picTray(3)
Check Err.Number = 9, "a fourth tray picture is error 9, not " & Err.Number
Err.Clear

second.ReleaseConfig
Check Err.Number = 0, "ReleaseConfig returns"
handle = config.ConfigHwnd
Check Err.Number <> 0, "the manager has ended for both"
Err.Clear
first.ConfigInstance CLng(kHide)
Check Err.Number <> 0, "the first client's control has gone with it"
WScript.Quit 77
