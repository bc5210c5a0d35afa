@echo off
rem Runs the whole suite on a Windows, unattended, and prints one table. It stands in the folder "tests" of the zip that
rem tools/build_windows.sh makes, beside the test programs. The exit code is the number of programs that failed.
setlocal EnableDelayedExpansion
cd /d "%~dp0"
set failed=0
set table=%TEMP%\permora-tests-%RANDOM%.txt
if exist "%table%" del "%table%"
for %%p in (windows_*_test.exe) do (
    echo === %%p
    "%%p" --gtest_brief=1 --gtest_output=json:"%TEMP%\%%~np.json"
    if errorlevel 1 (
        set /a failed+=1
        >>"%table%" echo FAILED  %%~np
    ) else (
        >>"%table%" echo passed  %%~np
    )
    for /f "tokens=2 delims=:, " %%n in ('findstr /b /c:"  \"tests\":" "%TEMP%\%%~np.json"') do >>"%table%" echo         %%n tests
)
echo.
ver
echo.
if exist "%table%" type "%table%"
if not exist "%table%" (echo No test program was found. & exit /b 1)
del "%table%"
exit /b %failed%
