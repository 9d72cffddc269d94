#!/usr/bin/env python3
"""Composes training sentences from a grammar, chosen so that sounds meet in many contexts.

    compose_sentences.py LEXICON COUNT OUTPUT [EXCLUDED ...]

The grammar, sentence_grammar.txt, could make millions of sentences. A pool of them is made, and
one is taken after the other, always the one that adds most: a run of three phonemes is worth the
less the more often the chosen sentences have it already. The sentences of the EXCLUDED files are
never taken. LEXICON is a text, as `tessarin lexicon export` writes it. The same arguments give the
same sentences.
"""

import argparse
import collections
import heapq
import pathlib
import random
import re

POOL_PER_SENTENCE = 12
GRAMMAR = pathlib.Path(__file__).with_name("sentence_grammar.txt")


def read_grammar(text):
    """Symbol name -> list of its forms."""
    grammar = collections.defaultdict(list)
    for line in text.splitlines():
        if not line or line.startswith("#"):
            continue
        if not line.startswith(" "):
            name, line = line.split(" = ", 1)
        grammar[name] += [form.strip() for form in line.split("|") if form.strip()]
    return grammar


def compose(grammar, chance):
    used = set()

    def expand(match):
        forms = grammar[match[1]]
        while (form := chance.choice(forms)) in used:
            pass
        used.add(form)
        return form

    sentence = re.sub(r"<(\w+)>", expand, chance.choice(grammar["sentence"]))
    sentence = re.sub(r"\b([Aa]) (?=[aeioAEIO]|un(?!i)|um|ug)", r"\1n ", sentence)
    return re.sub("[A-Za-z]", lambda first: first[0].upper(), sentence, count=1)


def read_lexicon(lines):
    """Word -> symbols of its preferred pronunciation."""
    lexicon = {}
    for line in lines:
        word, pronunciation = line.rstrip("\n").split("=")
        lexicon.setdefault(word, re.findall(r"[A-Z].|[a-z]", pronunciation))
    return lexicon


def contexts(sentence, lexicon):
    """The runs of three symbols of a sentence, with a pause at its ends and its punctuation."""
    symbols = ["x"]
    for token in re.findall(r"[\w'-]+|[^\w\s]", sentence):
        symbols += lexicon.get(token.upper(), ["x"])
    symbols.append("x")
    return list(zip(symbols, symbols[1:], symbols[2:]))


def choose(pool, count, lexicon):
    """The `count` sentences that together have the most different contexts, in pool order."""
    runs = {sentence: contexts(sentence, lexicon) for sentence in pool}
    seen = collections.Counter()

    def cost(sentence):
        worth = sum(1.0 / (1 + seen[run]) ** 2 for run in runs[sentence])
        return -worth / (8 + len(runs[sentence]))

    # Worth only ever falls, so a sentence whose fresh cost is still the least of all is the best.
    queue = [(cost(sentence), sentence) for sentence in pool]
    heapq.heapify(queue)
    chosen = []
    while len(chosen) < count:
        sentence = queue[0][1]
        fresh = (cost(sentence), sentence)
        if fresh > queue[0]:
            heapq.heapreplace(queue, fresh)
            continue
        heapq.heappop(queue)
        seen.update(runs[sentence])
        chosen.append(sentence)
    order = {sentence: place for place, sentence in enumerate(pool)}
    return sorted(chosen, key=order.__getitem__)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("lexicon")
    parser.add_argument("count", type=int)
    parser.add_argument("output")
    parser.add_argument("excluded", nargs="*")
    arguments = parser.parse_args()

    excluded = set()
    for path in arguments.excluded:
        excluded.update(pathlib.Path(path).read_text(encoding="ascii").splitlines())
    grammar = read_grammar(GRAMMAR.read_text(encoding="ascii"))
    chance = random.Random(1)
    pool = {}
    while len(pool) < arguments.count * POOL_PER_SENTENCE:
        sentence = compose(grammar, chance)
        if sentence not in excluded:
            pool[sentence] = None
    with open(arguments.lexicon, encoding="ascii") as lines:
        chosen = choose(list(pool), arguments.count, read_lexicon(lines))
    pathlib.Path(arguments.output).write_text("\n".join(chosen) + "\n", encoding="ascii")


if __name__ == "__main__":
    main()
