' Opens the configuration window, waits until the user has closed it, and leaves the manager in the tray.
Option Explicit
Dim control, config, form
Set control = CreateObject("SentrelConfig.ConfigControl")
Set config = control.ConfigInstance(CLng(1))
Set form = config.ConfigForm
WScript.Echo "Window " & config.ConfigHwnd & ", visible: " & form.Visible
If WScript.Arguments.Count = 0 Then
    Do While form.Visible
        WScript.Sleep 200
    Loop
End If
