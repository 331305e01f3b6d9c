@echo off
rem Removes what install.cmd has set up. Results, log and trace stay in the data folder, and so do these files.
rem Run it as an administrator.
setlocal
set "HERE=%~dp0"
set "FAILED="
if not defined MOFCOMP set "MOFCOMP=mofcomp"

rem The schema first: whoever asks for a class would start a provider that is going.
%MOFCOMP% "%HERE%zebdiag-remove.mof"
if errorlevel 1 set "FAILED=%FAILED% schema"
start "" /wait "%HERE%Drevok.EXE" /UnregServer
if errorlevel 1 set "FAILED=%FAILED% provider"
regsvr32 /s /u "%HERE%Vorl.dll"
if errorlevel 1 set "FAILED=%FAILED% agent"
reg delete "HKLM\SOFTWARE\Veltrane\Halvern\ZEB\ZebDiag" /f >nul 2>&1
reg query "HKLM\SOFTWARE\Veltrane\Halvern\ZEB\ZebDiag" >nul 2>&1
if not errorlevel 1 set "FAILED=%FAILED% settings"

if defined FAILED echo Not removed:%FAILED%. Run this as an administrator, again if need be. 1>&2 & exit /b 1
echo ZEB Diagnostics is removed. Results and logs are still in %ProgramData%\Veltrane\ZEB.
exit /b 0
