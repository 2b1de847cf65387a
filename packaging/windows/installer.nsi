# The installer. It asks for no administrator and installs for the user who runs it; who chooses "all users" is asked
# for one. Options: /S asks and shows nothing, /AllUsers, /Factory (the maker's programs, too), /D=FOLDER (last).
Unicode true
Target amd64-unicode
ManifestDPIAware true
RequestExecutionLevel user
SetCompressor /SOLID lzma

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include nsDialogs.nsh

!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\QUORVEL"

Name "QUORVEL"
OutFile "${SETUP}"
BrandingText "QUORVEL ${VERSION}"
VIProductVersion "${VERSION}.0.0"
VIAddVersionKey ProductName "QUORVEL"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey FileDescription "Installs QUORVEL"
VIAddVersionKey CompanyName "The developers of QUORVEL"
VIAddVersionKey LegalCopyright "GNU General Public License, version 3 or later"

Var allUsers # 1 when it installs for all users

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_RUN "$INSTDIR\quorvel.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Start QUORVEL"

!insertmacro MUI_PAGE_LICENSE "${FOLDER}\licenses\QUORVEL.txt"
Page custom chooseUsers usersChosen
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

# Whose start menu, registry and folder it is.
!macro useShell
    SetRegView 64
    ${If} $allUsers == 1
        SetShellVarContext all
    ${Else}
        SetShellVarContext current
    ${EndIf}
!macroend

Function useFolder
    !insertmacro useShell
    ReadRegStr $0 SHCTX "${KEY}" "InstallLocation"
    ${If} $0 != ""
        StrCpy $INSTDIR $0
    ${ElseIf} $allUsers == 1
        StrCpy $INSTDIR "$PROGRAMFILES64\QUORVEL"
    ${Else}
        StrCpy $INSTDIR "$LOCALAPPDATA\Programs\QUORVEL"
    ${EndIf}
FunctionEnd

# For all users it needs an administrator: it starts once more, as one.
Function needAdministrator
    UserInfo::GetAccountType
    Pop $0
    ${If} $0 != "Admin"
        ${If} ${Silent}
            SetErrorLevel 5
            Quit
        ${EndIf}
        ExecShell "runas" "$EXEPATH" "/AllUsers"
        Quit
    ${EndIf}
FunctionEnd

Var perUserButton
Var allUsersButton

Function chooseUsers
    !insertmacro MUI_HEADER_TEXT "Choose Users" "Who uses QUORVEL on this computer?"
    nsDialogs::Create 1018
    Pop $0
    ${NSD_CreateRadioButton} 0 10u 100% 12u "Install for &me only; that needs no administrator"
    Pop $perUserButton
    ${NSD_CreateRadioButton} 0 28u 100% 12u "Install for &all users; Windows asks for an administrator"
    Pop $allUsersButton
    ${If} $allUsers == 1
        ${NSD_Check} $allUsersButton
    ${Else}
        ${NSD_Check} $perUserButton
    ${EndIf}
    nsDialogs::Show
FunctionEnd

Function usersChosen
    ${NSD_GetState} $allUsersButton $0
    ${If} $0 == ${BST_CHECKED}
        StrCpy $allUsers 1
        Call needAdministrator
    ${Else}
        StrCpy $allUsers 0
    ${EndIf}
    Call useFolder
FunctionEnd

Section "QUORVEL" main
    SectionIn RO
    # an older version, whose files need not be those of this one
    IfFileExists "$INSTDIR\uninstall.exe" 0 +2
    ExecWait '"$INSTDIR\uninstall.exe" /S _?=$INSTDIR'

    SetOutPath "$INSTDIR"
    File /r /x "*factory.exe" "${FOLDER}\*"
    # tells the programs to keep the user's files elsewhere
    FileOpen $0 "$INSTDIR\installed" w
    FileWrite $0 "$allUsers"
    FileClose $0
    CreateShortCut "$SMPROGRAMS\QUORVEL.lnk" "$INSTDIR\quorvel.exe"

    WriteUninstaller "$INSTDIR\uninstall.exe"
    WriteRegStr SHCTX "${KEY}" "DisplayName" "QUORVEL"
    WriteRegStr SHCTX "${KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr SHCTX "${KEY}" "DisplayIcon" "$INSTDIR\quorvel.exe"
    WriteRegStr SHCTX "${KEY}" "Publisher" "The developers of QUORVEL"
    WriteRegStr SHCTX "${KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr SHCTX "${KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr SHCTX "${KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD SHCTX "${KEY}" "EstimatedSize" ${SIZE}
    WriteRegDWORD SHCTX "${KEY}" "NoModify" 1
    WriteRegDWORD SHCTX "${KEY}" "NoRepair" 1
SectionEnd

Section /o "Factory edition" factory
    File "${FOLDER}\*factory.exe"
    CreateShortCut "$SMPROGRAMS\QUORVEL factory.lnk" "$INSTDIR\quorvel-factory.exe"
SectionEnd

!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
!insertmacro MUI_DESCRIPTION_TEXT ${main} "The tool, its command line tool, and a simulated bus to practise with."
!insertmacro MUI_DESCRIPTION_TEXT ${factory} "The programs for calibration at the maker's."
!insertmacro MUI_FUNCTION_DESCRIPTION_END

Function .onInit
    StrCpy $allUsers 0
    ${GetParameters} $R0
    ClearErrors
    ${GetOptions} $R0 "/AllUsers" $R1
    ${IfNot} ${Errors}
        StrCpy $allUsers 1
        Call needAdministrator
    ${EndIf}
    ClearErrors
    ${GetOptions} $R0 "/Factory" $R1
    ${IfNot} ${Errors}
        !insertmacro SelectSection ${factory}
    ${EndIf}
    StrCpy $R2 $INSTDIR # of /D=
    Call useFolder
    ${If} $R2 != ""
        StrCpy $INSTDIR $R2
    ${EndIf}
FunctionEnd

Function un.onInit
    StrCpy $allUsers 0
    FileOpen $0 "$INSTDIR\installed" r
    FileRead $0 $allUsers
    FileClose $0
    !insertmacro useShell
    ${If} $allUsers == 1
        UserInfo::GetAccountType
        Pop $0
        ${If} $0 != "Admin"
            ${If} ${Silent}
                SetErrorLevel 5
                Quit
            ${EndIf}
            ExecShell "runas" "$INSTDIR\uninstall.exe"
            Quit
        ${EndIf}
    ${EndIf}
FunctionEnd

Section "Uninstall"
    SetOutPath "$TEMP"
    !include "${FILES}"
    Delete "$INSTDIR\installed"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    Delete "$SMPROGRAMS\QUORVEL.lnk"
    Delete "$SMPROGRAMS\QUORVEL factory.lnk"
    DeleteRegKey SHCTX "${KEY}"
SectionEnd
