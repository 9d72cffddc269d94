"""The phoneme alphabet of the acoustic model, and the road to it from ARPAbet.

Dictionaries and synthesisers name American English phones in ARPAbet or in something close to
it. The model has one label for a phone whatever its stress: a single lower-case letter, or an
upper-case letter and the character after it, so that labels can be written without separators.
"""

SYMBOLS = (
    "x m p b v f ZH CH j SH s z DH TH t NG g k h r ER w UH UW AW IY y IH AE AY EY EH n d l AA AH "
    "AO OW OY"
).split()

SILENCE = "x"

_RENAMED = {"HH": "h", "JH": "j", "AX": "AH", "AXR": "ER", "IX": "IH", "PAU": SILENCE}


def from_arpabet(phone):
    """The label of an ARPAbet phone in either case, with or without a stress digit."""
    name = phone.upper().rstrip("012")
    symbol = _RENAMED.get(name, name if len(name) == 2 else name.lower())
    if symbol not in SYMBOLS:
        raise ValueError(f"phone {phone!r} has no label")
    return symbol
