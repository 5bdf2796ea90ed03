// The display formats: whole lines to the blank, and every value against printf.
#include "quarlo/dump/dumpformat.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

constexpr bool BIG = true;
constexpr bool LITTLE = false;
constexpr bool SIGNED = false;
constexpr bool UNSIGNED = true;

std::string dumped(const std::string& bytes, const DumpStyle& style, int offset = 0) {
  std::string text;
  formatDump(bytes, offset, style, [&text](const char* lines) { text += std::string(lines) + "\n"; });
  return text;
}

std::string words32(const std::vector<std::uint32_t>& words) {
  return {reinterpret_cast<const char*>(words.data()), words.size() * sizeof(std::uint32_t)};
}

std::string printed(const char* format, auto value) {
  char text[64];
  const int length = std::snprintf(text, sizeof text, format, value);
  return {text, static_cast<std::size_t>(length)};
}

std::string zeroFilled(std::string text, std::size_t width) {
  for (std::size_t i = 0; i < width && text[i] == ' '; ++i) text[i] = '0';
  return text;
}

// ---- lines as they are laid down ----------------------------------------------------------------------------------

TEST(DumpLines, HexadecimalInGroupsOfFour) {
  std::string bytes;
  for (int i = 0; i < 38; ++i) bytes += static_cast<char>(i * 7);
  EXPECT_EQ(dumped(bytes, {DF_HEX}),
            "00000  00070e15 1c232a31 383f464d 545b6269 70777e85 8c939aa1 a8afb6bd c4cbd2d9\n"
            "00032  e0e7eef5 fc03\n");
}

TEST(DumpLines, TextWithPointsForWhatCannotBeShown) {
  std::string ascii(79, 'x');
  ascii += "AB\x1f ~\x7f\x80\xff";
  ascii += '\0';
  EXPECT_EQ(dumped(ascii, {DF_ASCII}), "00000 " + std::string(79, 'x') + "A\n00080 B. ~....\n");
  EXPECT_EQ(dumped("\xc8\xc5\xd3\xd3\xd6\x40\x60\x4a\x05\xff\x80\xf1", {DF_EBCDIC}), "00000 HELLO ~#.  1\n");
}

TEST(DumpLines, IntegersFillWithZerosBeforeTheirSign) {
  const std::string shorts("\x00\x00\xff\xff\xff\xf4\x80\x00\x7f\xff\x12\x34", 12);
  EXPECT_EQ(dumped(shorts, {DF_SHORT, BIG, SIGNED}), "00000 000000 0000-1 000-12 -32768 032767 004660 \n");
  EXPECT_EQ(dumped(shorts, {DF_SHORT, BIG, UNSIGNED}), "00000 00000 65535 65524 32768 32767 04660 \n");
  EXPECT_EQ(dumped(shorts, {DF_SHORT, LITTLE, SIGNED}), "00000 000000 0000-1 0-2817 000128 00-129 013330 \n");
  const std::string longs("\xff\xff\xff\xff\x80\x00\x00\x00\x00\x00\x00\x0c", 12);
  EXPECT_EQ(dumped(longs, {DF_LONG, BIG, SIGNED}), "00000 000000000-1 -2147483648 00000000012 \n");
  EXPECT_EQ(dumped(longs, {DF_LONG, BIG, UNSIGNED}), "00000 4294967295 2147483648 0000000012 \n");
  EXPECT_EQ(dumped(longs, {DF_LONG, LITTLE, UNSIGNED}), "00000 4294967295 0000000128 0201326592 \n");
}

TEST(DumpLines, FloatsInThirteenCharacters) {
  // 1, -118.625, 0 and the largest IBM value, which single precision cannot hold
  const std::string ibm("\x41\x10\x00\x00\xc2\x76\xa0\x00\x00\x00\x00\x00\x7f\xff\xff\xff", 16);
  EXPECT_EQ(dumped(ibm, {DF_IBM_FLOAT}), "00000             1      -118.625             0           inf \n");
  const std::string ieee("\x3f\x80\x00\x00\xc2\xed\x40\x00\x49\x74\x24\x00\x36\x80\x00\x00\x80\x00\x00\x00", 20);
  EXPECT_EQ(dumped(ieee, {DF_IEEE_FLOAT}),
            "00000             1      -118.625         1e+06    3.8147e-06            -0 \n");
  EXPECT_EQ(dumped(std::string("\x00\x00\x80\x3f", 4), {DF_IEEE_FLOAT, LITTLE}), "00000             1 \n");
}

TEST(DumpLines, EachLineCountsOnFromItsFirstByte) {
  EXPECT_EQ(dumped(std::string(5, '\0'), {DF_HEX}, 7), "00007  00000000 00\n");
  EXPECT_EQ(dumped(std::string(36, '\x01'), {DF_SHORT}, 99968),
            "99968 000257 000257 000257 000257 000257 000257 000257 000257 "
            "000257 000257 000257 000257 000257 000257 000257 000257 \n"
            "100000 000257 000257 \n");
  EXPECT_EQ(dumped("\x01", {DF_HEX}, INT_MAX), "2147483647  01\n");
  // Bytes that make no whole value are not shown.
  EXPECT_EQ(dumped("abc", {DF_LONG}), "");
  EXPECT_EQ(dumped(std::string(7, '\0'), {DF_IEEE_FLOAT}), "00000             0 \n");
}

TEST(DumpLines, LongBlocksComeInPiecesWithoutALineLost) {
  const std::string bytes(100000, 'a');
  std::vector<unsigned long> offsets;
  const long counted = formatDump(bytes, 0, {DF_HEX}, [&offsets](const char* piece) {
    std::istringstream lines(piece);
    for (std::string line; std::getline(lines, line);) offsets.push_back(std::stoul(line));
    EXPECT_FALSE(std::string(piece).ends_with('\n'));
  });
  EXPECT_EQ(counted, 3125);
  ASSERT_EQ(offsets.size(), 3125U);
  for (std::size_t line = 0; line < offsets.size(); ++line) ASSERT_EQ(offsets[line], 32 * line);
}

// ---- which bytes --------------------------------------------------------------------------------------------------

TEST(DumpRange, KeepsWithinTheBlock) {
  const auto range = [](DUMP_FORMAT format, int nBytes, int startByte, int dumpBytes) {
    const DumpRange shown = dumpRange(format, nBytes, startByte, dumpBytes);
    return std::pair(shown.first, shown.count);
  };
  using Pair = std::pair<int, int>;
  EXPECT_EQ(range(DF_HEX, 100, 0, 1024), Pair(0, 100));
  EXPECT_EQ(range(DF_HEX, 100, 96, 2), Pair(96, 2));
  EXPECT_EQ(range(DF_IEEE_FLOAT, 100, 96, 1024), Pair(96, 4));
  // One byte fewer for integers: the value at the very end is not shown.
  EXPECT_EQ(range(DF_SHORT, 100, 0, 1024), Pair(0, 99));
  EXPECT_EQ(range(DF_LONG, 100, 96, 1024), Pair(96, 3));
  EXPECT_EQ(range(DF_LONG, 101, 97, 4), Pair(97, 3));
  EXPECT_EQ(range(DF_LONG, 2000, 0, 1024), Pair(0, 1024));
  for (const DUMP_FORMAT format : {DF_HEX, DF_SHORT}) {
    EXPECT_EQ(range(format, 100, 100, 1024).second, 0);
    EXPECT_EQ(range(format, 100, INT_MAX, INT_MAX).second, 0);
    EXPECT_EQ(range(format, 0, 0, 1024).second, 0);
    EXPECT_EQ(range(format, -1, 0, 1024).second, 0);
    EXPECT_EQ(range(format, 100, 0, -5).second, 0);
    EXPECT_EQ(range(format, 100, INT_MIN, 10), Pair(0, 10));
    EXPECT_EQ(range(format, INT_MAX, 0, INT_MAX).second, INT_MAX - (format == DF_SHORT ? 1 : 0));
  }
}

// ---- values against printf ----------------------------------------------------------------------------------------

/// Eight values a line, as the C library prints them.
std::string floatsByPrintf(const std::vector<std::uint32_t>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    float value = 0;
    std::memcpy(&value, &words[i], sizeof value);
    if (i % 8 == 0) text += zeroFilled(printed("%5d ", static_cast<int>(4 * i)), 5);
    text += printed("%13g ", static_cast<double>(value));
    if (i % 8 == 7 || i + 1 == words.size()) text += '\n';
  }
  return text;
}

void expectAsPrintf(const std::vector<std::uint32_t>& words) {
  EXPECT_EQ(dumped(words32(words), {DF_IEEE_FLOAT, LITTLE}), floatsByPrintf(words));
}

std::uint32_t bitsOf(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

TEST(DumpFloats, PrintAsTheCLibraryDoes) {
  std::mt19937 random(20261121);
  for (int round = 0; round < 500; ++round) {
    std::vector<std::uint32_t> words(800);
    for (std::uint32_t& word : words) word = static_cast<std::uint32_t>(random());
    expectAsPrintf(words);
  }
}

TEST(DumpFloats, PrintAsTheCLibraryDoesWhereRoundingIsClose) {
  std::vector<std::uint32_t> words = {0, 1, 2, 0x7fffff, 0x800000, 0x7f7fffff, 0x7f800000, 0x7f800001, 0x7fc00000};
  // Around the powers of ten, and at halves of the sixth digit, which only exact arithmetic can decide.
  for (int e = -45; e <= 38; ++e) {
    const std::uint32_t at = bitsOf(static_cast<float>(std::pow(10.0, e)));
    for (std::uint32_t near = at < 4 ? 0 : at - 4; near <= at + 4; ++near) words.push_back(near);
  }
  for (int i = 0; i < 2000; ++i) {
    words.push_back(bitsOf(static_cast<float>(1000005 + 10 * i)));
    words.push_back(bitsOf(100000.5F + static_cast<float>(i)));
    words.push_back(bitsOf(999.9985F + static_cast<float>(i) * 0.000001F));
    words.push_back(bitsOf(0.5F + static_cast<float>(i) / 1024));
  }
  const std::size_t positive = words.size();
  for (std::size_t i = 0; i < positive; ++i) words.push_back(words[i] | 0x80000000U);
  expectAsPrintf(words);
}

TEST(DumpIntegers, PrintAsTheCLibraryDoes) {
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    const auto word = static_cast<std::uint32_t>(random()) >> (random() % 32);
    const std::uint32_t value = round % 2 != 0 ? word : 0U - word;
    const std::string bytes = words32({value});
    ASSERT_EQ(dumped(bytes, {DF_LONG, LITTLE, SIGNED}),
              "00000 " + zeroFilled(printed("%11d ", static_cast<int>(value)), 11) + "\n");
    ASSERT_EQ(dumped(bytes, {DF_LONG, LITTLE, UNSIGNED}), "00000 " + zeroFilled(printed("%10u ", value), 10) + "\n");
  }
  for (int value = 0; value <= 0xffff; ++value) {
    const std::string bytes = words32({static_cast<std::uint32_t>(value)}).substr(0, 2);
    const auto asSigned = static_cast<short>(value);
    ASSERT_EQ(dumped(bytes, {DF_SHORT, LITTLE, SIGNED}), "00000 " + zeroFilled(printed("%6hd ", asSigned), 6) + "\n");
    ASSERT_EQ(dumped(bytes, {DF_SHORT, LITTLE, UNSIGNED}),
              "00000 " + zeroFilled(printed("%5hu ", static_cast<unsigned short>(value)), 5) + "\n");
  }
}

}  // namespace
