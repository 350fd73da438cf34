' Gives the tray icon another tip; the shell gets it with the icon's next change.
Option Explicit
Dim control, icon
Set control = CreateObject("SentrelConfig.ConfigControl")
Set icon = control.ConfigInstance(CLng(2)).ShellIconClass
icon.ToolTip = "Sentrel since " & Now
WScript.Echo icon.ToolTip
