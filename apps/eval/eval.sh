#!/usr/bin/env bash
# Measures the shipped model, or another: boundaries, words and phonemes on speech that was kept out
# of training, under good and bad conditions; then the mouth, and the speed.
# usage: eval.sh BUILD_FOLDER [CORPUS_FOLDER] [MODEL]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
tool=$1/apps/tessarin/tessarin
corpus=${2:-build/corpus}
model=${3:-data/en-us.model}
[ -e "$corpus/corpus.tsv" ] || python3 apps/train/corpus/collect.py "$corpus"
apps/eval/judge.py "$1" "$corpus" --model "$model"
echo "awb, phones chosen by lexicon and rules:"
apps/eval/boundaries.py "$tool" "$corpus" -- --model "$model"
dialogue=$corpus-dialogue
[ -e "$dialogue/judge/corpus.tsv" ] || python3 apps/train/corpus/dialogue.py "$dialogue"
apps/eval/mouth.py "$corpus" "$dialogue/judge" --tool "$tool" --options "--model $model"
demo=$(basename data/demo/*.wav .wav)
apps/eval/speed.py "$tool" "data/demo/$demo.wav" "data/demo/$demo.txt"
