// Header fields, gain codes, BCD digits and the character tables.
#include "quarlo/tapelib/formats/seglib.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "libkyr/nullvalue.h"

namespace {

// ---- header fields ------------------------------------------------------------------------------------------------

TEST(HeaderFields, BothLengthsBothWays) {
  std::vector<char> header(kMaxHeaderBytes, 0);
  for (const int position : {1, 2, 115, 19997}) {
    for (const int value : {0, 1, -1, 32767, -32768, INT_MAX, INT_MIN + 1}) {
      encodeField(header.data(), value, position, 2);
      EXPECT_EQ(decodeField(header.data(), position, 2), value);
      EXPECT_EQ(decodeField(header.data(), position, 0), value);
      EXPECT_EQ(decodeField(header.data(), position, 1), static_cast<std::int16_t>(value));
    }
    encodeField(header.data(), 0x12345678, position, 2);
    encodeField(header.data(), 0x7FFF8001, position, 1);  // the low 16 bits only
    EXPECT_EQ(decodeField(header.data(), position, 1), -32767);
    EXPECT_EQ(decodeField(header.data(), position, 2), 0x12348001);
  }
}

TEST(HeaderFields, PositionsOutsideAndAtTheEnd) {
  std::vector<char> header(kMaxHeaderBytes, 0);
  const std::vector<char> blank = header;
  for (const int position : {INT_MIN, -1, 0, 20001, INT_MAX}) {
    EXPECT_EQ(decodeField(header.data(), position, 1), -9999);
    EXPECT_EQ(decodeField(header.data(), position, 4), -9999);
    encodeField(header.data(), 77, position, 4);
  }
  EXPECT_EQ(header, blank);
  // The last byte and what would follow it: zeros on reading, nowhere on writing.
  encodeField(header.data(), 0x1234, 20000, 1);
  EXPECT_EQ(header.back(), 0x34);
  EXPECT_EQ(decodeField(header.data(), 20000, 1), 0x34);
  EXPECT_EQ(decodeField(header.data(), 20000, 2), 0x34);
  header[kMaxHeaderBytes - 2] = 0x12;
  EXPECT_EQ(decodeField(header.data(), 19999, 2), 0x3412);
}

TEST(HeaderFields, ShorterHeadersAndNulls) {
  std::vector<char> header(240, 0);
  encodeField(header.data(), -1, 239, 2, 240);
  EXPECT_EQ(decodeField(header.data(), 239, 2, 240), 0xFFFF);
  EXPECT_EQ(decodeField(header.data(), 241, 1, 240), -9999);
  encodeField(header.data(), 5, 1, 2, 240);
  encodeField(header.data(), kNullInt, 1, 2, 240);
  encodeField(header.data(), kNullInt, 1, 1, 240);
  EXPECT_EQ(decodeField(header.data(), 1, 2, 240), 5);
}

// ---- gain codes ---------------------------------------------------------------------------------------------------

class HeaderGain : public testing::Test {
 protected:
  // Stores a 5-bit code in bits 4-8 of the word at `byte`.
  void setCode(std::size_t byte, unsigned code) {
    bytes()[byte] = static_cast<unsigned char>(bytes()[byte] | ((code << 4) & 0xF0U));
    bytes()[byte + 1] = static_cast<unsigned char>(bytes()[byte + 1] | (code >> 4));
  }
  std::vector<float> gains(int type, int apply) {
    std::vector<float> result(6, -1.0F);
    getHeaderGain(header_.data(), result.data(), 3, 2, type, apply);
    return result;
  }
  unsigned char* bytes() { return reinterpret_cast<unsigned char*>(header_.data()); }

  std::vector<int> header_ = std::vector<int>(10, 0);
};

TEST_F(HeaderGain, CodesMultiply) {
  using Gains = std::vector<float>;
  const Gains ones = {1, 1, 1, 1, 1, -1};
  EXPECT_EQ(gains(0, 1), ones);  // zero codes are no factors
  setCode(21, 3);
  setCode(24, 5);   // second code of the second trace of 2-byte types; first trace of the 4-byte type has 22
  setCode(29, 31);  // first code of the fifth trace; of the third for the 4-byte type
  for (const int type : {0, 1, 4}) EXPECT_EQ(gains(type, 1), (Gains{3, 5, 1, 1, 31, -1})) << type;
  setCode(22, 2);
  EXPECT_EQ(gains(2, 1), (Gains{6, 1, 31, 1, 1, -1}));
  EXPECT_EQ(gains(3, 1), ones);
  EXPECT_EQ(gains(0, 0), ones);
}

TEST_F(HeaderGain, AHeaderThatEndsWithItsLastCodeIsEnough) {
  // 21 + 2 x 4 + 3 bytes are touched for five traces.
  const std::vector<unsigned char> raw(32, 0xFF);
  std::vector<int> exact(8);
  std::memcpy(exact.data(), raw.data(), raw.size());
  float gain[5] = {};
  getHeaderGain(exact.data(), gain, 3, 2, 0, 1);
  EXPECT_EQ(gain[4], 31.0F * 31.0F);
}

// ---- BCD ----------------------------------------------------------------------------------------------------------

TEST(Unbcd, DigitsFromEitherNibble) {
  const char digits[] = "\x12\x34\x56\x78\x90\x12\x9F";
  const struct {
    int start, which, number, value;
  } table[] = {{0, 1, 1, 1},   {0, 1, 2, 12}, {0, 1, 3, 123},         {0, 1, 4, 1234},  {1, 1, 6, 345678},
               {0, 2, 1, 2},   {0, 2, 2, 23}, {0, 2, 3, 234},         {1, 2, 3, 456},   {0, 1, 9, 123456789},
               {6, 1, 2, 105}, {6, 2, 1, 15}, {0, 1, 0, 0},           {0, 2, 0, 0},     {0, 1, -4, 0},
               {0, 3, 4, 0},   {0, 0, 4, 0},  {0, 1, 10, 1234567890}, {3, 1, 6, 789012}};
  for (const auto& row : table)
    EXPECT_EQ(unbcd(digits, row.start, row.which, row.number), row.value)
        << row.start << ' ' << row.which << ' ' << row.number;
}

TEST(Unbcd, StopsAtTheLargestInt) {
  const std::string nines(1000, '\x99');
  EXPECT_EQ(unbcd(nines.data(), 0, 1, 10), INT_MAX);
  EXPECT_EQ(unbcd(nines.data(), 0, 1, 2000), INT_MAX);
  EXPECT_EQ(unbcd("\x21\x47\x48\x36\x47", 0, 1, 10), INT_MAX);
  EXPECT_EQ(unbcd("\x21\x47\x48\x36\x48", 0, 1, 10), INT_MAX);
}

// ---- characters ---------------------------------------------------------------------------------------------------

const std::map<int, int> asciiExceptions = {{'#', 0x4A}, {'[', 0xAD}, {']', 0xBD}, {'^', 0x5F}, {'{', 0x8B},
                                            {'|', 0x6A}, {'}', 0x9B}, {'~', 0x60}, {19, 0x3C}};
const std::map<int, int> ebcdicExceptions = {{0x4A, '#'}, {0xAD, '['}, {0xBD, ']'}, {0x5F, '^'},
                                             {0x8B, '{'}, {0x6A, '|'}, {0x9B, '}'}, {0x60, '~'}};

struct Tables {
  Tables() { initascebc(a2e, e2a); }
  int a2e[kA2eTableSize];
  int e2a[kE2aTableSize];
};

// One byte by the C library's converter; -1 when it has no character for it.
int converted(iconv_t converter, int code) {
  char from = static_cast<char>(code);
  char to = 0;
  char* in = &from;
  char* out = &to;
  std::size_t inLeft = 1;
  std::size_t outLeft = 1;
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  return iconv(converter, &in, &inLeft, &out, &outLeft) == 0 ? static_cast<unsigned char>(to) : -1;
}

TEST(CharacterTables, AreCodePage037WithTheExceptions) {
  const iconv_t toEbcdic = iconv_open("IBM037", "ASCII");
  const iconv_t toAscii = iconv_open("ASCII", "IBM037");
  const auto missing = [](iconv_t converter) { return reinterpret_cast<std::intptr_t>(converter) == -1; };
  if (missing(toEbcdic) || missing(toAscii)) GTEST_SKIP() << "the C library has no IBM037 converter";
  const Tables tables;
  for (int ascii = 0; ascii < 128; ++ascii) {
    const auto exception = asciiExceptions.find(ascii);
    EXPECT_EQ(tables.a2e[ascii], exception != asciiExceptions.end() ? exception->second : converted(toEbcdic, ascii))
        << ascii;
  }
  for (int ebcdic = 0; ebcdic < 256; ++ebcdic) {
    const auto exception = ebcdicExceptions.find(ebcdic);
    const int page = converted(toAscii, ebcdic);
    EXPECT_EQ(tables.e2a[ebcdic], exception != ebcdicExceptions.end() ? exception->second : (page < 0 ? ' ' : page))
        << std::hex << ebcdic;
  }
  iconv_close(toEbcdic);
  iconv_close(toAscii);
}

TEST(Translation, TerminatesAndSubstitutes) {
  const Tables tables;
  char buffer[8] = "C 1#\xE9z";
  asc2ebc(buffer, buffer, 6, tables.a2e);  // in place
  EXPECT_STREQ(buffer, "\xC3\x40\xF1\x4A\x3F\xA9");
  buffer[7] = 'k';
  ebc2asc("\xC3\x40\xF1\x4A\xFF\x60", buffer, 6, tables.e2a);
  EXPECT_STREQ(buffer, "C 1# ~");
  EXPECT_EQ(buffer[7], 'k');
  ebc2asc("\xC1", buffer, 0, tables.e2a);
  EXPECT_EQ(buffer[0], '\0');
  asc2ebc("A", buffer + 1, -1, tables.a2e);
  EXPECT_EQ(buffer[1], ' ');
}

}  // namespace
