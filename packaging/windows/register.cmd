@echo off
rem Registers Vorlent_Mozilla.ocx where it lies; with /u takes that back. Needs the rights of an administrator.
setlocal
set component=%~dp0Vorlent_Mozilla.ocx
if /i "%~1"=="/u" (regsvr32 /s /u "%component%") else (regsvr32 /s "%component%")
if errorlevel 1 (
  echo Vorlent_Mozilla.ocx could not be registered: run this as administrator.
  exit /b 1
)
