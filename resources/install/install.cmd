@echo off
rem Installs ZEB Diagnostics from the folder that this file is in, which must stay where it is afterwards. Run it as
rem an administrator; run again, it puts back whatever was changed. zebdiag doctor tells what is wrong.
setlocal
set "HERE=%~dp0"
set "DATA=%ProgramData%\Veltrane\ZEB"
set "KEY=HKLM\SOFTWARE\Veltrane\Halvern\ZEB\ZebDiag"
set "APPID=HKCR\AppID\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E21}"
rem The management service's compiler, or the one that the caller names.
if not defined MOFCOMP set "MOFCOMP=mofcomp"

set "WHAT=the settings cannot be written. Run this as an administrator"
echo Settings
reg add "%KEY%" /v InstalledDir /t REG_SZ /d "%DATA%\\" /f >nul
if not %errorlevel% == 0 goto failed
reg add "%KEY%" /v DebugFileName /t REG_SZ /d "%DATA%\ZebDiagDbg.log" /f >nul
if not %errorlevel% == 0 goto failed
reg add "%KEY%" /v StoreAfterRun /t REG_DWORD /d 1 /f >nul
if not %errorlevel% == 0 goto failed

rem Full control for the system and administrators, change for the provider's account, read for users.
set "WHAT=the data folder or its permissions cannot be made"
echo Data folder %DATA%
if not exist "%DATA%\" md "%DATA%"
if not exist "%DATA%\" goto failed
icacls "%DATA%" /inheritance:r /grant:r *S-1-5-18:(OI)(CI)F *S-1-5-32-544:(OI)(CI)F *S-1-5-19:(OI)(CI)M *S-1-5-32-545:(OI)(CI)RX >nul
if not %errorlevel% == 0 goto failed

set "WHAT=Drevok.EXE cannot be registered"
echo Provider
start "" /wait "%HERE%Drevok.EXE" /RegServer
if not %errorlevel% == 0 goto failed
reg add "%APPID%" /v RunAs /t REG_SZ /d "NT AUTHORITY\LocalService" /f >nul
if not %errorlevel% == 0 goto failed

set "WHAT=Vorl.dll cannot be registered"
echo Adapter agent
regsvr32 /s "%HERE%Vorl.dll"
if not %errorlevel% == 0 goto failed

set "WHAT=zebdiag.mof cannot be compiled"
echo Schema
rem Base classes that the system lacks. The compiler refuses those that are there, and leaves them as they are.
if not exist "%HERE%base\" goto schema
pushd "%HERE%base"
for %%f in (*.mof) do %MOFCOMP% "%HERE%base\%%f" >nul 2>&1
popd
:schema
%MOFCOMP% "%HERE%zebdiag.mof"
if not %errorlevel% == 0 goto failed
rem Its texts in other languages. Without them clients see the English ones.
pushd "%HERE%."
for %%f in (zebdiag-*.mfl) do call :texts %%f
popd

echo ZEB Diagnostics is installed. See what it finds: "%HERE%zebdiag.exe" doctor
exit /b 0

:texts
%MOFCOMP% "%HERE%%1"
if %errorlevel% == 0 exit /b 0
echo %1 could not be compiled (code %errorlevel%): the schema has no texts in this language.
exit /b 0

:failed
echo ZEB Diagnostics is not installed: %WHAT% (code %errorlevel%). 1>&2
exit /b 1
