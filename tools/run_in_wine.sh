#!/usr/bin/env bash
# usage: tools/run_in_wine.sh BUILD-FOLDER PROGRAM [ARGUMENTS...]
# Runs a Windows program. Wine's own files are in BUILD-FOLDER/wine, made by the first run. Between runs its server
# stays for two minutes, so that a program starts at once.
set -euo pipefail
mkdir -p "$1"
export WINEPREFIX=$(realpath "$1")/wine WINEARCH=win64 WINEDEBUG=-all
# No window, no menu entry, no .NET, no browser; file names in UTF-8. No desktop: "start" wants one and waits ten
# seconds for it in vain.
export DISPLAY= WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe,explorer.exe=' LC_ALL=C.UTF-8
shift
PATH=$PATH:/usr/lib/wine
wineserver=$(command -v wineserver64 || command -v wineserver)

mkdir -p "$WINEPREFIX"
exec 9>"$WINEPREFIX/lock"
flock 9
if "$wineserver" -p120 9>&- </dev/null >/dev/null 2>&1; then # it says 2 when there is one
    # Its services start with the first program and would keep that one's output open as long as they live.
    first=(wine64 cmd /c exit)
    [ -e "$WINEPREFIX/ready" ] || first=(wine64 wineboot --init)
    "${first[@]}" 9>&- </dev/null >/dev/null 2>&1
    touch "$WINEPREFIX/ready"
fi
flock -u 9
exec 9>&-
# Windows never promises memory that it does not have; wine does, and would fill all of this machine's.
ulimit -d 4000000
exec wine64 "$@"
