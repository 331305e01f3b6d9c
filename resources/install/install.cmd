@echo off
rem Installs ZEB Diagnostics from the folder that this file is in, which must stay where it is afterwards. Run it as
rem an administrator; run again, it puts back whatever was changed. zebdiag doctor tells what is wrong.
setlocal
set "HERE=%~dp0"
set "DATA=%ProgramData%\Veltrane\ZEB"
set "KEY=HKLM\SOFTWARE\Veltrane\Halvern\ZEB\ZebDiag"
set "APPID=HKCR\AppID\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E21}"
rem The compiler of the management service, or another one.
if not defined MOFCOMP set "MOFCOMP=mofcomp"

reg add "%KEY%" /f >nul 2>&1
if errorlevel 1 set "WHAT=Settings cannot be written to the registry. Run this as an administrator." & goto failed

echo Data folder %DATA%
if not exist "%DATA%\" md "%DATA%"
if not exist "%DATA%\" set "WHAT=The data folder cannot be made." & goto failed
rem Full control for the system and administrators, change for the service account, read for users.
icacls "%DATA%" /inheritance:r /grant:r *S-1-5-18:(OI)(CI)F *S-1-5-32-544:(OI)(CI)F *S-1-5-19:(OI)(CI)M *S-1-5-32-545:(OI)(CI)RX >nul 2>&1
if errorlevel 1 set "WHAT=The permissions of the data folder cannot be set." & goto failed

echo Settings
call :setting InstalledDir REG_SZ "%DATA%\\" || goto failed
call :setting DebugFileName REG_SZ "%DATA%\ZebDiagDbg.log" || goto failed
call :setting StoreAfterRun REG_DWORD 1 || goto failed

echo Provider
start "" /wait "%HERE%Drevok.EXE" /RegServer
if errorlevel 1 set "WHAT=Drevok.EXE could not be registered." & goto failed
rem Registering makes the key anew, so the account comes after it.
reg add "%APPID%" /v RunAs /t REG_SZ /d "NT AUTHORITY\LocalService" /f >nul
if errorlevel 1 set "WHAT=The account of the provider cannot be set." & goto failed

echo Adapter agent
regsvr32 /s "%HERE%Vorl.dll"
if errorlevel 1 set "WHAT=Vorl.dll could not be registered." & goto failed

echo Schema
%MOFCOMP% "%HERE%zebdiag.mof"
if errorlevel 1 set "WHAT=zebdiag.mof could not be compiled." & goto failed

echo ZEB Diagnostics is installed. See what it finds with: "%HERE%zebdiag.exe" doctor
exit /b 0

:setting
reg add "%KEY%" /v %1 /t %2 /d %3 /f >nul
if errorlevel 1 set "WHAT=The setting %1 cannot be written." & exit /b 1
exit /b 0

:failed
echo ZEB Diagnostics is not installed: %WHAT% 1>&2
exit /b 1
