#!/usr/bin/env bash
# usage: tools/pack_release.sh LINUX-KOR WINDOWS-KOR FOLDER
# Packs the two built programs, each with the examples and the documentation, into FOLDER:
#   kor-VERSION-linux-x86_64.tar.gz and kor-VERSION-windows-x86_64.zip
# Both unpack to one folder in which build/kor (build\kor.exe) runs where it lies.
set -euo pipefail
if [ "${1:-}" = "--help" ]; then
    sed -n '2,5s/^# //p' "$0"
    exit 0
fi
linux_kor=$(realpath "$1")
windows_kor=$(realpath "$2")
mkdir -p "$3"
folder=$(realpath "$3")
cd "$(dirname "$0")/.."

version=$(sed -n 's/^project(kor VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
name=kor-$version
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT

# stage_set SYSTEM PROGRAM FILE STRIP: what one archive holds. Waveforms and texts only, no results of runs.
stage_set() {
    local root=$stage/$1/$name
    mkdir -p "$root/build"
    cp -r models spin-systems sequences docs README.md CHANGELOG.md CONTRIBUTING.md "$root"
    "$4" -o "$root/build/$3" "$2"
    chmod -R u=rwX,go=rX "$root"
}
stage_set linux "$linux_kor" kor strip
stage_set windows "$windows_kor" kor.exe x86_64-w64-mingw32-strip

tar -C "$stage/linux" --sort=name --owner=0 --group=0 --numeric-owner -czf "$folder/$name-linux-x86_64.tar.gz" "$name"
rm -f "$folder/$name-windows-x86_64.zip"
(cd "$stage/windows" && cmake -E tar cf "$folder/$name-windows-x86_64.zip" --format=zip "$name")
echo "$folder/$name-linux-x86_64.tar.gz"
echo "$folder/$name-windows-x86_64.zip"
