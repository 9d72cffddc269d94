#!/usr/bin/env bash
# Runs a build for Windows under Wine: test programs as a whole, and a program in C with a path that is
# not ASCII.
#
# usage: wine_tests.sh BUILD_FOLDER
set -euo pipefail
build=$(cd "$1" && pwd)
source_folder=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=$build/wine WINEDEBUG=-all WINEPATH=$build LC_ALL=C.UTF-8 DISPLAY=
cd "$source_folder" # on the drive that stands for the root, so that the paths of the tests are found
demo=data/demo/echo-test
# The lines of a log end as those of texts do there, this library of tests has fewer patterns, and
# links are not for everyone.
left_out='flog.*:LocalTimeText.*:*Link*'
for program in "$build"/tests/*/*_test.exe; do
    case $program in
        */plain_c_test.exe)
            wine "$program" data "$demo"
            ;;
        *)
            wine "$program" --gtest_brief=1 "--gtest_filter=-$left_out"
            ;;
    esac
done
# A path that is neither short nor ASCII, and that the program gets in the code page.
folder="$build/wine_tést/$(printf 'x%.0s' {1..120})/$(printf 'y%.0s' {1..120})"
rm -rf "$build/wine_tést" && mkdir -p "$folder"
cp "$demo.wav" "$folder/echo-test.wav"
cp "$demo.txt" "$folder/echo-test.txt"
wine "$build/tests/c_api/plain_c_test.exe" data "Z:$folder/echo-test"
rm -rf "$build/wine_tést"
