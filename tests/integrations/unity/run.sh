#!/bin/sh
# Compiles and runs the package for Unity under Mono: run.sh TOOL LIBRARY FOLDER. 77 and a reason where
# Mono is missing.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
root=$here/../../..
if ! command -v mcs >/dev/null || ! command -v mono >/dev/null; then
    echo "integrations.unity skipped: Mono is not installed; ./dev integrations installs it"
    exit 77
fi
[ "$1" != --why ] || exit 0
tool=$1 library=$2 folder=$3
rm -rf "$folder"
mkdir -p "$folder"
cp "$root/data/demo/echo-test.wav" "$folder/demo.wav"
cp "$root/data/demo/echo-test.txt" "$folder/demo.txt"
ln -s "$library" "$folder/libtessarin.so"
cd "$folder"
"$tool" align demo.wav --text-file demo.txt --fps 24 --quantize 900-1100:3 -q -o demo.json \
    -o demo.visemes.csv -o demo.arkit.csv -o demo.vrm.csv -o demo.switches.tsv
"$tool" recognize demo.wav -q -o heard.json
tail -c +45 demo.wav | "$tool" live > live.jsonl
"$tool" transcribe --text 'I paid $5 on May 3rd, 1905.' >transcript.tsv
"$tool" align demo.wav --text-file demo.txt --sentences --format tsv -q >sentences.tsv
python3 "$root/integrations/package.py" unity package.zip
python3 -m zipfile -e package.zip .
package=com.tessarin.mouth
mcs -unsafe -warnaserror -langversion:7.2 -out:binding_test.exe "$here"/*.cs \
    "$package"/Runtime/*.cs "$package"/Editor/*.cs
LD_LIBRARY_PATH=$folder mono binding_test.exe "$(cd "$root/data" && pwd)" "$folder"
