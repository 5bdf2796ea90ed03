// Samples out in the formats of SEG Y: words, weighting factors, ends of ranges.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "libkyr/ibmfloat.h"
#include "libkyr/segysamples.h"

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

template <typename Word>
struct Written {
  std::vector<Word> words;
  int weight;
};

// The words that a trace becomes, at an odd address between two guards.
template <typename Word>
Written<Word> written(const std::vector<float>& trace, int format) {
  std::vector<unsigned char> bytes(1 + trace.size() * sizeof(Word) + 1, 0xA5);
  const int weight = sgyIbmOut(trace.data(), bytes.data() + 1, static_cast<int>(trace.size()), format);
  EXPECT_EQ(bytes.front(), 0xA5);
  EXPECT_EQ(bytes.back(), 0xA5) << "written past the last sample";
  std::vector<Word> words(trace.size());
  std::memcpy(words.data(), bytes.data() + 1, words.size() * sizeof(Word));
  return {words, weight};
}

TEST(SegySamples, WholeNumbersThatFitGoOutAsTheyAre) {
  const std::vector<std::int16_t> shorts{0, 1, -1, 32767, -32768, 0};
  const auto int16 = written<std::int16_t>({0, 1, -1, 32767, -32768, nan}, 3);
  EXPECT_EQ(int16.words, shorts);
  EXPECT_EQ(int16.weight, 0);
  const auto int32 = written<std::int32_t>({1e9F, -2147483648.0F, infinity, -infinity}, 2);
  EXPECT_EQ(int32.words, (std::vector<std::int32_t>{1000000000, INT32_MIN, INT32_MAX, INT32_MIN}));
  EXPECT_EQ(int32.weight, 0);
}

TEST(SegySamples, EightBitsGoOutInWordsOfTwoBytes) {
  const auto plain = written<std::int16_t>({127, -128, -infinity, infinity}, 8);
  EXPECT_EQ(plain.words, (std::vector<std::int16_t>{127, -128, -128, 127}));
  EXPECT_EQ(plain.weight, 0);
  const auto scaled = written<std::int16_t>({128, -0.5F}, 8);
  EXPECT_EQ(scaled.words, (std::vector<std::int16_t>{64, 0}));  // -0.25 rounds to 0
  EXPECT_EQ(scaled.weight, -1);
}

TEST(SegySamples, TheWeightUsesTheWholeRangeAndRoundsToTheNearest) {
  const struct {
    std::vector<float> trace;
    std::vector<std::int16_t> words;
    int weight;
  } table[] = {{{0.5F, -0.25F}, {16384, -8192}, 15},
               {{1.5F, 1.0F / 16384}, {24576, 1}, 14},
               {{40000.0F, 3.0F}, {20000, 2}, -1},       // 1.5 rounds to even
               {{1.9999999F, 1.0F}, {16384, 8192}, 13},  // with 14 it would round to 32768
               {{-32769.0F, 1.0F}, {-16384, 0}, -1},     // halves round to even
               {{infinity, -infinity, 0.5F}, {32767, -32768, 16384}, 15},
               {{std::numeric_limits<float>::denorm_min()}, {16384}, 163},
               {{std::numeric_limits<float>::max(), 1.0F}, {16384, 0}, -114}};
  for (const auto& row : table) {
    const auto result = written<std::int16_t>(row.trace, 3);
    EXPECT_EQ(result.words, row.words) << row.trace[0];
    EXPECT_EQ(result.weight, row.weight) << row.trace[0];
  }
}

TEST(SegySamples, IntegersComeBackWithinHalfAUnit) {
  std::vector<float> trace(2000);
  for (std::size_t i = 0; i < trace.size(); ++i)
    trace[i] = 37.0F * std::sin(0.01F * static_cast<float>(i)) / (1.0F + static_cast<float>(i));
  const auto result = written<std::int32_t>(trace, 2);
  const double unit = std::ldexp(1.0, -result.weight);
  for (std::size_t i = 0; i < trace.size(); ++i) ASSERT_NEAR(result.words[i] * unit, trace[i], 0.5 * unit) << i;
  EXPECT_LT(unit, 1e-9) << "precision given away";
}

TEST(SegySamples, Floats) {
  const std::vector<float> trace{1.0F, -118.625F, infinity, -infinity, nan};
  const auto ibm = written<std::uint32_t>(trace, 1);
  EXPECT_EQ(ibm.words, (std::vector<std::uint32_t>{0x41100000, 0xC276A000, 0x7FFFFFFF, 0xFFFFFFFF, 0}));
  EXPECT_EQ(ibm.weight, 0);
  for (const int unknown : {0, 4, 6, 7, -1, 99}) EXPECT_EQ(written<std::uint32_t>(trace, unknown).words, ibm.words);
  const auto ieee = written<std::uint32_t>(trace, 5);
  for (std::size_t i = 0; i < trace.size(); ++i) EXPECT_EQ(ieee.words[i], std::bit_cast<std::uint32_t>(trace[i]));
  EXPECT_EQ(ieee.weight, 0);
}

TEST(SegySamples, InPlaceAndWithNothingToDo) {
  std::vector<float> trace{3.0F, -2.0F, 1.0F};
  EXPECT_EQ(sgyIbmOut(trace.data(), trace.data(), 3, 3), 0);
  std::int16_t words[3] = {};
  std::memcpy(words, trace.data(), sizeof words);
  EXPECT_EQ(std::tuple(words[0], words[1], words[2]), std::tuple(3, -2, 1));
  EXPECT_EQ(sgyIbmOut(nullptr, words, 3, 3), 0);
  EXPECT_EQ(sgyIbmOut(trace.data(), words, -1, 3), 0);
  EXPECT_EQ(words[0], 3);
}

}  // namespace
