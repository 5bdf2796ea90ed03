"""Field files as a recorder writes them: SEG D revision 1, one channel set."""
import struct
SAMPLE_BYTES = 4 * 512   # 1.024 s at 2 ms
TRACES = 130

def bcd(number, size):
    return bytes.fromhex("%0*d" % (2 * size, number))

def header(number):
    one = bytearray(32)
    one[0:4] = bcd(number, 2) + bcd(8058, 2)
    one[10:17] = bcd(26, 1) + b"\x11\x23" + bcd(10, 1) + bcd(20, 1) + bcd(30, 1) + bcd(13, 1)
    one[22] = 32                      # base scan interval, sixteenths of a millisecond
    one[25:27] = b"\x80\x10"          # normal record, 01.0 units of 1.024 s
    one[27:29] = bcd(1, 1) + bcd(1, 1)
    two = bytearray(32)
    two[10] = 1                       # revision
    channels = bytearray(32)
    channels[0:2] = bcd(1, 1) + bcd(1, 1)
    channels[4:6] = struct.pack(">H", 512)
    channels[8:10] = bcd(TRACES, 2)
    channels[10] = 0x10
    return bytes(one + two + channels)

def trace(number, channel):
    head = bcd(number, 2) + bcd(1, 1) + bcd(1, 1) + bcd(channel, 2) + bytes(14)
    return head + struct.pack(">512f", *(number + channel / 256 + i for i in range(512)))

def blocks(number):
    return [header(number)] + [trace(number, channel) for channel in range(1, TRACES + 1)]

def cartridge(path, files):
    label = b"   1SD1.0   1FIXED     65536".ljust(128)
    with open(path, "wb") as out:
        for block in [label] + [block for number in files for block in blocks(number) + [b""]] + [b""]:
            length = struct.pack("<I", len(block))
            out.write(length + block + length if block else length)
