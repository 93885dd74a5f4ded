@echo off
rem Takes back what register.cmd did. Needs administrator rights.
"%~dp0register.cmd" /u
