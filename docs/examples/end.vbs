' Ends the manager for every client. Without one running it would be started only to be ended.
Option Explicit
Dim control
Set control = CreateObject("SentrelConfig.ConfigControl")
control.ReleaseConfig
WScript.Echo "The manager has ended."
