; Installer of Tools Stats for Windows, made by tools/windows_app.sh with Debian's NSIS:
;   makensis -DAPPDIR=<the application's folder> -DOUTFILE=<setup.exe> -DVERSION=<x.y.z> windows_installer.nsi
; The tool goes into the suite's folder (its settings and configuration are found from the
; executable's folder: Config\, Settings\), C:\Quorvane\Zelvar\ unless the user picks another.
Target amd64-unicode  ; a 64-bit installer for the 64-bit program
SetCompressor /SOLID lzma
RequestExecutionLevel admin

Name "Zelvar - Tools Stats ${VERSION}"
OutFile "${OUTFILE}"
InstallDir "C:\Quorvane\Zelvar"
InstallDirRegKey HKLM "Software\Zelvar\ZL3_Tools_Stats" "Dossier"

!include "MUI2.nsh"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "French"

Section "Tools Stats"
    SetOutPath "$INSTDIR"
    File /r "${APPDIR}\*.*"
    WriteRegStr HKLM "Software\Zelvar\ZL3_Tools_Stats" "Dossier" "$INSTDIR"
    WriteUninstaller "$INSTDIR\ZL3_Tools_Stats_Desinstaller.exe"
    CreateDirectory "$SMPROGRAMS\Zelvar"
    CreateShortcut "$SMPROGRAMS\Zelvar\Tools Stats.lnk" "$INSTDIR\ZL3_Tools_Stats.exe"
    WriteRegStr HKLM "Software\Microsoft\Windows\CurrentVersion\Uninstall\ZL3_Tools_Stats" \
        "DisplayName" "Zelvar - Tools Stats"
    WriteRegStr HKLM "Software\Microsoft\Windows\CurrentVersion\Uninstall\ZL3_Tools_Stats" \
        "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "Software\Microsoft\Windows\CurrentVersion\Uninstall\ZL3_Tools_Stats" \
        "UninstallString" "$\"$INSTDIR\ZL3_Tools_Stats_Desinstaller.exe$\""
SectionEnd

; Only the files this installer put there: the suite's folder keeps its other programs, its
; configuration and the stations' settings.
Section "Uninstall"
    Delete "$INSTDIR\ZL3_Tools_Stats.exe"
    Delete "$INSTDIR\NOUVEAUTES.txt"
    Delete "$INSTDIR\zl3-*.exe"
    Delete "$INSTDIR\Qt6*.dll"
    Delete "$INSTDIR\libstdc++-6.dll"
    Delete "$INSTDIR\libgcc_s_seh-1.dll"
    Delete "$INSTDIR\libwinpthread-1.dll"
    RMDir /r "$INSTDIR\platforms"
    RMDir /r "$INSTDIR\styles"
    RMDir /r "$INSTDIR\tls"
    RMDir /r "$INSTDIR\imageformats"
    Delete "$SMPROGRAMS\Zelvar\Tools Stats.lnk"
    RMDir "$SMPROGRAMS\Zelvar"
    DeleteRegKey HKLM "Software\Microsoft\Windows\CurrentVersion\Uninstall\ZL3_Tools_Stats"
    DeleteRegKey HKLM "Software\Zelvar\ZL3_Tools_Stats"
    Delete "$INSTDIR\ZL3_Tools_Stats_Desinstaller.exe"
SectionEnd
