#!/usr/bin/env bash
# Makes again the lexicon file that the project ships: first with the built-in rules, then with what is
# learnt from its words in their place. The words are those of the present file, or of WORDS, a text.
# usage: g2p.sh BUILD_FOLDER [WORDS]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
information="Made from the CMU Pronouncing Dictionary, Copyright (C) 1993-2015 Carnegie Mellon University, \
all rights reserved; redistributed under its two-clause BSD licence, see LICENSES.md."
words=${2:-$1/en-us.words}
[ $# -gt 1 ] || "$1/apps/tessarin/tessarin" lexicon export data/en-us.lexicon -o "$words"
"$1/apps/lexicon/tessarin-make-lexicon" "$words" "$1/rules.lexicon" \
    --comment "CMU Pronouncing Dictionary" --information "$information"
"$1/apps/train/tessarin-train-g2p" "$1/rules.lexicon" --evaluate -o data/en-us.lexicon
