@echo off
rem Removes what install.cmd has set up. Results, log and trace stay in the data folder, and so do these files.
rem Run it as an administrator.
setlocal
set "HERE=%~dp0"
set "KEY=HKLM\SOFTWARE\Veltrane\Halvern\ZEB\ZebDiag"
set "LEFT="
if not defined MOFCOMP set "MOFCOMP=mofcomp"

rem The schema's texts in other languages. Any that stay do no harm.
pushd "%HERE%."
for %%f in (zebdiag-remove-*.mof) do %MOFCOMP% "%HERE%%%f" >nul 2>&1
popd
rem The schema before the provider: whoever asks for a class would start a provider that is going.
%MOFCOMP% "%HERE%zebdiag-remove.mof"
if not %errorlevel% == 0 set "LEFT=%LEFT% schema"
start "" /wait "%HERE%Drevok.EXE" /UnregServer
if not %errorlevel% == 0 set "LEFT=%LEFT% provider"
regsvr32 /s /u "%HERE%Vorl.dll"
if not %errorlevel% == 0 set "LEFT=%LEFT% agent"
reg delete "%KEY%" /f >nul 2>&1
reg query "%KEY%" >nul 2>&1
if %errorlevel% == 0 set "LEFT=%LEFT% settings"

if not defined LEFT goto removed
echo Not removed:%LEFT%. Run this as an administrator, again if need be. 1>&2
exit /b 1

:removed
echo ZEB Diagnostics is removed. Results and logs are still in %ProgramData%\Veltrane\ZEB.
exit /b 0
