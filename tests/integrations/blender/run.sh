#!/bin/sh
# Runs the add-on in Blender: run.sh TOOL LIBRARY FOLDER. 77 and a reason where Blender is missing.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
if ! command -v blender >/dev/null; then
    echo "integrations.blender skipped: Blender is not installed; ./dev integrations installs it"
    exit 77
fi
[ "$1" != --why ] || exit 0
tool=$1 library=$2 folder=$3
rm -rf "$folder"
mkdir -p "$folder/scripts" "$folder/config"
python3 "$here/../../../integrations/package.py" blender "$folder/tessarin-blender.zip"
export BLENDER_USER_SCRIPTS="$folder/scripts" BLENDER_USER_CONFIG="$folder/config"
export TESSARIN_LIBRARY="$library" TESSARIN_DATA="$here/../../../data"
blender -b --factory-startup --python-exit-code 1 --python "$here/add_on_test.py" -- \
    "$folder/tessarin-blender.zip" "$tool" "$folder"
# With a window, on a screen that is not there: the button, Esc and the panel.
if ! command -v xvfb-run >/dev/null; then
    echo "the test with a window is left out: xvfb-run is not installed"
    exit 0
fi
timeout 200 xvfb-run -a -s "-screen 0 1280x800x24" blender --factory-startup \
    --enable-event-simulate --window-geometry 0 0 1280 800 --python "$here/window_test.py" -- \
    "$folder/tessarin-blender.zip" "$tool" "$folder" >"$folder/window.log" 2>&1 ||
    tail -20 "$folder/window.log"
cat "$folder/window.txt"
grep -qx passed "$folder/window.txt"
