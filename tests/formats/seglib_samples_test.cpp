// The sample decoders: tables of {bytes, value} at the edges, and whole input ranges against the steps as the formats'
// documents give them.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "libkyr/byteorder.h"
#include "quarlo/tapelib/formats/seglib.h"

namespace {

constexpr float untouched = -77.0F;
constexpr float milliVolts15 = 3.0517578e-08F;
constexpr float twoToMinus27 = 7.4505806e-09F;

using Floats = std::vector<float>;
using Words = std::vector<unsigned>;

static_assert(std::bit_cast<std::uint32_t>(milliVolts15) == 0x3303126F);
static_assert(std::bit_cast<std::uint32_t>(twoToMinus27) == 0x32000000);

std::string bigEndian(const Words& words) {
  std::string bytes(2 * words.size(), '\0');
  for (std::size_t i = 0; i < words.size(); ++i) storeBe16(bytes.data() + 2 * i, static_cast<std::uint16_t>(words[i]));
  return bytes;
}

std::string hostOrder(const Words& words) {
  std::string bytes;
  for (const unsigned word : words) {
    const auto stored = static_cast<std::uint16_t>(word);
    bytes.append(reinterpret_cast<const char*>(&stored), sizeof stored);
  }
  return bytes;
}

// What a decoder that takes a work array writes into an output that has room for two more.
template <typename Decode>
Floats decoded(std::size_t samples, Decode decode) {
  Floats out(samples + 2, untouched);
  std::vector<int> work(samples);
  decode(out.data(), work.data());
  return out;
}

// ---- integers -----------------------------------------------------------------------------------------------------

TEST(SegBin16, WordsOfOneChannel) {
  const std::string bytes = hostOrder({0, 1111, 0x7FFF, 1111, 0x8000, 1111, 0xFFFF});
  for (const int scanBytes : {4, 5})  // an odd distance is rounded down to words
    EXPECT_EQ(decoded(4, [&](float* out, int* work) { decodeBin16(out, 1, bytes.data(), scanBytes, 4, work); }),
              (Floats{0, 32767, -32768, -1, untouched, untouched}));
  EXPECT_EQ(decoded(2, [&](float* out, int* work) { decodeBin16(out, 2, bytes.data(), 8, 2, work); }),
            (Floats{0, untouched, -32768, untouched}));
}

TEST(SegBinHR, MantissaOverExponent) {
  const struct {
    unsigned word;
    int value;
  } table[] = {
      {0x0000, 0}, {0x000F, 0}, {0x0010, 1 << 16},  {0x001F, 2},  {0x7FF0, 2047 << 16},    {0x7FFF, 2047 * 2},
      {0xFFF0, 0}, {0xFFFF, 0}, {0xFFE0, -1 << 16}, {0xFFEF, -2}, {0x8000, -2047 * 65536}, {0x8008, -2047 * 256}};
  for (const auto& row : table) {
    const std::string bytes = hostOrder({row.word});
    const Floats out = decoded(1, [&](float* o, int* work) { decodeBinHR(o, 1, bytes.data(), 2, 1, work); });
    EXPECT_EQ(out[0], static_cast<float>(row.value) * milliVolts15) << std::hex << row.word;
  }
}

const struct {
  unsigned mantissa;
  unsigned exponent;
  int upward;
  int inverted;
} twentyBits[] = {{0x0000, 0xF, 0, 0},
                  {0x0001, 0x0, 1, 65536},
                  {0x0001, 0xF, 32768, 2},
                  {0x7FFF, 0xF, 32767 * 32768, 65534},
                  {0x7FFF, 0x0, 32767, 32767 * 65536},
                  {0x8000, 0xF, -1073741824, -65536},
                  {0x8000, 0x0, -32768, -2147483647 - 1},
                  {0xFFFF, 0x3, -8, -8192}};

TEST(SegBin20, EveryChannelOfTheGroupHasItsNibble) {
  for (const auto& row : twentyBits) {
    for (int channel = 1; channel <= 8; ++channel) {
      const auto place = static_cast<std::size_t>((channel - 1) % 4);
      Words group = {0x5555, 3, 3, 3, 3};
      group[0] = (group[0] & ~(0xFU << (12 - 4 * place))) | (row.exponent << (12 - 4 * place));
      group[1 + place] = row.mantissa;
      const std::string bytes = bigEndian(group);
      const Bin20Layout layout{.scanBytes = 10, .subscans = 1, .bytesPerSub = 0, .channel = channel};
      const auto first = [&](auto decode) {
        return decoded(1, [&](float* out, int* work) { decode(out, 1, bytes.data(), layout, 1, work); })[0];
      };
      const auto upward = static_cast<float>(row.upward);
      const auto inverted = static_cast<float>(row.inverted);
      EXPECT_EQ(first(decodeBin20), upward);
      EXPECT_EQ(first(decodeBin20A), inverted);
      EXPECT_EQ(first(segdBin20), upward * milliVolts15);
      EXPECT_EQ(first(segdBin20A), upward * milliVolts15);
      EXPECT_EQ(first(segbBin20), upward * twoToMinus27);
      EXPECT_EQ(first(segbBin20A), inverted * twoToMinus27);
    }
  }
}

// Groups whose first mantissa is their own position in the data, in words.
std::string numberedWords(std::size_t words) {
  std::string bytes(2 * words, '\0');
  for (std::size_t i = 0; i + 1 < words; ++i) storeBe16(bytes.data() + 2 * i + 2, static_cast<std::uint16_t>(i));
  return bytes;
}

Floats positions(const Bin20Layout& layout, int samples) {
  const std::string bytes = numberedWords(200);
  Floats out = decoded(static_cast<std::size_t>(samples),
                       [&](float* o, int* work) { decodeBin20A(o, 1, bytes.data(), layout, samples, work); });
  // The exponent word is a number too, and small: undo the shift by its high nibble, which is 0.
  for (float& value : out)
    if (value != untouched) value /= 65536.0F;
  return out;
}

TEST(SegBin20, StepsFromScanToScan) {
  EXPECT_EQ(positions({.scanBytes = 20, .subscans = 1, .bytesPerSub = 7, .channel = 1}, 3),
            (Floats{0, 10, 20, untouched, untouched}));
  EXPECT_EQ(positions({.scanBytes = 21, .subscans = 1, .bytesPerSub = 0, .channel = 1}, 3),
            (Floats{0, 10, 20, untouched, untouched}));
  // With subscans both distances are words, and the next scan lies one of them less a subscan behind the last.
  EXPECT_EQ(positions({.scanBytes = 40, .subscans = 2, .bytesPerSub = 10, .channel = 1}, 6),
            (Floats{0, 10, 40, 50, 80, 90, untouched, untouched}));
  EXPECT_EQ(positions({.scanBytes = 40, .subscans = 4, .bytesPerSub = 5, .channel = 1}, 8),
            (Floats{0, 5, 10, 15, 50, 55, 60, 65, untouched, untouched}));
}

TEST(SegBin20, OnlyWholeScansAreTouched) {
  EXPECT_EQ(positions({.scanBytes = 40, .subscans = 2, .bytesPerSub = 10, .channel = 1}, 3),
            (Floats{0, 10, untouched, untouched, untouched}));
  const Floats nothing(5, untouched);
  EXPECT_EQ(positions({.scanBytes = 40, .subscans = 0, .bytesPerSub = 10, .channel = 1}, 3), nothing);
  EXPECT_EQ(positions({.scanBytes = 40, .subscans = -1, .bytesPerSub = 10, .channel = 1}, 3), nothing);
  EXPECT_EQ(positions({.scanBytes = 40, .subscans = 4, .bytesPerSub = 10, .channel = 1}, 3), nothing);
}

TEST(SegBin20de, WholeGroupsInOrder) {
  const std::string bytes = bigEndian({0x0F31, 0x7FFF, 0x8000, 0xFFFF, 0x0001, 0x1000, 1, 2, 3, 4});
  const Floats upward = {32767, -1073741824.0F, -8, 2};
  const Floats inverted = {32767.0F * 65536, -65536, -8192, 32768};
  Floats rest(5, untouched);
  const auto with = [](Floats head, const Floats& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
  };
  EXPECT_EQ(decoded(7, [&](float* o, int* work) { decodeBin20de(o, 1, bytes.data(), 7, work); }), with(upward, rest));
  EXPECT_EQ(decoded(7, [&](float* o, int* work) { decodeBin20deA(o, 1, bytes.data(), 7, work); }),
            with(inverted, rest));
  EXPECT_EQ(decoded(7, [&](float* o, int* work) { segdBin20de(o, 1, bytes.data(), 7, work, 0); }), with(upward, rest));
  EXPECT_EQ(decoded(7, [&](float* o, int* work) { segdBin20de(o, 1, bytes.data(), 7, work, 1); }),
            with(inverted, rest));
  EXPECT_EQ(decoded(8, [&](float* o, int* work) { decodeBin20de(o, 1, bytes.data(), 8, work); }),
            with(upward, {2, 2, 3, 4, untouched, untouched}));
  EXPECT_EQ(decoded(3, [&](float* o, int* work) { decodeBin20de(o, 1, bytes.data(), 3, work); }), rest);
}

TEST(Seg3Byte, StaysInteger) {
  int out[4] = {9, 9, 9, 9};
  decode3byte("\x7F\xFF\xFF\x80\x00\x00\xFF\xFF\xFE", out, 3);
  EXPECT_EQ(std::tuple(out[0], out[1], out[2], out[3]), std::tuple(8388607, -8388608, -2, 9));
}

TEST(Seg20BitFloat, ExponentsOfTheFirstAndThird) {
  std::string bytes = hostOrder({0, 0x8000, 0x7FFF, 0xFFFF, 0x8000});
  bytes[0] = '\xF3';  // low nibble 3: the third sample's
  bytes[1] = '\x2F';  // low nibble 15: the first's
  bytes += bytes;
  Floats out(9, untouched);
  decode20bitFloat(bytes.data(), out.data(), 7);
  EXPECT_EQ(out, (Floats{-1073741824.0F, 32767, -8, -32768, untouched, untouched, untouched, untouched, untouched}));
  decode20bitFloat(bytes.data(), out.data(), 8);
  EXPECT_EQ(out[4], -1073741824.0F);
  EXPECT_EQ(out[8], untouched);
}

// ---- hexadecimal and quaternary floats ----------------------------------------------------------------------------

// The documented steps: normalise to bit 23, bring small powers up to 1 as if they were biased, drop the top bit.
float hexByTheSteps(unsigned sign, unsigned exponent, unsigned mantissa, unsigned shift) {
  if (mantissa == 0) return 0.0F;
  int power = static_cast<int>(4 * exponent);
  unsigned m = mantissa << shift;
  while ((m & 0x800000U) == 0) {
    m <<= 1;
    --power;
  }
  while (power < 1) {
    m >>= 1;
    if (m == 0) {
      power = 0;
      break;
    }
    if (power == 0) break;
    ++power;
  }
  if (power > 254) return 0.0F;
  const IEEEFloat bits{
      .mantissa = m & 0x7FFFFFU, .exponent = static_cast<unsigned>(power + 127) & 0xFFU, .sign = sign & 1U};
  return std::bit_cast<float>(bits);
}

// The documented steps with unbounded integers: bits of the mantissa are asked for by their place, never shifted out.
std::uint32_t quatByTheSteps(unsigned exponent, unsigned mantissa, unsigned width) {
  int biased = static_cast<int>(2 * exponent + 127);
  int steps = 0;
  const auto bitAfterShift = [mantissa](int bit, int shift) {
    const int source = bit - shift;
    return source >= 0 && source < 32 && ((mantissa >> source) & 1U) != 0;
  };
  if (mantissa != 0) {
    do {
      ++steps;
      --biased;
    } while (!bitAfterShift(static_cast<int>(width) - 1, steps - 1) && biased > 0);
  }
  std::uint32_t result = static_cast<std::uint32_t>(biased) << 23;
  for (int bit = 0; bit < 23; ++bit)
    if (bitAfterShift(bit, steps + 23 - static_cast<int>(width))) result |= 1U << bit;
  return result;
}

void expectBits(float value, float expected, unsigned sample) {
  ASSERT_EQ(std::bit_cast<std::uint32_t>(value), std::bit_cast<std::uint32_t>(expected)) << std::hex << sample;
}

TEST(SegHex, EverySampleAsTheStepsGiveIt) {
  for (unsigned sample = 0; sample < 0x10000; ++sample) {
    float out = untouched;
    if (sample < 0x100) {
      const char byte = static_cast<char>(sample);
      decodeHex8(&out, 1, &byte, 1, 1);
      expectBits(out, hexByTheSteps(sample >> 7, (sample >> 5) & 3, sample & 0x1F, 19), sample);
    }
    decodeHex16(&out, 1, hostOrder({sample}).data(), 2, 1);
    expectBits(out, hexByTheSteps(sample >> 15, (sample >> 13) & 3, sample & 0x1FFF, 11), sample);
  }
}

TEST(SegFloats, Edges) {
  const struct {
    void (*decode)(float* out, int outStep, const char* in, int inStep, int samples);
    unsigned sample;
    float value;
  } table[] = {
      {decodeHex8, 0xFF, -7936.0F},      {decodeHex16, 0xFFFF, -8191.0F}, {decodeHex16, 0x0001, 1.0F + 1.0F / 8192},
      {decodeQuat8, 0x00, 0.0F},         {decodeQuat8, 0x87, 0.5F},       {decodeQuat16, 0x0000, 0.0F},
      {decodeQuat16, 0x0FFF, 0x1p-126F},    // the carry empties the exponent, the sign bit sets its lowest bit
      {decodeQuat16, 0x0080, 0x1.02p-4F}};  // 129/4096, its even exponent made odd
  for (const auto& row : table) {
    float out = untouched;
    row.decode(&out, 1, hostOrder({row.sample}).data(), 2, 1);
    expectBits(out, row.value, row.sample);
  }
}

TEST(SegQuat, EverySampleAsTheStepsGiveIt) {
  for (unsigned sample = 1; sample < 0x10000; ++sample) {
    const unsigned sign = (sample & 0x80U) >> 7;
    float out = untouched;
    if (sample < 0x100) {
      const char byte = static_cast<char>(sample);
      decodeQuat8(&out, 1, &byte, 1, 1);
      ASSERT_EQ(std::bit_cast<std::uint32_t>(out), quatByTheSteps((sample >> 4) & 7, (sample & 0xF) + sign, 4));
    }
    decodeQuat16(&out, 1, hostOrder({sample}).data(), 2, 1);
    ASSERT_EQ(std::bit_cast<std::uint32_t>(out),
              quatByTheSteps((sample >> 12) & 7, (sample & 0xFFF) + sign, 12) | (sign << 23))
        << std::hex << sample;
  }
}

TEST(SegQuat, DemultiplexedWordsAreSigned) {
  const struct {
    unsigned word;
    float value;
  } table[] = {
      {0x0000, 0.0F},         {0x0001, 1.0F / 4096}, {0x0800, 0.5F},         {0x7FFF, 4095.0F * 4},     {0x7000, 0.0F},
      {0xF000, -4095.0F * 4}, {0xFFFF, 0.0F},        {0x8FFE, -1.0F / 4096}, {0x8000, -4095.0F / 4096}, {0x1400, 1.0F}};
  Floats out(std::size(table), untouched);
  Words words;
  for (const auto& row : table) words.push_back(row.word);
  decodeQuat16de(out.data(), 1, bigEndian(words).data(), static_cast<int>(words.size()));
  for (std::size_t i = 0; i < words.size(); ++i) expectBits(out[i], table[i].value, words[i]);
}

TEST(SegFloats, StridesAndDemultiplexedForms) {
  // Two channels of bytes, then of words; the demultiplexed forms take every sample.
  const char bytes[] = {'\x22', '\x08', '\x3F', '\x01'};
  Floats out(4, untouched);
  decodeHex8(out.data(), 2, bytes, 2, 2);
  EXPECT_EQ(out, (Floats{2, untouched, 31, untouched}));
  decodeQuat8(out.data() + 1, 2, bytes + 1, 2, 2);
  EXPECT_EQ(out, (Floats{2, 0.5, 31, 0.0625}));
  decodeHex8de(out.data(), 1, bytes, 4);
  EXPECT_EQ(out, (Floats{2, 1.25, 31, 1.03125}));
  decodeQuat8de(out.data(), 1, bytes, 4);
  EXPECT_EQ(out, (Floats{2, 0.5, 60, 0.0625}));
  const std::string words = hostOrder({0x3000, 0x0800});
  decodeHex16de(out.data(), 1, words.data(), 2);
  EXPECT_EQ(out, (Floats{16, 1.25, 60, 0.0625}));
  decodeHex16(out.data(), 1, words.data() + 2, 2, 0);
  EXPECT_EQ(out[0], 16.0F);
}

}  // namespace
