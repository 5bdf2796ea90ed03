"""What the benches work on, made without any of the program's code: tapes, SEG Y and SEG D of about so many bytes."""
import os, random, struct

MARK = b""
TRACES = 240          # of a field record
SAMPLES = 1500        # of a SEG Y trace
SEGD_SAMPLES = 3000
SET_TRACES = 999      # of a channel set of the one large field file

def noise(size):
    return random.Random(1).randbytes(size)

def tape_image(path, size, block):
    """A .tpf file: a tape of one file."""
    def item(data):
        marker = 0xFFFFFFFF if data else 0xF0F0F0F0
        return struct.pack("<8I", len(data), 0x1000001, *[0xFFFFFFFF] * 5, marker) + data
    repeated(path, b"1vlt" + bytes(28), item(noise(block)), max(1, size // block), 3 * item(MARK))

def cartridge(path, size, block):
    """A .tap file: a tape of one file of such blocks."""
    length = struct.pack("<I", len(block))
    repeated(path, b"", length + block + length, max(1, size // len(block)), bytes(8))

def repeated(path, head, item, count, tail):
    """The item so many times, written in pieces of some MB."""
    piece = max(1, (4 << 20) // len(item))
    with open(path, "wb") as out:
        out.write(head)
        for _ in range(count // piece):
            out.write(item * piece)
        out.write(item * (count % piece) + tail)

def drive(folder, name, number, medium):
    """A virtual drive, the row `number` of the program's list, with a cartridge in it."""
    with open(os.path.join(folder, name + ".drive"), "w") as out:
        out.write(f"id = {number}\ncartridge = {medium}\n")

def segy(path, size):
    """A line as it was shot, traces of 6,240 bytes with IEEE samples. CDP (byte 21) and offset (37) tell each trace from all
    others; byte 189 counts them. @return how many"""
    count = max(2, size // (240 + 4 * SAMPLES))
    trace_samples = samples(SAMPLES)
    header = bytearray(240)
    struct.pack_into(">HH", header, 114, SAMPLES, 2000)
    binary = bytearray(400)
    struct.pack_into(">HHHHH", binary, 16, 2000, 0, SAMPLES, 0, 5)
    with open(path, "wb", 4 << 20) as out:
        out.write(b"\x40" * 3200 + binary)
        for trace in range(count):
            shot, channel = divmod(trace, TRACES)
            struct.pack_into(">iiii", header, 8, shot + 1, channel + 1, shot + 1, 2 * shot + channel)
            struct.pack_into(">i", header, 36, 50 * channel)
            struct.pack_into(">i", header, 188, trace)
            out.write(header + trace_samples)
    return count

def samples(count):
    """Samples as traces hold them: over some decades, of both signs."""
    chance = random.Random(1)
    return struct.pack(f">{count}f", *(chance.gauss(0, 1) * 10 ** chance.gauss(0, 1.3) for _ in range(count)))

def bcd(number, digits):
    return bytes.fromhex("%0*d" % (digits, number))

def field_file(path, number, size, traces):
    """A SEG D field file of revision 1 with as many channel sets as make about `size` bytes."""
    trace_bytes = 20 + 4 * SEGD_SAMPLES
    sets = min(99, max(1, size // (traces * trace_bytes)))
    one = bytearray(32)
    one[0:4] = bcd(number, 4) + bcd(8058, 4)
    one[10:12] = b"\x21\x10"          # one more general header
    one[22] = 32                      # base scan interval, sixteenths of a millisecond
    one[25:29] = b"\x8f\xff" + bcd(1, 2) + bcd(sets, 2)
    two = bytearray(32)
    two[14:17] = (2 * SEGD_SAMPLES).to_bytes(3, "big")  # record length in milliseconds
    trace_samples = noise(4 * SEGD_SAMPLES)
    with open(path, "wb", 4 << 20) as out:
        out.write(one + two)
        for channels in range(1, sets + 1):
            out.write(bcd(1, 2) + bcd(channels, 2) + bytes(2) + SEGD_SAMPLES.to_bytes(2, "big") + bytes(2)
                      + bcd(traces, 4) + b"\x10" + bytes(21))
        for channels in range(1, sets + 1):
            for channel in range(1, traces + 1):
                out.write(bcd(number, 4) + b"\x01" + bcd(channels, 2) + bcd(channel, 4) + bytes(14) + trace_samples)

def field_files(folder, size):
    """Many small ones."""
    one = TRACES * (20 + 4 * SEGD_SAMPLES)
    for number in range(1, max(2, size // one) + 1):
        field_file(os.path.join(folder, f"f{number:04}.sgd"), number, one, TRACES)
