"""The speech and the text of the game in the Debian package beneath-a-steel-sky.

`sky.dnr` lists the files of `sky.dsk`: how many there are (u32), then 8 bytes each: the file's
number (u16), where it begins (u24; with bit 23 set, the rest counts 16 bytes), and its size (22
bits) with two flags: bit 22, that the header is dropped, and bit 23, that the file is stored as it
is. All numbers are little-endian. A file has a header of 22 bytes, whose first byte has bit 7 set
where the rest is packed.

A message is said by the speech file of its number, after the header as unsigned bytes. The English
messages of a section are one file: where the lengths begin (u16), where the bits begin (u16), then
for each 32 messages their length together (u16). After these follow the lengths, a byte each.
Lengths count units of 2 bits; a length byte with bit 7 set counts units of 16. The bits of a
message, highest first, lead through the tree of dialogue_tree.tsv.
"""

import functools
import pathlib

import rnc

RATE = 11025
FOLDER = pathlib.Path("/usr/share/scummvm/beneath-a-steel-sky")
TREE = pathlib.Path(__file__).resolve().parent / "dialogue_tree.tsv"
HEADER_BYTES = 22
ENGLISH_TEXTS = 60600
SPEECH_OF_SECTION = [50000 + offset for offset in (0, 600, 1100, 2430, 3380, 4530, 5080, 5230)]
MESSAGES_IN_BLOCK = 32
LONGEST_MESSAGE = 1024
# Lines whose speech file has a number that this divides are never trained on.
KEPT_OUT_EVERY = 5


def is_kept_out(number: int) -> bool:
    return number % KEPT_OUT_EVERY == 0


class Archive:
    def __init__(self, folder: pathlib.Path = FOLDER):
        self.data = (folder / "sky.dsk").read_bytes()
        index = (folder / "sky.dnr").read_bytes()
        count = int.from_bytes(index[:4], "little")
        if len(index) < 4 + 8 * count:
            raise rnc.Damaged(f"sky.dnr: {count} files do not fit its {len(index)} bytes")
        self.entries = {int.from_bytes(index[at:at + 2], "little"): index[at + 2:at + 8]
                        for at in range(4, 4 + 8 * count, 8)}

    def read(self, number: int) -> bytes:
        """A file without its header. The texts have none, and are stored."""
        entry = self.entries[number]
        offset = int.from_bytes(entry[:3], "little")
        if offset >> 23:
            offset = (offset & 0x7FFFFF) << 4
        packing = int.from_bytes(entry[3:], "little")
        size, dropped, stored = packing & 0x3FFFFF, packing >> 22 & 1, packing >> 23
        if offset + size > len(self.data):
            raise rnc.Damaged(f"file {number} ends after the archive")
        file = self.data[offset:offset + size]
        if stored:
            return file if dropped or number >= ENGLISH_TEXTS else file[HEADER_BYTES:]
        content = file[HEADER_BYTES:]
        return rnc.unpack(content) if file[:1] >= b"\x80" and content[:4] == rnc.MAGIC else content


class Tree:
    """Nodes of left child, right child, character; a leaf has no children, and 0 is the end."""

    def __init__(self, lines):
        self.nodes = [tuple(map(int, line.split("\t")))
                      for line in lines if not line.startswith("#")]
        for place, (left, right, _) in enumerate(self.nodes):
            if not (place < left < len(self.nodes) and place < right < len(self.nodes)
                    or left == right == 0):
                raise rnc.Damaged(f"node {place} of the tree leads nowhere")

    def decode(self, data: bytes, bit: int) -> str:
        characters = []
        while len(characters) < LONGEST_MESSAGE:
            node = 0
            while self.nodes[node][0]:
                if bit >> 3 >= len(data):
                    raise rnc.Damaged("a message ends after its file")
                node = self.nodes[node][data[bit >> 3] >> (7 - (bit & 7)) & 1]
                bit += 1
            if self.nodes[node][2] == 0:
                return "".join(characters)
            characters.append(chr(self.nodes[node][2]))
        raise rnc.Damaged("a message without an end")


@functools.cache
def english_tree() -> Tree:
    return Tree(TREE.read_text(encoding="ascii").splitlines())


def read_messages(data: bytes, tree: Tree) -> list[str]:
    """All messages of a section, in order."""
    lengths_at, bits_at = (int.from_bytes(data[at:at + 2], "little") for at in (0, 2))
    blocks = (lengths_at - 4) // 2
    if not 4 <= lengths_at <= bits_at <= len(data):
        raise rnc.Damaged(f"a text file of {len(data)} bytes with wrong offsets")
    messages = []
    block_bit = bits_at * 8
    for block in range(blocks + 1):
        bit = block_bit
        for place in range(lengths_at + block * MESSAGES_IN_BLOCK,
                           min(lengths_at + (block + 1) * MESSAGES_IN_BLOCK, bits_at)):
            messages.append(tree.decode(data, bit))
            length = data[place]
            bit += 16 * (length & 0x7F) if length & 0x80 else 2 * length
        block_bit += 2 * int.from_bytes(data[4 + 2 * block:6 + 2 * block], "little")
    return messages
