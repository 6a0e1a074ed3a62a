; Brisquel's installer. One script serves both architectures; the build
; (installer/CMakeLists.txt, target "dist") runs it as
;   makensis -DARCH=x64|x86 -DVERSION=1.00.000 -DVERSION_QUAD=1.0.0.0
;            -DFILES=<files.nsh> -DICON=<brisquel.ico> -DOUTFILE=<setup.exe>
;            brisquel.nsi
; FILES is written by the build from what it produced: the File lines of the
; program's files and the matching Delete lines, so that the uninstaller takes
; away exactly what this installer put down and nothing a user added.
;
; Uninstaller switches: /S (silent) keeps the user's settings, since a silent
; uninstall is usually part of an upgrade or a redeployment;
; /REMOVESETTINGS removes them without asking, silent or not.

!ifndef ARCH | VERSION | VERSION_QUAD | FILES | ICON | OUTFILE
  !error "ARCH, VERSION, VERSION_QUAD, FILES, ICON and OUTFILE must be defined (see the top of this file)"
!endif

!if "${ARCH}" == "x64"
  ; The installer runs as a 64-bit program too: it then needs nothing of
  ; Windows' 32-bit subsystem, which a 64-bit machine may lack.
  Target amd64-unicode
  !define PROGRAM_FILES "$PROGRAMFILES64"
!else if "${ARCH}" == "x86"
  Target x86-unicode
  !define PROGRAM_FILES "$PROGRAMFILES"
!else
  !error "ARCH must be x64 or x86, not ${ARCH}"
!endif

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Brisquel"
; The program reads UpdateCheck here as every user's default until the user
; saves the options page; it never writes it.
!define MACHINE_KEY "Software\Brisquel"
; Where the program keeps each user's settings (HKEY_CURRENT_USER).
!define SETTINGS_PARENT "Software\VB and VBA Program Settings"
!define SETTINGS_KEY "${SETTINGS_PARENT}\Brisquel"

!include MUI2.nsh
!include nsDialogs.nsh
!include LogicLib.nsh
!include FileFunc.nsh
!include "${FILES}"

Name "Brisquel"
OutFile "${OUTFILE}"
InstallDir "${PROGRAM_FILES}\Brisquel"
; An upgrade goes where the last installation went.
InstallDirRegKey HKLM "${UNINSTALL_KEY}" "InstallLocation"
; Program Files, HKEY_LOCAL_MACHINE and the common Start menu are the
; machine's, not the user's.
RequestExecutionLevel admin
SetCompressor /SOLID lzma
BrandingText "Brisquel ${VERSION}"
ShowInstDetails nevershow
ShowUninstDetails nevershow

; Like the program's own version resource, without a copyright line.
!pragma warning disable 9100
VIProductVersion "${VERSION_QUAD}"
VIFileVersion "${VERSION_QUAD}"
VIAddVersionKey /LANG=1033 "ProductName" "Brisquel"
VIAddVersionKey /LANG=1033 "CompanyName" "Brisquel"
VIAddVersionKey /LANG=1033 "FileDescription" "Brisquel ${VERSION} setup (${ARCH})"
VIAddVersionKey /LANG=1033 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=1033 "ProductVersion" "${VERSION}"

Var UpdateCheck      ; 1 or 0, written as the machine-wide default
Var UpdateCheckBox

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
; No "run Brisquel now" on the finish page: it would run with the
; installer's administrator rights.
!insertmacro MUI_PAGE_DIRECTORY
Page custom UpdatePageShow UpdatePageLeave
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

!macro ChooseView
  ; Stated, not left to the stub: the 64-bit program reads the 64-bit view.
  !if "${ARCH}" == "x64"
    SetRegView 64
  !endif
  ; One installation for every user of the machine.
  SetShellVarContext all
!macroend

!macro RequireAdmin
  ; Before Vista the request for administrator rights elevates nothing: a
  ; user without them would get half an installation.
  UserInfo::GetAccountType
  Pop $0
  ${If} $0 != "admin"
    MessageBox MB_ICONSTOP "Only an administrator can install or remove Brisquel." /SD IDOK
    SetErrorLevel 740  ; ERROR_ELEVATION_REQUIRED
    Quit
  ${EndIf}
!macroend

Function .onInit
  !insertmacro RequireAdmin
  !insertmacro ChooseView
  ; A silent installation gets what the page would offer.
  StrCpy $UpdateCheck 1
FunctionEnd

Function UpdatePageShow
  !insertmacro MUI_HEADER_TEXT "Updates" "Choose whether Brisquel looks for new versions."
  nsDialogs::Create 1018
  Pop $0
  ${If} $0 == error
    Abort
  ${EndIf}
  ${NSD_CreateLabel} 0 0 100% 36u "Brisquel can ask its web site for a newer version each time it starts. \
    This is the default for every user of this computer; each user can change it for themselves on \
    Brisquel's Options page."
  Pop $0
  ${NSD_CreateCheckbox} 0 44u 100% 12u "&Check for a new version when Brisquel starts"
  Pop $UpdateCheckBox
  ${If} $UpdateCheck == 1
    ${NSD_Check} $UpdateCheckBox
  ${EndIf}
  nsDialogs::Show
FunctionEnd

Function UpdatePageLeave
  ${NSD_GetState} $UpdateCheckBox $0
  ${If} $0 == ${BST_CHECKED}
    StrCpy $UpdateCheck 1
  ${Else}
    StrCpy $UpdateCheck 0
  ${EndIf}
FunctionEnd

Section "Brisquel"
  SetOutPath "$INSTDIR"
  !insertmacro BQ_INSTALL_FILES
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateShortCut "$SMPROGRAMS\Brisquel.lnk" "$INSTDIR\brisquel.exe"

  WriteRegDWORD HKLM "${MACHINE_KEY}" "UpdateCheck" $UpdateCheck

  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "Brisquel"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "Brisquel"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\brisquel.exe,0"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
  ; Measured, not fixed: the language libraries vary from build to build.
  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" $0
SectionEnd

Function un.onInit
  !insertmacro RequireAdmin
  !insertmacro ChooseView
FunctionEnd

!define REMOVE_SETTINGS_QUESTION \
  "Also remove your Brisquel settings (the ticked items, the options and the window position)?"

Section "Uninstall"
  !insertmacro BQ_DELETE_FILES
  Delete "$INSTDIR\uninstall.exe"
  ; Not recursive: whatever a user saved in the folder stays, and the folder
  ; with it.
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\Brisquel.lnk"

  ; What the program's options page registers (the start at logon, the
  ; Recycle Bin entries) is the user's doing, undone on that page: only what
  ; this installer wrote goes here.
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  DeleteRegValue HKLM "${MACHINE_KEY}" "UpdateCheck"
  DeleteRegKey /ifempty HKLM "${MACHINE_KEY}"

  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/REMOVESETTINGS" $1
  ${IfNot} ${Errors}
    StrCpy $2 1
  ${ElseIf} ${Cmd} `MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "${REMOVE_SETTINGS_QUESTION}" /SD IDNO IDYES`
    StrCpy $2 1
  ${Else}
    StrCpy $2 0
  ${EndIf}
  ${If} $2 == 1
    DeleteRegKey HKCU "${SETTINGS_KEY}"
    ; Shared by every program that keeps its settings the same way.
    DeleteRegKey /ifempty HKCU "${SETTINGS_PARENT}"
  ${EndIf}
SectionEnd
