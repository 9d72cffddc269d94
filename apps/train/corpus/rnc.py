"""Unpacks RNC method 1, the packing of many games of the 1990s.

A file begins with `RNC` and 1, then big-endian the unpacked and the packed size (u32 each) and two
checksums (u16 each), and two bytes that only matter when a file is unpacked in place. Bits follow,
taken from 16-bit little-endian words, lowest first, a word being fetched when its first bit is
wanted; the last one may be half. Literal bytes lie between the words. Two bits of flags come first.
Then, until the unpacked size is reached, blocks: three prefix codes (for numbers of literals, for
distances, for lengths), the number of turns (16 bits), and the turns: a number of literals, the
literals, and, except in the last turn, a distance less 1 and a length less 2 of what is repeated.
"""

MAGIC = b"RNC\1"
HEADER_BYTES = 18
LARGEST = 1 << 24


class Damaged(ValueError):
    """The bytes are not what the format says."""


class _Bits:
    def __init__(self, data: bytes, at: int):
        self.data, self.at = data, at
        self.bits = self.count = 0

    def fetch(self) -> None:
        if self.at >= len(self.data):
            raise Damaged("the packed data end too early")
        self.bits |= int.from_bytes(self.data[self.at:self.at + 2], "little") << self.count
        self.count += 16
        self.at += 2

    def read(self, count: int) -> int:
        while self.count < count:
            self.fetch()
        value = self.bits & ((1 << count) - 1)
        self.bits >>= count
        self.count -= count
        return value

    def literals(self, count: int) -> bytes:
        if count and self.at + count > len(self.data):
            raise Damaged("the packed data end too early")
        self.at += count
        return self.data[self.at - count:self.at]

    def number(self, code: "_Code") -> int:
        """A symbol of the code, and the bits that it asks for: the highest one is implied."""
        look = self.bits
        if self.count < code.longest:
            look |= int.from_bytes(self.data[self.at:self.at + 2], "little") << self.count
        length, symbol = code.table[look & code.mask]
        if length == 0:
            raise Damaged("a code that stands for nothing")
        if length > self.count:
            self.fetch()
        self.bits >>= length
        self.count -= length
        if symbol < 2:
            return symbol
        return 1 << (symbol - 1) | self.read(symbol - 1)


class _Code:
    """Codes of equal length follow each other in the order of their symbols; their highest bit
    comes first. The table is indexed by the next `longest` bits as they lie, lowest first."""

    def __init__(self, source: _Bits):
        lengths = [source.read(4) for _ in range(source.read(5))]
        self.longest = max(lengths, default=0)
        self.mask = (1 << self.longest) - 1
        self.table = [(0, 0)] * (1 << self.longest)
        code = 0
        for length in range(1, self.longest + 1):
            for symbol, own in enumerate(lengths):
                if own != length:
                    continue
                if code >> length:
                    raise Damaged("more codes than fit")
                first = int(f"{code:0{length}b}"[::-1], 2)
                for entry in range(first, 1 << self.longest, 1 << length):
                    self.table[entry] = (length, symbol)
                code += 1
            code <<= 1


def unpack(packed: bytes) -> bytes:
    if len(packed) < HEADER_BYTES or packed[:4] != MAGIC:
        raise Damaged("not packed by RNC method 1")
    size = int.from_bytes(packed[4:8], "big")
    if size > LARGEST:
        raise Damaged(f"an unpacked size of {size} bytes")
    source = _Bits(packed, HEADER_BYTES)
    source.read(2)
    out = bytearray()
    while len(out) < size:
        raw, distances, lengths = _Code(source), _Code(source), _Code(source)
        turns = source.read(16)
        if turns == 0:
            raise Damaged("a block of nothing")
        for turn in range(turns):
            out += source.literals(source.number(raw))
            if turn == turns - 1:
                break
            distance = source.number(distances) + 1
            length = source.number(lengths) + 2
            if distance > len(out):
                raise Damaged("repeats what is before the beginning")
            start = len(out) - distance
            if distance >= length:
                out += out[start:start + length]
            else:
                out += (out[start:] * (length // distance + 1))[:length]
            if len(out) > size:
                break
    if len(out) != size:
        raise Damaged("more data than the unpacked size")
    return bytes(out)
