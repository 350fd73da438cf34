"""Writers for PNG, ICO and GIF. Pictures are rows of (red, green, blue, alpha) bytes."""

import struct
import zlib

GIF_MATTE = (248, 248, 248)  # between a white page and a light grey one
GIF_THRESHOLD = 40  # alpha below this becomes transparent: GIF knows no half-transparent pixel


class BitWriter:
    def __init__(self):
        self.bytes = bytearray()
        self.value = self.count = 0

    def put(self, value, bits):
        """Least significant bit first, as both GIF and deflate have it."""
        self.value |= value << self.count
        self.count += bits
        while self.count >= 8:
            self.bytes.append(self.value & 255)
            self.value >>= 8
            self.count -= 8

    def finish(self):
        if self.count:
            self.put(0, 8 - self.count)
        return bytes(self.bytes)


def put_huffman(out, symbol):
    """A literal or length symbol in deflate's fixed code, whose bits go out most significant first."""
    if symbol < 144:
        code, bits = 0x30 + symbol, 8
    elif symbol < 256:
        code, bits = 0x190 + symbol - 144, 9
    elif symbol < 280:
        code, bits = symbol - 256, 7
    else:
        code, bits = 0xC0 + symbol - 280, 8
    out.put(int(format(code, f"0{bits}b")[::-1], 2), bits)


def scale_table(first_symbol, base, extra_step, count):
    """Deflate's (symbol, lowest value, extra bits): values per symbol double every `extra_step` symbols."""
    rows, value = [], base
    for index in range(count):
        extra = max(index // extra_step - 1, 0)
        rows.append((first_symbol + index, value, extra))
        value += 1 << extra
    return rows


LENGTHS = scale_table(257, 3, 4, 28) + [(285, 258, 0)]
DISTANCES = scale_table(0, 1, 2, 30)


def put_match(out, length, distance):
    symbol, base, extra = next(row for row in reversed(LENGTHS) if row[1] <= length)
    put_huffman(out, symbol)
    out.put(length - base, extra)
    symbol, base, extra = next(row for row in reversed(DISTANCES) if row[1] <= distance)
    out.put(int(format(symbol, "05b")[::-1], 2), 5)
    out.put(distance - base, extra)


LONGEST_MATCH = 258
CANDIDATES = 16


def find_match(data, position, starts):
    """Length and distance of the longest earlier occurrence among the latest candidates."""
    best, distance = 0, 0
    limit = min(LONGEST_MATCH, len(data) - position)
    for start in reversed(starts[-CANDIDATES:]):
        if position - start > 32768:
            break
        length = 0
        while length < limit and data[start + length] == data[position + length]:
            length += 1
        if length > best:
            best, distance = length, position - start
        if best == limit:
            break
    return best, distance


def deflate(data):
    """A zlib stream of our own: zlib versions differ in their output, and the files must not."""
    out = BitWriter()
    out.put(1, 1)  # the last block
    out.put(1, 2)  # fixed codes
    seen, position = {}, 0
    while position < len(data):
        length, distance = find_match(data, position, seen.get(data[position:position + 3], []))
        if length >= 3:
            put_match(out, length, distance)
        else:
            put_huffman(out, data[position])
            length = 1
        for index in range(position, position + length):
            seen.setdefault(data[index:index + 3], []).append(index)
        position += length
    put_huffman(out, 256)
    return b"\x78\x01" + out.finish() + struct.pack(">I", zlib.adler32(data))


def png(rows):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    lines, above = bytearray(), bytes(4 * len(rows[0]))
    for row in rows:
        line = b"".join(bytes(pixel) for pixel in row)
        lines += b"\x02" + bytes((value - up) & 255 for value, up in zip(line, above))
        above = line
    header = struct.pack(">IIBBBBB", len(rows[0]), len(rows), 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", deflate(bytes(lines)))
            + chunk(b"IEND", b""))


def ico(pictures):
    images = [png(rows) for rows in pictures]
    offset = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for rows, image in zip(pictures, images):
        size = len(rows) & 255  # a size of 256 is written as 0
        directory += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(image), offset)
        offset += len(image)
    return directory + b"".join(images)


def bmp(rows):
    """Rows of red, green, blue, as a picture without transparency."""
    lines = bytearray()
    for row in reversed(rows):
        line = b"".join(bytes((blue, green, red)) for red, green, blue in row)
        lines += line + bytes(-len(line) % 4)
    offset = 14 + 40
    header = struct.pack("<2sIHHI", b"BM", offset + len(lines), 0, 0, offset)
    return header + struct.pack("<IiiHHIIiiII", 40, len(rows[0]), len(rows), 1, 24, 0, len(lines), 2835, 2835, 0, 0) + lines


def lzw(indices, code_size):
    out = BitWriter()
    clear, end = 1 << code_size, (1 << code_size) + 1
    table, bits = {(i,): i for i in range(clear)}, code_size + 1
    out.put(clear, bits)
    following, text = end + 1, ()
    for index in indices:
        longer = text + (index,)
        if longer in table:
            text = longer
            continue
        out.put(table[text], bits)
        table[longer] = following
        following += 1
        if following > 1 << bits:
            bits += 1
        if following == 4096:
            out.put(clear, bits)
            table, bits, following = {(i,): i for i in range(clear)}, code_size + 1, end + 1
        text = (index,)
    out.put(table[text], bits)
    out.put(end, bits)
    return out.finish()


def flatten(rows, matte=GIF_MATTE, threshold=GIF_THRESHOLD):
    """Opaque colours over the matte; None where the picture is thinner than the threshold."""
    return [[tuple((c * a + m * (255 - a) + 127) // 255 for c, m in zip(colour, matte)) if a >= threshold else None
             for *colour, a in row] for row in rows]


def palette_of(flat):
    """At most 255 colours, the most frequent ones; a colour left out maps to its nearest neighbour."""
    counts = {}
    for row in flat:
        for colour in row:
            if colour is not None:
                counts[colour] = counts.get(colour, 0) + 1
    ordered = sorted(counts, key=lambda colour: (-counts[colour], colour))
    kept = ordered[:255]
    index = {colour: number + 1 for number, colour in enumerate(kept)}
    for colour in ordered[255:]:
        nearest = min(kept, key=lambda other: (sum((a - b) ** 2 for a, b in zip(colour, other)), other))
        index[colour] = index[nearest]
    return kept, index


def gif(rows):
    flat = flatten(rows)
    palette, index = palette_of(flat)
    colours = b"".join(bytes(colour) for colour in [GIF_MATTE] + palette).ljust(768, b"\0")
    data = lzw([0 if colour is None else index[colour] for row in flat for colour in row], 8)
    blocks = b"".join(bytes([len(data[i:i + 255])]) + data[i:i + 255] for i in range(0, len(data), 255))
    width, height = len(rows[0]), len(rows)
    return (b"GIF89a" + struct.pack("<HHBBB", width, height, 0xF7, 0, 0) + colours
            + b"\x21\xF9\x04" + struct.pack("<BHBB", 1, 0, 0, 0)
            + b"\x2C" + struct.pack("<HHHHB", 0, 0, width, height, 0) + b"\x08" + blocks + b"\x00\x3B")
