/// The display formats of the tape dump and the file dump: bytes in, lines of text out. No windows, no files.
///
/// docs/dump-formats.md shows each format with an example.
#pragma once

#include <array>
#include <functional>
#include <span>

/// The display formats in the order of their list.
enum DUMP_FORMAT : int { DF_HEX, DF_ASCII, DF_EBCDIC, DF_SHORT, DF_LONG, DF_IBM_FLOAT, DF_IEEE_FLOAT };

/// Their names.
constexpr std::array<const char*, 7> dumpFormats = {"Hexadecimal",  "ASCII",     "EBCDIC",    "Short Integer",
                                                    "Long Integer", "IBM Float", "IEEE Float"};

constexpr bool isInteger(DUMP_FORMAT format) { return format == DF_SHORT || format == DF_LONG; }
constexpr bool hasByteOrder(DUMP_FORMAT format) { return format >= DF_SHORT; }

struct DumpStyle {
  DUMP_FORMAT format = DF_HEX;
  bool bigEndian = true;     ///< the data's byte order; for integers and floats
  bool unSignedInt = false;  ///< for integers
};

/// Bytes of a block.
struct DumpRange {
  int first;
  int count;
};

/// The bytes that a tape dump shows of a block of `nBytes`: at most `dumpBytes` from `startByte` on (a negative one
/// counts as 0). The last byte behind `startByte` does not count for the integer formats: a value that ends exactly
/// with its block is not shown. `count` is 0 or more.
DumpRange dumpRange(DUMP_FORMAT format, int nBytes, int startByte, int dumpBytes);

/// Receives some lines with newlines between them, none at the end, and a zero byte behind; valid during the call only.
using LineTaker = std::function<void(const char* lines)>;

/// Formats bytes and hands the lines to `take`, some hundred at a time. Each line begins with the offset of its first
/// value; the first line's is `offset`. Bytes behind the last whole value are not shown.
/// @return the number of lines
long formatDump(std::span<const char> bytes, int offset, const DumpStyle& style, const LineTaker& take);
