#!/usr/bin/env bash
# Puts data, papers and a program into one archive: for linux the static tool, for windows the library
# with its headers.
#
# usage: archive.sh linux|windows BUILD_FOLDER
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
target=$1
build=$2
version=$(sed -n 's/^project(tessarin VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
name=tessarin-$version-$target-$([ "$target" = windows ] && echo x86_64 || uname -m)
folder=$build/$name
rm -rf "$folder" && mkdir -p "$folder/share/tessarin"
cp -r data/. "$folder/share/tessarin"
rm -rf "$folder/share/tessarin/sentences"
cp README.md CHANGELOG.md LICENSE "$folder"
cp -r docs "$folder"
if [ "$target" = windows ]; then
    strip=x86_64-w64-mingw32-strip
    mkdir "$folder/bin" "$folder/lib"
    cp -r include "$folder"
    cp "$build/libtessarin.dll.a" "$folder/lib"
    $strip -o "$folder/bin/tessarin.dll" "$build/tessarin.dll"
    (cd "$build" && rm -f "$name.zip" && cmake -E tar cf "$name.zip" --format=zip "$name")
    echo "$build/$name.zip"
else
    cp "build/readers/$target/LICENSES-of-readers.txt" "$folder"
    strip -o "$folder/tessarin" "$build/apps/tessarin/tessarin"
    tar -C "$build" -czf "$build/$name.tar.gz" "$name"
    echo "$build/$name.tar.gz"
fi
