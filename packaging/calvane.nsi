; The installer of the configuration manager, for the whole machine.
;
; The build hands over: VERSION ("1.0.0"), VERSION_NUMBERS ("1.0.0.0"), SOURCE_DIR and BUILD_DIR (absolute folders),
; OUTPUT (the file to make) and DOCUMENTS (a script with the macros InstallDocuments and RemoveDocuments); and, where it is
; to be signed, SIGN, the command that signs the file given to it.
;
; Switches, besides NSIS's own /S (silent) and /D=folder: the installer takes /STARTUP, which starts the manager with Windows
; for everybody; the uninstaller takes /PURGE, which removes the settings of the user who runs it. Exit codes: 0 done,
; 1 cancelled, 2 a file could not be written, and those below.

!define kErrorNotRegistered 4
!define kErrorFolderUnsafe 6
!define kErrorElevationRequired 740 ; Windows' own numbers
!define kSuccessRebootRequired 3010

!define kServer "SentrelConfig.exe"
!define kLoader "CalvaneConfigLoader.exe"
!define kSound "Arc.wav"
!define kUninstaller "Uninstall.exe"
!define kFolderGuard "folder_guard.exe"
!define kShortcut "$SMPROGRAMS\Calvane.lnk"
!define kGuideShortcut "$SMPROGRAMS\Calvane user's guide.lnk"
!define kGuide "docs\users-guide.html"
!define kHelpAddress "https://www.calvane.example/support"
!define kAboutAddress "https://www.calvane.example/"

!define kUninstallKey "Software\Microsoft\Windows\CurrentVersion\Uninstall\Calvane"
!define kRunKey "Software\Microsoft\Windows\CurrentVersion\Run"
!define kRunValue "Calvane Config Manager"
!define kStoreKey "Software\Calvane"

; How long a manager may take to end, when it is asked through the shell and when it is asked directly.
!define kShellTries 30
!define kTryMilliseconds 200
!define kReleaseMilliseconds 8000

Unicode true
; Another date in every file would make every build another installer.
SetDateSave off
SetCompressor /SOLID lzma
AllowSkipFiles off
; Classes and the Run value are the machine's. Without administrator rights nothing could be put where other users
; cannot change it.
RequestExecutionLevel admin
ManifestDPIAware true
!ifdef SIGN
    !finalize '${SIGN} "%1"' = 0
    !uninstfinalize '${SIGN} "%1"' = 0
!endif

Name "Calvane"
OutFile "${OUTPUT}"
BrandingText "Calvane ${VERSION}"
InstallDir "$PROGRAMFILES32\Calvane"

VIProductVersion "${VERSION_NUMBERS}"
VIFileVersion "${VERSION_NUMBERS}"
VIAddVersionKey "CompanyName" "Calvane"
VIAddVersionKey "FileDescription" "Calvane set-up"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "© 2026 Calvane"
VIAddVersionKey "OriginalFilename" "CalvaneSetup.exe"
VIAddVersionKey "ProductName" "Calvane"
VIAddVersionKey "ProductVersion" "${VERSION}"

!include "MUI2.nsh"
!include "FileFunc.nsh"
!include "LogicLib.nsh"
!include "Sections.nsh"
!include "x64.nsh"
!include "${DOCUMENTS}"

!define MUI_ICON "${SOURCE_DIR}/app/res/calvane.ico"
!define MUI_UNICON "${SOURCE_DIR}/app/res/calvane.ico"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${SOURCE_DIR}/app/res/wizard.bmp"
!define MUI_WELCOMEFINISHPAGE_BITMAP_STRETCH AspectFitHeight
!define MUI_ABORTWARNING

!define MUI_WELCOMEPAGE_TEXT "Setup installs Calvane for everybody who uses this computer.$\r$\n$\r$\nA Calvane that is \
    running is ended for that; your settings stay as they are.$\r$\n$\r$\n$_CLICK"
!insertmacro MUI_PAGE_WELCOME
!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipWhenInstalled
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE CheckFolder
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Open the configuration window"
!define MUI_FINISHPAGE_RUN_FUNCTION OpenWindow
!define MUI_FINISHPAGE_SHOWREADME
!define MUI_FINISHPAGE_SHOWREADME_TEXT "Read the user's guide"
!define MUI_FINISHPAGE_SHOWREADME_FUNCTION OpenGuide
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "English"

; Says why, where there is somebody to read it, and ends with an exit code.
!macro Fail code text
    DetailPrint "${text}"
    SetErrorLevel ${code}
    MessageBox MB_OK|MB_ICONSTOP "${text}" /SD IDOK
    Abort "${text}"
!macroend

!macro DefineCommonFunctions prefix

; Every user of the machine shares the shortcut; whoever may not write for the machine gets no further.
Function ${prefix}Begin
    SetShellVarContext all
    UserInfo::GetAccountType
    Pop $0
    ${If} $0 != "admin"
        SetErrorLevel ${kErrorElevationRequired}
        MessageBox MB_OK|MB_ICONSTOP "Administrator rights are needed." /SD IDOK
        Abort
    ${EndIf}
FunctionEnd

; Sets $R0 to a program file that cannot be written, which is so while it runs, or else to "".
Function ${prefix}FindBusyFile
    !insertmacro ReturnIfBusy "$INSTDIR\${kServer}"
    !insertmacro ReturnIfBusy "$INSTDIR\${kLoader}"
    StrCpy $R0 ""
FunctionEnd

; Waits until no program file is busy, $R2 tries at most. Sets $R0 as FindBusyFile does.
Function ${prefix}WaitUntilFree
    ${Do}
        Call ${prefix}FindBusyFile
        ${IfThen} $R0 == "" ${|} ${ExitDo} ${|}
        IntOp $R2 $R2 - 1
        Sleep ${kTryMilliseconds}
    ${LoopUntil} $R2 <= 0
FunctionEnd

; Runs a shortcut with the rights of the user whose desktop this is, not with the administrator's: what an elevated
; program starts is elevated too. Sets the error flag where there is no desktop.
Function ${prefix}RunThroughShell
    Exch $0
    Push $1
    ClearErrors
    System::Call "user32::GetShellWindow() p .r1"
    ${If} $1 = 0
        SetErrors
    ${Else}
        Exec '"$WINDIR\explorer.exe" "$0"'
    ${EndIf}
    Pop $1
    Pop $0
FunctionEnd

; Ends a manager of this user that runs from $INSTDIR. COM keeps elevated clients and servers that are not elevated apart,
; so that the first attempt can miss the manager; the second one then comes from the user's side. A manager of another user,
; or one that does not reply, stays: its files are put aside.
Function ${prefix}EndManager
    Call ${prefix}FindBusyFile
    ${IfThen} $R0 == "" ${|} Return ${|}
    DetailPrint "Ending the running manager"
    nsExec::Exec /TIMEOUT=${kReleaseMilliseconds} '"$INSTDIR\${kLoader}" /release'
    Pop $R1
    Call ${prefix}FindBusyFile
    ${IfThen} $R0 == "" ${|} Return ${|}

    CreateShortcut "$INSTDIR\Release.lnk" "$INSTDIR\${kLoader}" "/release"
    Push "$INSTDIR\Release.lnk"
    Call ${prefix}RunThroughShell
    StrCpy $R2 ${kShellTries}
    ${IfNotThen} ${Errors} ${|} Call ${prefix}WaitUntilFree ${|}
    Delete "$INSTDIR\Release.lnk"
FunctionEnd

; Puts the file $R0 aside when it is in use: it gets a name of its own, and goes at the next start of Windows. Programs that
; run can be renamed. Sets the error flag where the file could not be renamed either.
Function ${prefix}PutAside
    ClearErrors
    ${IfNotThen} ${FileExists} $R0 ${|} Return ${|}
    FileOpen $R1 $R0 a
    ${IfNot} ${Errors}
        FileClose $R1
        Return
    ${EndIf}
    StrCpy $R2 0
    ${Do}
        IntOp $R2 $R2 + 1
        StrCpy $R1 "$R0.$R2.old"
    ${LoopWhile} ${FileExists} $R1
    ClearErrors
    Rename $R0 $R1
    ${If} ${Errors}
        SetErrors ; the question has cleared it
        Return
    ${EndIf}
    DetailPrint "In use, goes at the next start of Windows: $R0"
    Delete /REBOOTOK $R1
    ClearErrors
FunctionEnd

; Sets $0 to the text data of a value of the machine's Run key, or to "". $R3 is the flag of the registry view. The manager
; stores text without the NUL at its end, which only RegGetValue makes up for; before Windows 10 that function itself cannot
; choose the view.
Function ${prefix}ReadRunValue
    StrCpy $0 ""
    System::Call "advapi32::RegOpenKeyExW(p ${kLocalMachine}, w '${kRunKey}', i 0, i ${kRead} | R3, *p .R4) i .R5"
    ${IfThen} $R5 <> 0 ${|} Return ${|}
    System::Call "advapi32::RegGetValueW(p R4, p 0, w '${kRunValue}', i ${kText}, p 0, w .r0, *i ${kTextBytes}) i .R5"
    ${IfThen} $R5 <> 0 ${|} StrCpy $0 "" ${|}
    System::Call "advapi32::RegCloseKey(p R4)"
FunctionEnd

!macroend

!define /math kTextBytes ${NSIS_MAX_STRLEN} * 2
!define kLocalMachine 0x80000002
!define kUsers 0x80000003
!define kRead 0x20019
!define kText 0x2
!define k64BitView 0x100
!define k32BitView 0x200

; Removes a file, at the next start of Windows where it is in use. It never waits for that under its own name, since a
; Calvane that is installed before would go with it; except where it cannot be renamed.
!macro RemoveFile file
    StrCpy $R0 "${file}"
    Call un.PutAside
    Delete /REBOOTOK $R0
!macroend

; Removes a folder that is empty, or will be at the next start of Windows.
!macro RemoveFolder folder
    ${If} ${RebootFlag}
        RMDir /REBOOTOK "${folder}"
    ${Else}
        RMDir "${folder}"
    ${EndIf}
!macroend

!macro ReturnIfBusy file
    StrCpy $R0 "${file}"
    ${If} ${FileExists} $R0
        ClearErrors
        FileOpen $R1 $R0 a
        ${IfThen} ${Errors} ${|} Return ${|}
        FileClose $R1
    ${EndIf}
!macroend

!insertmacro DefineCommonFunctions ""
!insertmacro DefineCommonFunctions "un."

; --- Installing

; "1" when an earlier installation is brought up to date.
Var isUpgrade

Function .onInit
    Call Begin
    ReadRegStr $0 HKLM "${kUninstallKey}" "InstallLocation"
    ; An upgrade goes where the program is: a second copy elsewhere would leave the first one behind.
    ${If} $0 != ""
    ${AndIf} ${FileExists} "$0\${kServer}"
        StrCpy $INSTDIR $0
        StrCpy $isUpgrade "1"
    ${EndIf}
    Call ChooseStartup
FunctionEnd

Function SkipWhenInstalled
    ${IfThen} $isUpgrade == "1" ${|} Abort ${|}
FunctionEnd

; Runs the guard of the folder, $R0 being "check" or "protect". Sets $R0 to "" or to why the folder is refused.
Function GuardFolder
    InitPluginsDir
    File "/oname=$PLUGINSDIR\${kFolderGuard}" "${BUILD_DIR}/${kFolderGuard}"
    ExecWait '"$PLUGINSDIR\${kFolderGuard}" $R0 "$INSTDIR"' $R1
    StrCpy $R0 ""
    ${If} $R1 <> 0
        StrCpy $R0 "Users may change the folder $INSTDIR or one that it lies in, and with it the program that is \
            started for everybody. Choose a folder that only administrators may change."
    ${EndIf}
FunctionEnd

Function CheckFolder
    StrCpy $R0 "check"
    Call GuardFolder
    ${If} $R0 != ""
        MessageBox MB_OK|MB_ICONSTOP "$R0"
        Abort
    ${EndIf}
FunctionEnd

; Sets $R1 to where a new version of the file $R0 is to be written: there, or, where the present one can be neither written
; nor renamed, beside it.
Function MakeWay
    Call PutAside
    ${If} ${Errors}
        StrCpy $R1 "$R0.new"
    ${Else}
        Delete "$R0.new" ; of an attempt before: it would come over this one at the next start
        StrCpy $R1 $R0
    ${EndIf}
FunctionEnd

!macro InstallFile folder name source
    SetOutPath "${folder}"
    StrCpy $R0 "${folder}\${name}"
    Call MakeWay
    File "/oname=$R1" "${source}"
    ${If} $R1 != $R0
        DetailPrint "In use, comes at the next start of Windows: $R0"
        Rename /REBOOTOK $R1 $R0
    ${EndIf}
!macroend

; Sets $0 to the path that now stands for $0, which names this product's file $R0 in a folder where it no longer is.
Function CorrectPath
    ${GetFileName} $0 $1
    ${If} $1 == $R0
    ${AndIfNot} ${FileExists} $0
        StrCpy $0 "$INSTDIR\$R0"
    ${EndIf}
FunctionEnd

; The manager's folder has been another one: the sound that users have by default lies there no longer. The settings of users
; who are signed in can be reached.
Function CorrectSounds
    StrCpy $R1 0
    ${Do}
        EnumRegKey $R2 HKU "" $R1
        ${IfThen} $R2 == "" ${|} ${ExitDo} ${|}
        IntOp $R1 $R1 + 1
        StrCpy $0 ""
        System::Call "advapi32::RegGetValueW(p ${kUsers}, w '$R2\${kStoreKey}\Settings', w 'SoundFile', i ${kText}, \
            p 0, w .r0, *i ${kTextBytes}) i .R5"
        ${If} $R5 = 0
            StrCpy $2 $0
            StrCpy $R0 "${kSound}"
            Call CorrectPath
            ${If} $0 != $2
                WriteRegStr HKU "$R2\${kStoreKey}\Settings" "SoundFile" $0
            ${EndIf}
        ${EndIf}
    ${Loop}
FunctionEnd

Section "Calvane"
    SectionIn RO
    StrCpy $R0 "protect"
    Call GuardFolder
    ${If} $R0 != ""
        !insertmacro Fail ${kErrorFolderUnsafe} "$R0"
    ${EndIf}
    Call EndManager

    !insertmacro InstallFile "$INSTDIR" "${kServer}" "${BUILD_DIR}/${kServer}"
    !insertmacro InstallFile "$INSTDIR" "${kLoader}" "${BUILD_DIR}/${kLoader}"
    !insertmacro InstallFile "$INSTDIR" "${kSound}" "${BUILD_DIR}/${kSound}"
    !insertmacro InstallDocuments
    SetOutPath "$INSTDIR"
    WriteUninstaller "$INSTDIR\${kUninstaller}"
    CreateShortcut "${kShortcut}" "$INSTDIR\${kLoader}" "/show" "$INSTDIR\${kServer}" 0 SW_SHOWNORMAL "" \
        "Settings of the pop-up blocker"
    CreateShortcut "${kGuideShortcut}" "$INSTDIR\${kGuide}"

    ; The entry comes before the registration, so that a registration that fails can be removed like any other.
    WriteRegStr HKLM "${kUninstallKey}" "DisplayName" "Calvane"
    WriteRegStr HKLM "${kUninstallKey}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "${kUninstallKey}" "DisplayIcon" "$INSTDIR\${kServer},0"
    WriteRegStr HKLM "${kUninstallKey}" "Publisher" "Calvane"
    WriteRegStr HKLM "${kUninstallKey}" "HelpLink" "${kHelpAddress}"
    WriteRegStr HKLM "${kUninstallKey}" "URLInfoAbout" "${kAboutAddress}"
    WriteRegStr HKLM "${kUninstallKey}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${kUninstallKey}" "UninstallString" '"$INSTDIR\${kUninstaller}"'
    WriteRegStr HKLM "${kUninstallKey}" "QuietUninstallString" '"$INSTDIR\${kUninstaller}" /S'
    WriteRegDWORD HKLM "${kUninstallKey}" "NoModify" 1
    WriteRegDWORD HKLM "${kUninstallKey}" "NoRepair" 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKLM "${kUninstallKey}" "EstimatedSize" $0
    Call CorrectSounds

    DetailPrint "Registering the manager"
    StrCpy $0 "not started"
    ExecWait '"$INSTDIR\${kServer}" /RegServer' $0
    ${If} $0 != 0
        !insertmacro Fail ${kErrorNotRegistered} "The manager could not be registered ($0)."
    ${EndIf}
SectionEnd

; The value is the one that the manager itself writes, where it may, when a user chooses "Startup".
Section /o "Start with Windows" kStartup
    WriteRegStr HKLM "${kRunKey}" "${kRunValue}" "$INSTDIR\${kLoader}"
SectionEnd

; Taken out on the page: an unattended installation leaves the value as it is.
Section "-No start with Windows"
    ${IfNot} ${SectionIsSelected} ${kStartup}
        StrCpy $R3 ${k32BitView}
        Call ReadRunValue
        ${If} $0 == "$INSTDIR\${kLoader}"
            DeleteRegValue HKLM "${kRunKey}" "${kRunValue}"
        ${EndIf}
    ${EndIf}
SectionEnd

Section "-Exit code"
    ${IfThen} ${RebootFlag} ${|} SetErrorLevel ${kSuccessRebootRequired} ${|}
SectionEnd

!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
!insertmacro MUI_DESCRIPTION_TEXT ${kStartup} "Puts the icon into the notification area whenever somebody signs in."
!insertmacro MUI_FUNCTION_DESCRIPTION_END

; Chosen by the switch, or before: a value that starts the loader from a folder where it no longer is is written again.
Function ChooseStartup
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/STARTUP" $1
    ${IfNot} ${Errors}
        !insertmacro SelectSection ${kStartup}
        Return
    ${EndIf}
    StrCpy $R3 ${k32BitView}
    Call ReadRunValue
    StrCpy $R0 "${kLoader}"
    Call CorrectPath
    ${If} $0 == "$INSTDIR\${kLoader}"
        !insertmacro SelectSection ${kStartup}
    ${EndIf}
FunctionEnd

Function OpenGuide
    Push "${kGuideShortcut}"
    Call RunThroughShell
    ${If} ${Errors}
        ExecShell "open" "$INSTDIR\${kGuide}"
    ${EndIf}
FunctionEnd

Function OpenWindow
    Push "${kShortcut}"
    Call RunThroughShell
    ${If} ${Errors}
        Exec '"$INSTDIR\${kLoader}" /show'
    ${EndIf}
FunctionEnd

; --- Uninstalling

; Removes the start with Windows, unless somebody else's loader is started there. A policy puts the path in quotes.
Function un.RemoveRunValue
    Call un.ReadRunValue
    ${If} $0 == "$INSTDIR\${kLoader}"
    ${OrIf} $0 == '"$INSTDIR\${kLoader}"'
        DeleteRegValue HKLM "${kRunKey}" "${kRunValue}"
    ${EndIf}
FunctionEnd

Section "un.Calvane"
    SectionIn RO
    Call un.EndManager

    ${If} ${FileExists} "$INSTDIR\${kServer}"
        DetailPrint "Removing the registration"
        StrCpy $0 "not started"
        ExecWait '"$INSTDIR\${kServer}" /UnregServer' $0
        ${If} $0 != 0
            !insertmacro Fail ${kErrorNotRegistered} "The registration could not be removed ($0)."
        ${EndIf}
    ${EndIf}

    ; The manager writes the view of 32-bit programs, a policy the other one.
    ${If} ${RunningX64}
        SetRegView 64
        StrCpy $R3 ${k64BitView}
        Call un.RemoveRunValue
        SetRegView 32
    ${EndIf}
    StrCpy $R3 ${k32BitView}
    Call un.RemoveRunValue

    Delete "${kShortcut}"
    Delete "${kGuideShortcut}"
    !insertmacro RemoveFile "$INSTDIR\${kServer}"
    !insertmacro RemoveFile "$INSTDIR\${kLoader}"
    !insertmacro RemoveFile "$INSTDIR\${kSound}"
    !insertmacro RemoveDocuments
    DeleteRegKey HKLM "${kUninstallKey}"
    Delete "$INSTDIR\${kUninstaller}"
    SetOutPath "$TEMP"
    !insertmacro RemoveFolder "$INSTDIR"
    ${IfThen} ${RebootFlag} ${|} SetErrorLevel ${kSuccessRebootRequired} ${|}

    ; NSIS runs the uninstaller from a copy, and has Windows delete that at its next start, but first its folder, which
    ; is not empty then. So the folder is put in for it once more.
    ${If} $EXEDIR != $INSTDIR
        StrCpy $0 0
        ${IfThen} ${RebootFlag} ${|} StrCpy $0 1 ${|}
        RMDir /REBOOTOK "$EXEDIR"
        ${IfThen} $0 = 0 ${|} SetRebootFlag false ${|}
    ${EndIf}
SectionEnd

; The engine may keep something in the store's key too: only what the manager keeps there goes.
Section /o "un.Settings of this account" kPurge
    DeleteRegKey HKCU "${kStoreKey}\Settings"
    DeleteRegKey HKCU "${kStoreKey}\Exclude"
    DeleteRegKey HKCU "${kStoreKey}\Banners"
    DeleteRegKey HKCU "${kStoreKey}\Search"
    DeleteRegKey /ifempty HKCU "${kStoreKey}"
SectionEnd

!insertmacro MUI_UNFUNCTION_DESCRIPTION_BEGIN
!insertmacro MUI_DESCRIPTION_TEXT ${kPurge} "The lists and options of the user whose account the uninstaller runs \
    under. After a request for an administrator's password that is the administrator. Other users' settings stay."
!insertmacro MUI_UNFUNCTION_DESCRIPTION_END

Function un.onInit
    Call un.Begin
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/PURGE" $1
    ${IfNot} ${Errors}
        !insertmacro SelectSection ${kPurge}
    ${EndIf}
FunctionEnd
