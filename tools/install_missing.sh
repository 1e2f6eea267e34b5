#!/usr/bin/env bash
# usage: tools/install_missing.sh PACKAGE... : installs the Debian packages that are not there yet.
# Does nothing, and needs no rights, when all of them are installed.
set -euo pipefail

missing=()
for package in "$@"; do
    state=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
    [ "$state" = "install ok installed" ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -eq 0 ]; then
    as_root=()
elif command -v sudo >/dev/null; then
    as_root=(sudo)
else
    echo "These Debian packages are missing: ${missing[*]}" >&2
    echo "Run this command as root, or install sudo or the packages first." >&2
    exit 1
fi
echo "Installing Debian packages: ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
    >/dev/null
