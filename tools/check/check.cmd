@echo off
if exist "%~dp0tests\check.exe" goto found
echo Unzip the whole archive first: %~dp0tests\check.exe is missing.
pause
exit /b 1
:found
"%~dp0tests\check.exe" %*
