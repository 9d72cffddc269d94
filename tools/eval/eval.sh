#!/usr/bin/env bash
# Measures the shipped model: boundaries on the voice that it was not trained on, and speed.
# usage: eval.sh BUILD_FOLDER [CORPUS_FOLDER]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
tool=$1/tools/tessarin/tessarin
corpus=${2:-build/corpus}
[ -e "$corpus/corpus.tsv" ] || python3 tools/train/corpus/collect.py "$corpus"
echo "phones chosen by lexicon and rules:"
tools/eval/boundaries.py "$tool" "$corpus"
echo "phones known:"
tools/eval/boundaries.py "$tool" "$corpus" --known-phones
echo "phones heard without the text, development prompts:"
tools/eval/phoneme_errors.py "$tool" "$corpus"
demo=$(basename data/demo/*.wav .wav)
tools/eval/speed.py "$tool" "data/demo/$demo.wav" "data/demo/$demo.txt"
