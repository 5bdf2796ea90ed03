#include "quarlo/dump/dumpformat.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "libkyr/byteorder.h"
#include "libkyr/ibmfloat.h"
#include "quarlo/tapelib/formats/charsets.h"

namespace {

// ---- single values, written at `out`; each function answers where the next character goes -----------------------

struct TwoChars {
  char first;
  char second;
};

constexpr auto kDecimalPairs = [] {
  std::array<TwoChars, 100> pairs{};
  for (unsigned i = 0; i < pairs.size(); ++i)
    pairs[i] = {static_cast<char>('0' + i / 10), static_cast<char>('0' + i % 10)};
  return pairs;
}();

constexpr auto kHexPairs = [] {
  constexpr const char* kDigits = "0123456789abcdef";
  std::array<TwoChars, 256> pairs{};
  for (unsigned i = 0; i < pairs.size(); ++i) pairs[i] = {kDigits[i / 16], kDigits[i % 16]};
  return pairs;
}();

char* put(char* out, TwoChars pair) {
  std::memcpy(out, &pair, sizeof pair);
  return out + sizeof pair;
}

/// `value` in `Width` characters, zeros in front; it has no more digits than that.
template <int Width>
char* putDigits(char* out, std::uint32_t value) {
  for (int at = Width - 2; at >= 0; at -= 2, value /= 100) put(out + at, kDecimalPairs[value % 100]);
  if constexpr (Width % 2 != 0) *out = static_cast<char>('0' + value);
  return out + Width;
}

/// Digits of a number that has up to `Most` of them. Sums comparisons, as samples are not to be foretold by branches.
template <int Most>
int digitsOf(std::uint32_t value) {
  int digits = 1;
  std::uint32_t limit = 10;
  for (int i = 1; i < Most; ++i, limit *= 10) digits += value >= limit ? 1 : 0;
  return digits;
}

/// The zeros that fill a field go before the sign: 000-12. A field is wider than its values have digits.
template <int Width>
char* putSigned(char* out, std::int32_t value) {
  const std::uint32_t magnitude =
      value < 0 ? 0U - static_cast<std::uint32_t>(value) : static_cast<std::uint32_t>(value);
  char* end = putDigits<Width>(out, magnitude);
  end[-1 - digitsOf<Width - 1>(magnitude)] = value < 0 ? '-' : '0';
  return end;
}

// ---- floats as printf's "%13g" ------------------------------------------------------------------------------------

constexpr int kFloatWidth = 13;  // what the longest value of single precision needs, and one more
constexpr int kSignificant = 6;

/// 10 to the power of `significant` - 1 - e for the decimal exponents e of single precision, right to some units in the
/// last place.
constexpr int kLowestExponent = -45;
constexpr int kHighestExponent = 39;
constexpr auto kScales = [] {
  std::array<double, kHighestExponent - kLowestExponent + 1> powers{};
  for (int e = kLowestExponent; e <= kHighestExponent; ++e) {
    const int power = kSignificant - 1 - e;
    double& scale = powers[static_cast<std::size_t>(e - kLowestExponent)];
    scale = 1;
    for (int i = 0; i < power; ++i) scale *= 10;
    for (int i = 0; i > power; --i) scale *= 10;
    if (power < 0) scale = 1 / scale;
  }
  return powers;
}();

/// Six significant digits: digits x 10^(exponent - 5).
struct Decimal {
  std::uint32_t digits;
  int exponent;
};

/// Rounds a finite value above 0 to six digits. @return false when it stands so near to the middle of two such numbers
/// that double precision cannot tell which one is nearer
bool roundToSix(double value, Decimal* rounded) {
  constexpr double kLow = 1e5;
  constexpr double kHigh = 1e6;
  constexpr double kLog10Of2 = 0.30102999566398120;
  constexpr double kDoubtful = 1e-6;  // hundreds of times the error of the product
  constexpr int kDoubleBias = 1023;
  const int binary = static_cast<int>(std::bit_cast<std::uint64_t>(value) >> 52) - kDoubleBias;
  // The number of digits of 2^binary, or one too few for the value: never too many.
  int e = static_cast<int>(binary * kLog10Of2 + 1000) - 1000;
  double scaled = value * kScales[static_cast<std::size_t>(e - kLowestExponent)];
  if (scaled >= kHigh) scaled = value * kScales[static_cast<std::size_t>(++e - kLowestExponent)];
  const auto whole = static_cast<std::uint32_t>(scaled);
  const double rest = scaled - whole;
  if (std::abs(rest - 0.5) < kDoubtful || scaled < kLow) return false;
  *rounded = {whole + (rest > 0.5 ? 1U : 0U), e};
  if (rounded->digits == static_cast<std::uint32_t>(kHigh)) *rounded = {static_cast<std::uint32_t>(kLow), e + 1};
  return true;
}

/// Writes a decimal as "%g" does, from the left. @return its end
char* putDecimal(char* out, const Decimal& decimal) {
  char digits[kSignificant];
  putDigits<kSignificant>(digits, decimal.digits);
  int count = kSignificant;
  while (digits[count - 1] == '0') --count;
  const int e = decimal.exponent;
  if (e >= -4 && e < 0) {
    out = std::fill_n(out, 1 - e, '0');
    out[e] = '.';
    return std::copy_n(digits, count, out);
  }
  const bool scientific = e < 0 || e >= kSignificant;
  const int before = scientific ? 1 : e + 1;
  out = std::copy_n(digits, before, out);
  if (count > before) {
    *out++ = '.';
    out = std::copy_n(digits + before, count - before, out);
  }
  if (!scientific) return out;
  *out++ = 'e';
  *out++ = e < 0 ? '-' : '+';
  return put(out, kDecimalPairs[static_cast<std::size_t>(std::abs(e))]);
}

char* putNumber(char* out, float value) {
  Decimal decimal{};
  if (std::isfinite(value) && value != 0 && roundToSix(std::abs(double{value}), &decimal)) {
    if (value < 0) *out++ = '-';
    return putDecimal(out, decimal);
  }
  return std::to_chars(out, out + kFloatWidth, value, std::chars_format::general, kSignificant).ptr;
}

char* putFloat(char* out, float value) {
  char text[kFloatWidth];
  const std::ptrdiff_t length = putNumber(text, value) - text;
  out = std::fill_n(out, kFloatWidth - length, ' ');
  return std::copy_n(text, length, out);
}

// ---- the beginning of a line --------------------------------------------------------------------------------------

/// Five digits, or as many as it takes, and a blank.
char* putOffset(char* out, long offset) {
  constexpr long kFiveDigits = 100000;
  constexpr std::ptrdiff_t kRoom = 10;
  out = offset < kFiveDigits ? putDigits<5>(out, static_cast<std::uint32_t>(offset))
                             : std::to_chars(out, out + kRoom, offset).ptr;
  *out = ' ';
  return out + 1;
}

// ---- the values of one line ---------------------------------------------------------------------------------------

std::uint16_t word16(const char* bytes, bool bigEndian) { return bigEndian ? loadBe16(bytes) : loadLe16(bytes); }
std::uint32_t word32(const char* bytes, bool bigEndian) { return bigEndian ? loadBe32(bytes) : loadLe32(bytes); }

char* hexValues(char* out, const char* bytes, int count, const DumpStyle& /*style*/) {
  constexpr int kGroupBytes = 4;
  for (int i = 0; i < count; ++i) {
    if (i % kGroupBytes == 0) *out++ = ' ';
    out = put(out, kHexPairs[static_cast<unsigned char>(bytes[i])]);
  }
  return out;
}

constexpr char printable(int code) { return code < ' ' || code >= 127 ? '.' : static_cast<char>(code); }

using CharTable = std::array<char, 256>;

CharTable asciiTable() {
  CharTable table;
  for (unsigned code = 0; code < table.size(); ++code) table[code] = printable(static_cast<int>(code));
  return table;
}

CharTable ebcdicTable() {
  int a2e[kA2eTableSize];
  int e2a[kE2aTableSize];
  initascebc(a2e, e2a);
  CharTable table;
  std::ranges::transform(e2a, table.begin(), printable);
  return table;
}

char* textValues(char* out, const char* bytes, int count, const DumpStyle& style) {
  static const CharTable ascii = asciiTable();
  static const CharTable ebcdic = ebcdicTable();
  const CharTable& table = style.format == DF_EBCDIC ? ebcdic : ascii;
  return std::transform(bytes, bytes + count, out,
                        [&table](char byte) { return table[static_cast<unsigned char>(byte)]; });
}

char* shortValues(char* out, const char* bytes, int count, const DumpStyle& style) {
  for (int i = 0; i < count; ++i, bytes += 2) {
    const std::uint16_t word = word16(bytes, style.bigEndian);
    out = style.unSignedInt ? putDigits<5>(out, word) : putSigned<6>(out, static_cast<std::int16_t>(word));
    *out++ = ' ';
  }
  return out;
}

char* longValues(char* out, const char* bytes, int count, const DumpStyle& style) {
  for (int i = 0; i < count; ++i, bytes += 4) {
    const std::uint32_t word = word32(bytes, style.bigEndian);
    out = style.unSignedInt ? putDigits<10>(out, word) : putSigned<11>(out, static_cast<std::int32_t>(word));
    *out++ = ' ';
  }
  return out;
}

char* floatValues(char* out, const char* bytes, int count, const DumpStyle& style) {
  const bool ibm = style.format == DF_IBM_FLOAT;
  for (int i = 0; i < count; ++i, bytes += 4) {
    const std::uint32_t word = word32(bytes, style.bigEndian);
    out = putFloat(out, ibm ? ibmToIeee(word) : std::bit_cast<float>(word));
    *out++ = ' ';
  }
  return out;
}

// ---- lines --------------------------------------------------------------------------------------------------------

struct Layout {
  int valueBytes;
  int valuesPerLine;
  char* (*values)(char* out, const char* bytes, int count, const DumpStyle& style);
};

constexpr std::array<Layout, dumpFormats.size()> kLayouts = {{
    {1, 32, hexValues},
    {1, 80, textValues},
    {1, 80, textValues},
    {2, 16, shortValues},
    {4, 8, longValues},
    {4, 8, floatValues},
    {4, 8, floatValues},
}};

/// The widest line: an offset of ten digits, its blank, sixteen short integers of seven characters, the newline.
constexpr int kLineRoom = 128;
constexpr int kLinesAtOnce = 256;

}  // namespace

DumpRange dumpRange(DUMP_FORMAT format, int nBytes, int startByte, int dumpBytes) {
  const int first = std::max(startByte, 0);
  const long left = long{nBytes} - first - (isInteger(format) ? 1 : 0);
  return {first, static_cast<int>(std::max(std::min(left, long{dumpBytes}), 0L))};
}

long formatDump(std::span<const char> bytes, int offset, const DumpStyle& style, const LineTaker& take) {
  const Layout& layout = kLayouts[static_cast<std::size_t>(style.format)];
  const int lineBytes = layout.valueBytes * layout.valuesPerLine;
  std::array<char, std::size_t{kLineRoom} * kLinesAtOnce> text;  // written before it is read
  char* out = text.data();
  long lines = 0;
  auto left = static_cast<long>(bytes.size()) / layout.valueBytes;
  while (left > 0) {
    const int count = static_cast<int>(std::min<long>(left, layout.valuesPerLine));
    const long place = lines * lineBytes;
    out = layout.values(putOffset(out, offset + place), bytes.data() + place, count, style);
    left -= count;
    ++lines;
    if (left == 0 || lines % kLinesAtOnce == 0) {
      *out = '\0';
      take(text.data());
      out = text.data();
    } else {
      *out++ = '\n';
    }
  }
  return lines;
}
