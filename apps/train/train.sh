#!/usr/bin/env bash
# Collects the speech, trains the models, the one that aligns and the one that hears, and counts the
# statistics that the project ships.
# usage: train.sh BUILD_FOLDER [CORPUS_FOLDER]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
programs=$1/apps/train
corpus=${2:-build/corpus}
python3 apps/train/corpus/collect.py "$corpus"
words=$1/en-us.words
"$1/apps/tessarin/tessarin" lexicon export data/en-us.lexicon -o "$words"
"$programs/tessarin-train" "$corpus" -o data/en-us.model --lexicon "$words" \
    --threads "$(nproc)"
"$programs/tessarin-train" "$corpus" -o data/en-us-hearing.model --lexicon "$words" \
    --gaussians 31 --noisy 60 --text-copies 20 --boundary-rounds 0 --phone-rounds 3 \
    --threads "$(nproc)"
prompts=$1/prompts.txt
awk -F '\t' '$3 == "train" && $4 == "text" { print $5 }' "$corpus/corpus.tsv" >"$prompts"
"$programs/tessarin-trigrams" "$words" data/sentences/{composed,written}.txt "$prompts" \
    -o data/en-us.trigrams
"$programs/tessarin-measure" data/en-us.model "$corpus"
