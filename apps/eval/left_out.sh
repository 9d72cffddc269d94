#!/usr/bin/env bash
# Leaves each voice out of a training of its own and measures the model on it; then measures the
# shipped model on the same sentences of the same voices, which it has heard.
# usage: left_out.sh BUILD_FOLDER [CORPUS_FOLDER]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
programs=$1/apps/train
corpus=${2:-build/corpus}
models=$(mktemp -d)
trap 'rm -rf "$models"' EXIT
"$1/apps/tessarin/tessarin" lexicon export data/en-us.lexicon -o "$models/words"
for voice in slt rms kal16; do
    "$programs/tessarin-train" "$corpus" -o "$models/$voice" --lexicon "$models/words" \
        --without "$voice" --threads "$(nproc)"
    echo "$voice, never heard:"
    "$programs/tessarin-measure" "$models/$voice" "$corpus" "$voice"
    echo "$voice, heard in training, other sentences:"
    "$programs/tessarin-measure" data/en-us.model "$corpus" "$voice"
done
