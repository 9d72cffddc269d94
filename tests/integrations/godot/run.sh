#!/bin/sh
# Runs the plug-in in Godot 3: run.sh TOOL LIBRARY FOLDER. 77 and a reason where Godot is missing.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
root=$here/../../..
for program in godot3 godot3-server xvfb-run; do
    if ! command -v "$program" >/dev/null; then
        echo "integrations.godot skipped: $program is not installed; ./dev integrations installs it"
        exit 77
    fi
done
[ "$1" != --why ] || exit 0
tool=$1 folder=$3
rm -rf "$folder"
mkdir -p "$folder/home"
cp -r "$here/project" "$folder/project"
cd "$folder"
export HOME="$folder/home" XDG_DATA_HOME="$folder/home" XDG_CONFIG_HOME="$folder/home" \
    XDG_CACHE_HOME="$folder/home"
python3 "$root/integrations/package.py" godot godot.zip
python3 -m zipfile -e godot.zip .
cp -r godot3/addons project/addons
mkdir project/recordings
for name in line recordings/said recordings/without-a-text; do
    cp "$root/data/demo/echo-test.wav" "project/$name.wav"
done
cp "$root/data/demo/echo-test.txt" project/line.txt
cp project/line.txt project/recordings/said.txt
"$tool" align project/line.wav --text-file project/line.txt --fps 24 -q -o project/line.json \
    -o project/line.visemes.csv
echo "$tool" >project/program.txt
timeout 120 godot3-server --path project -s scripts_test.gd

# The editor imports when it has scanned the project, and does not end by itself.
xvfb-run -a timeout 100 godot3 --editor --path project --video-driver GLES2 --audio-driver Dummy \
    >editor.log 2>&1 &
editor=$!
seconds=0
until ls project/.import/line.json-*.md5 >/dev/null 2>&1 || [ $seconds -ge 90 ]; do
    sleep 1
    seconds=$((seconds + 1))
done
kill "$editor" 2>/dev/null || true
wait "$editor" || true
grep -i "error" editor.log | grep -i tessarin && exit 1
timeout 60 godot3-server --path project -s imported_test.gd
