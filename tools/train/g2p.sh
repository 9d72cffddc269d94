#!/usr/bin/env bash
# Makes the lexicon file that the project ships: first with the built-in rules, then with what is
# learnt from its words in their place.
# usage: g2p.sh BUILD_FOLDER
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
information="Made from the CMU Pronouncing Dictionary, Copyright (C) 1993-2015 Carnegie Mellon University, \
all rights reserved; redistributed under its two-clause BSD licence, see LICENSES.md."
"$1/tools/lexicon/tessarin-make-lexicon" data/en-us.lexicon.txt "$1/rules.lexicon" \
    --comment "CMU Pronouncing Dictionary" --information "$information"
"$1/tools/train/tessarin-train-g2p" "$1/rules.lexicon" --evaluate -o data/en-us.lexicon
