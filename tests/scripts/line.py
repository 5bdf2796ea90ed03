"""A small seismic line as SEG Y, made and read without any of the program's code."""
import random, struct, sys
HEADERS = 3600
TRACE = 240 + 4 * 250

def make(path, first_line=1000, first_cdp=1):
    """40 in-lines of 60 traces; 100 CDPs with 24 offsets each, shuffled; every trace has samples of its own."""
    order = list(range(2400))
    random.Random(7).shuffle(order)
    with open(path, "wb") as out:
        binary = bytearray(400)
        struct.pack_into(">HHHHH", binary, 16, 2000, 0, 250, 0, 1)
        out.write(b"\x40" * 3200 + binary)
        for place, serial in enumerate(order):
            header = bytearray(240)
            struct.pack_into(">i", header, 20, first_cdp + serial // 24)
            struct.pack_into(">i", header, 36, 50 * (serial % 24) - 600)
            struct.pack_into(">i", header, 188, first_line + place // 60)
            out.write(header + struct.pack(">250I", *(serial * 1000 + i for i in range(250))))

def read(path):
    with open(path, "rb") as file:
        data = file.read()
    assert (len(data) - HEADERS) % TRACE == 0, path + " ends within a trace"
    return data[:HEADERS], [data[i:i + TRACE] for i in range(HEADERS, len(data), TRACE)]

def field(trace, byte):
    return struct.unpack_from(">i", trace, byte - 1)[0]
