@echo off
rem Runs the tests of Paylodge on this machine: a double-click, or "run-tests.cmd TEXT" for what has TEXT in its name.
rem "run-tests.cmd /q" does not wait for a key at the end. What it printed is in test-log.txt afterwards.
setlocal
set wait=pause
if /i "%~1"=="/q" set wait=rem
if /i "%~1"=="/q" shift
if not exist "%~dp0run-tests.exe" goto not_unpacked
if "%~1"=="" goto everything
"%~dp0run-tests.exe" "%~1"
goto end

:everything
"%~dp0run-tests.exe"

:end
set status=%errorlevel%
%wait%
exit /b %status%

:not_unpacked
echo run-tests.exe is not beside this file: unpack the whole zip file first, into a folder of your own.
%wait%
exit /b 2
