; The installer of the configuration manager, for the whole machine.
;
; The build hands over: VERSION ("1.0.0"), VERSION_NUMBERS ("1.0.0.0"), SOURCE_DIR and BUILD_DIR (absolute folders),
; OUTPUT (the file to make) and DOCUMENTS (a script with the macros InstallDocuments and RemoveDocuments).
;
; Switches, besides NSIS's own /S (silent) and /D=folder: the uninstaller takes /PURGE, which removes the settings of the
; user who runs it. Exit codes: 0 done, 1 cancelled, 2 a file could not be written, and those below.

!define kErrorInUse 3
!define kErrorNotRegistered 4
!define kErrorLeftOver 5
!define kErrorElevationRequired 740 ; Windows' own number

!define kServer "SentrelConfig.exe"
!define kLoader "CalvaneConfigLoader.exe"
!define kSound "Arc.wav"
!define kUninstaller "Uninstall.exe"
!define kShortcut "$SMPROGRAMS\Calvane.lnk"

!define kUninstallKey "Software\Microsoft\Windows\CurrentVersion\Uninstall\Calvane"
!define kRunKey "Software\Microsoft\Windows\CurrentVersion\Run"
!define kRunValue "Calvane Config Manager"
!define kStoreKey "Software\Calvane"

; How long a manager may take to end: when it is asked directly, and when it is asked through the shell.
!define kDirectTries 20
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
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Open the configuration window"
!define MUI_FINISHPAGE_RUN_FUNCTION OpenWindow
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

; Ends a manager that runs from $INSTDIR. COM keeps elevated clients and servers that are not elevated apart, so that
; the first attempt can miss the manager; the second one then comes from the user's side.
Function ${prefix}EndManager
    Call ${prefix}FindBusyFile
    ${IfThen} $R0 == "" ${|} Return ${|}
    DetailPrint "Ending the running manager"
    nsExec::Exec /TIMEOUT=${kReleaseMilliseconds} '"$INSTDIR\${kLoader}" /release'
    Pop $R1
    StrCpy $R2 ${kDirectTries}
    Call ${prefix}WaitUntilFree
    ${IfThen} $R0 == "" ${|} Return ${|}

    CreateShortcut "$INSTDIR\Release.lnk" "$INSTDIR\${kLoader}" "/release"
    Push "$INSTDIR\Release.lnk"
    Call ${prefix}RunThroughShell
    StrCpy $R2 ${kShellTries}
    ${IfNotThen} ${Errors} ${|} Call ${prefix}WaitUntilFree ${|}
    Delete "$INSTDIR\Release.lnk"
    ${IfThen} $R0 == "" ${|} Return ${|}

    !insertmacro Fail ${kErrorInUse} "$R0 is in use. End Calvane (Exit Calvane in its tray menu), also where other \
        users are signed in, and try again."
FunctionEnd

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
FunctionEnd

Function SkipWhenInstalled
    ${IfThen} $isUpgrade == "1" ${|} Abort ${|}
FunctionEnd

Section "Calvane"
    Call EndManager

    SetOutPath "$INSTDIR"
    File "${BUILD_DIR}/${kServer}"
    File "${BUILD_DIR}/${kLoader}"
    File "${BUILD_DIR}/${kSound}"
    ${If} $isUpgrade == "1"
        !insertmacro RemoveDocuments
    ${EndIf}
    !insertmacro InstallDocuments
    SetOutPath "$INSTDIR"
    WriteUninstaller "$INSTDIR\${kUninstaller}"
    CreateShortcut "${kShortcut}" "$INSTDIR\${kLoader}" "/show" "$INSTDIR\${kServer}" 0 SW_SHOWNORMAL "" \
        "Settings of the pop-up blocker"

    ; The entry comes before the registration, so that a registration that fails can be removed like any other.
    WriteRegStr HKLM "${kUninstallKey}" "DisplayName" "Calvane"
    WriteRegStr HKLM "${kUninstallKey}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "${kUninstallKey}" "DisplayIcon" "$INSTDIR\${kServer},0"
    WriteRegStr HKLM "${kUninstallKey}" "Publisher" "Calvane"
    WriteRegStr HKLM "${kUninstallKey}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${kUninstallKey}" "UninstallString" '"$INSTDIR\${kUninstaller}"'
    WriteRegStr HKLM "${kUninstallKey}" "QuietUninstallString" '"$INSTDIR\${kUninstaller}" /S'
    WriteRegDWORD HKLM "${kUninstallKey}" "NoModify" 1
    WriteRegDWORD HKLM "${kUninstallKey}" "NoRepair" 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKLM "${kUninstallKey}" "EstimatedSize" $0

    DetailPrint "Registering the manager"
    StrCpy $0 "not started"
    ExecWait '"$INSTDIR\${kServer}" /RegServer' $0
    ${If} $0 != 0
        !insertmacro Fail ${kErrorNotRegistered} "The manager could not be registered ($0)."
    ${EndIf}
SectionEnd

Function OpenWindow
    Push "${kShortcut}"
    Call RunThroughShell
    ${If} ${Errors}
        Exec '"$INSTDIR\${kLoader}" /show'
    ${EndIf}
FunctionEnd

; --- Uninstalling

; Removes the start with Windows, unless somebody else's loader is started there. The manager stores text without the
; NUL at its end, which only RegGetValue makes up for.
!macro RemoveRunValue
    StrCpy $0 ""
    System::Call "advapi32::RegGetValueW(p ${kLocalMachine}, w '${kRunKey}', w '${kRunValue}', \
        i ${kTextAndView}, p 0, w .r0, *i ${kTextBytes}) i .r1"
    ${If} $1 = 0
    ${AndIf} $0 == "$INSTDIR\${kLoader}"
        DeleteRegValue HKLM "${kRunKey}" "${kRunValue}"
    ${EndIf}
!macroend

!define /math kTextBytes ${NSIS_MAX_STRLEN} * 2
!define kLocalMachine 0x80000002
!define kText 0x2
!define kTextIn64BitView 0x10002
!define kTextIn32BitView 0x20002

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
        !define kTextAndView ${kTextIn64BitView}
        !insertmacro RemoveRunValue
        !undef kTextAndView
        SetRegView 32
    ${EndIf}
    !define kTextAndView ${kText}
    !insertmacro RemoveRunValue
    !undef kTextAndView

    Delete "${kShortcut}"
    Delete "$INSTDIR\${kServer}"
    Delete "$INSTDIR\${kLoader}"
    Delete "$INSTDIR\${kSound}"
    !insertmacro RemoveDocuments
    ${If} ${FileExists} "$INSTDIR\${kServer}"
    ${OrIf} ${FileExists} "$INSTDIR\${kLoader}"
        !insertmacro Fail ${kErrorLeftOver} "Not every file in $INSTDIR could be removed."
    ${EndIf}

    DeleteRegKey HKLM "${kUninstallKey}"
    Delete "$INSTDIR\${kUninstaller}"
    SetOutPath "$TEMP"
    RMDir "$INSTDIR"

    ; NSIS runs the uninstaller from a copy, and has Windows delete that at its next start, but first its folder, which
    ; is not empty then. So the folder is put in for it once more.
    ${If} $EXEDIR != $INSTDIR
        RMDir /REBOOTOK "$EXEDIR"
        SetRebootFlag false
    ${EndIf}
SectionEnd

; The engine may keep something in the store's key too: only what the manager keeps there goes.
Section /o "un.My settings" kPurge
    DeleteRegKey HKCU "${kStoreKey}\Settings"
    DeleteRegKey HKCU "${kStoreKey}\Exclude"
    DeleteRegKey HKCU "${kStoreKey}\Banners"
    DeleteRegKey HKCU "${kStoreKey}\Search"
    DeleteRegKey /ifempty HKCU "${kStoreKey}"
SectionEnd

!insertmacro MUI_UNFUNCTION_DESCRIPTION_BEGIN
!insertmacro MUI_DESCRIPTION_TEXT ${kPurge} "Your lists and options. Without this they are there again when Calvane \
    is installed again."
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
