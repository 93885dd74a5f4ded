@echo off
rem Registers Paylodge.dll for every user of this machine, in the kinds of program that the machine runs.
rem Needs administrator rights. Do not move the folder afterwards; unregister.cmd takes it all back.
setlocal
set switches=/s
set done=Registered
if /i "%~1"=="/u" set switches=/s /u
if /i "%~1"=="/u" set done=Unregistered
set status=0

rem A 32-bit command prompt finds the 64-bit programs under another name.
set system=%SystemRoot%\System32
if exist "%SystemRoot%\Sysnative\regsvr32.exe" set system=%SystemRoot%\Sysnative
if not exist "%SystemRoot%\SysWOW64\regsvr32.exe" goto only_32_bit
call :run "%system%\regsvr32.exe" x64
call :run "%SystemRoot%\SysWOW64\regsvr32.exe" x86
exit /b %status%

:only_32_bit
call :run "%system%\regsvr32.exe" x86
exit /b %status%

:run
"%~1" %switches% "%~dp0%~2\Paylodge.dll"
if errorlevel 1 goto failed
echo %done%: %~2\Paylodge.dll
exit /b 0

:failed
set status=1
echo %~2\Paylodge.dll failed. Run this command as an administrator.
exit /b 1
