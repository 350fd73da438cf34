@echo off
rem Tests Calvane on this computer and writes report.txt. It needs Windows 7 or later and nothing else.
rem
rem     check.cmd               every suite; leave the computer alone meanwhile
rem     check.cmd SUITE ...     some of those that tests\suites.txt names
rem     check.cmd /putback      only puts back what an interrupted run has left
rem
rem Programs are registered for the user alone. What the tests change of his is saved first and put back at the end:
rem Calvane's settings, the registration of Calvane and its engine, and how he writes numbers. What an interrupted run
rem has left is put back by the next one, whatever folder that is started from.
setlocal
cd /d "%~dp0"
set saved=%LOCALAPPDATA%\CalvaneCheck
rem On 64-bit Windows programs of 32 bits, as these are, see another registry than those of 64 bits.
set reg="%SystemRoot%\System32\reg.exe"
set reg64=
if exist "%SystemRoot%\SysWOW64\reg.exe" set reg64=%reg%
if defined reg64 set reg="%SystemRoot%\SysWOW64\reg.exe"
set result=2

if exist "%saved%\complete" call :putback
if exist "%saved%\complete" goto end
if /i "%~1"=="/putback" set result=0
if /i "%~1"=="/putback" goto end

tests\run_suites.exe /ready
if errorlevel 2 goto end
rem Wine does not find the classes of a user: there the programs are registered for the machine.
if errorlevel 1 (set hives=HKCU HKLM) else (set hives=HKCU)

call :save
if not exist "%saved%\complete" echo Nothing was run: what is to be put back cannot be saved in %saved%.
if not exist "%saved%\complete" goto end
rem What tests leave behind goes with the folder.
set TEMP=%CD%\temporary
set TMP=%TEMP%
mkdir "%TEMP%" 2>nul
rem This registers the programs, for the user alone, and runs the tests.
tests\run_suites.exe %*
set result=%errorlevel%
rmdir /s /q "%TEMP%"
call :putback
if not %result%==2 echo The report is %CD%\report.txt

:end
rem Whoever has clicked on this file wants to read.
if "%~1"=="" pause
exit /b %result%

:save
if exist "%saved%" rmdir /s /q "%saved%"
mkdir "%saved%"
set failed=
call :each :savekey
if defined failed exit /b
>"%saved%\hives" echo %hives%
>"%saved%\complete" echo yes
exit /b

:putback
echo Your own settings and registration are put back.
set /p hives=<"%saved%\hives"
SentrelConfig.exe /UnregServer
SentrelStandin.exe /UnregServer
%reg% delete HKCU\Software\CalvaneTests /f >nul 2>&1
set failed=
call :each :putkey
if defined failed echo %failed% was not put back. It stays saved in %saved%.
if not defined failed rmdir /s /q "%saved%"
exit /b

rem Calls a label with each key, and with the name of the file that the key is saved in.
:each
call %1 "HKCU\Software\Calvane" settings
call %1 "HKCU\Control Panel\International" numbers
if not "%hives%"=="HKCU" call %1 "HKLM\Software\Microsoft\Windows\CurrentVersion\Run" run
for %%h in (%hives%) do call :classes %1 %%h
exit /b

:classes
call %1 "%2\Software\Classes\SentrelConfig.ConfigControl" %2-1
call %1 "%2\Software\Classes\Sentrel1.SentrelApp" %2-2
call %1 "%2\Software\Classes\SentrelStandin.Control" %2-3
call %1 "%2\Software\Classes\CLSID\{39347D95-4F06-40BC-B03E-2E65DCF26D8E}" %2-4
call %1 "%2\Software\Classes\CLSID\{70FE6483-D1DD-4005-9762-B37675DDCBBA}" %2-5
call %1 "%2\Software\Classes\CLSID\{1DEAABBD-D8F2-4BB5-91C3-ED68E5009EB0}" %2-6
call %1 "%2\Software\Classes\TypeLib\{5260E1ED-AE71-44D7-8381-905CDE9DC4A2}" %2-7
call %1 "%2\Software\Classes\TypeLib\{82D7503D-C877-4938-BF10-1E3FEB617B83}" %2-8
call %1 "%2\Software\Classes\TypeLib\{9B9F3833-D69F-4187-8E9A-51C910F374E7}" %2-9
call :interfaces %1 %2 %2
if not defined reg64 exit /b
rem Those of a type library are registered for programs of 64 bits as well.
set reg32=%reg%
set reg=%reg64%
call :interfaces %1 %2 %2-64
set reg=%reg32%
exit /b

:interfaces
call %1 "%2\Software\Classes\Interface\{00433DB0-573D-4801-B12A-0EB32A036708}" %3-10
call %1 "%2\Software\Classes\Interface\{E9A7E6D8-9C6E-4DEC-AE73-04456755D3B4}" %3-11
call %1 "%2\Software\Classes\Interface\{A833FC8B-B3F9-4D85-B884-CE90AF699049}" %3-12
call %1 "%2\Software\Classes\Interface\{2BB53B06-4411-48AB-BC23-EE543279A0C0}" %3-13
call %1 "%2\Software\Classes\Interface\{3F9A17F1-A228-46E4-AEE9-DF98F778B068}" %3-14
call %1 "%2\Software\Classes\Interface\{AE855C55-DB37-4765-8AE6-57365E7CF15F}" %3-15
call %1 "%2\Software\Classes\Interface\{FE5754DD-BF14-449D-947B-0D20D00D3CDF}" %3-16
exit /b

:savekey
%reg% query %1 >nul 2>&1
if errorlevel 1 exit /b
%reg% export %1 "%saved%\%2.reg" /y >nul 2>&1
if errorlevel 1 set failed=%1
exit /b

rem The user has always a way of writing numbers: the saved values replace those that are there.
:putkey
if not %2==numbers %reg% delete %1 /f >nul 2>&1
if not exist "%saved%\%2.reg" exit /b
%reg% import "%saved%\%2.reg" >nul 2>&1
if errorlevel 1 set failed=%1
exit /b
