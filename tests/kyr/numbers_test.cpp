// Byte order, IBM floats and null values: tables of {bytes, value}, both ways where there are two.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "libkyr/byteorder.h"
#include "libkyr/ibmfloat.h"
#include "libkyr/nullvalue.h"

namespace {

constexpr unsigned char countUp[] = {0x81, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x88};

static_assert(loadBe16(countUp) == 0x8102);
static_assert(loadLe64(countUp) == 0x8807060504030281U);

TEST(ByteOrder, LoadsAndStoresAgreeWithTheBytes) {
  EXPECT_EQ(loadLe16(countUp), 0x0281);
  EXPECT_EQ(loadBe32(countUp), 0x81020304U);
  EXPECT_EQ(loadLe32(countUp), 0x04030281U);
  EXPECT_EQ(loadBe64(countUp), 0x8102030405060788U);
  EXPECT_EQ(loadBeInt16(countUp), -0x7EFE);
  EXPECT_EQ(loadLeInt32(countUp + 4), -0x77F8F9FB);

  char field[8] = {};
  storeBe64(field, 0x8102030405060788U);
  EXPECT_EQ(std::memcmp(field, countUp, 8), 0);
  storeLe64(field, 0x8807060504030281U);
  EXPECT_EQ(std::memcmp(field, countUp, 8), 0);
  storeBe16(field, 0xABCD);
  EXPECT_EQ(loadLe16(field), 0xCDAB);
  storeLeDouble(field, -1.5);
  EXPECT_EQ(std::memcmp(field, "\0\0\0\0\0\0\xF8\xBF", 8), 0);
  storeBeFloat(field, 1.0F);
  EXPECT_EQ(loadBe32(field), 0x3F800000U);
  EXPECT_EQ(loadBeFloat(field), 1.0F);
}

TEST(ByteOrder, SwapsWholeWordsInPlaceAtAnyAddress) {
  const auto swapped = [](void (*swap)(void*, std::size_t), std::size_t count) {
    std::string bytes = "-abcdefghi";
    swap(bytes.data() + 1, count);
    return bytes;
  };
  EXPECT_EQ(swapped(byteswap, 4), "-badcfehgi");
  EXPECT_EQ(swapped(longswap, 2), "-dcbahgfei");
  EXPECT_EQ(swapped(doubleswap, 1), "-hgfedcbai");
  EXPECT_EQ(swapped(longswap, 0), "-abcdefghi");
}

TEST(IbmFloat, KnownWordsBothWays) {
  const struct {
    std::uint32_t word;
    float value;
  } table[] = {{0x00000000, 0.0F},      {0x80000000, -0.0F},       {0x41100000, 1.0F},
               {0xC1100000, -1.0F},     {0x42640000, 100.0F},      {0xC276A000, -118.625F},
               {0x40800000, 0.5F},      {0x3F100000, 0.00390625F}, {0x60FFFFFF, 0x1.FFFFFEp127F},
               {0x1B800000, 0x1p-149F}, {0x21400000, 0x1p-126F}};
  for (const auto& row : table) {
    EXPECT_EQ(std::bit_cast<std::uint32_t>(ibmToIeee(row.word)), std::bit_cast<std::uint32_t>(row.value)) << row.word;
    EXPECT_EQ(ieeeToIbm(row.value), row.word) << row.value;
  }
}

TEST(IbmFloat, EveryExponentAgreesWithLongDoubleArithmetic) {
  // Leading zero digits, an exponent alone, what is too large and too small, and around half the smallest number.
  std::vector<std::uint32_t> words = {0x46000064, 0x46000001, 0x7F000000, 0xFF000000, 0x61100000, 0x7FFFFFFF,
                                      0xFFFFFFFF, 0x65000001, 0x00FFFFFF, 0x1B400000, 0x1B400001, 0x1BC00000};
  for (std::uint32_t step = 0, fraction = 1; step < 400000; ++step)
    words.push_back((fraction = fraction * 1664525U + 1013904223U) ^ (step << 24));
  for (const std::uint32_t word : words) {
    const long double exact =
        std::ldexp(static_cast<long double>(word & 0xFFFFFFU), 4 * (static_cast<int>((word >> 24) & 0x7FU) - 64) - 24);
    const auto nearest = static_cast<float>((word >> 31) != 0 ? -exact : exact);
    ASSERT_EQ(std::bit_cast<std::uint32_t>(ibmToIeee(word)), std::bit_cast<std::uint32_t>(nearest)) << word;
  }
}

// The exact value of a word, wider than any float.
double exactValue(std::uint32_t word) {
  const double magnitude = std::ldexp(word & 0xFFFFFFU, 4 * (static_cast<int>((word >> 24) & 0x7FU) - 64) - 24);
  return (word >> 31) != 0 ? -magnitude : magnitude;
}

TEST(IbmFloat, WritesTheNearestNormalisedWord) {
  std::uint32_t bits = 7;
  for (int i = 0; i < 400000; ++i) {
    bits = bits * 1664525U + 1013904223U;
    const auto value = std::bit_cast<float>(bits);
    if (!std::isfinite(value) || value == 0.0F) continue;
    const std::uint32_t word = ieeeToIbm(value);
    ASSERT_NE(word & 0xF00000U, 0U) << value;
    // The neighbours of a normalised word in its own binade of 16 are not nearer, and a tie went to the even word.
    const double error = std::fabs(exactValue(word) - double{value});
    for (const std::uint32_t neighbour : {word - 1, word + 1}) {
      const double other = std::fabs(exactValue(neighbour) - double{value});
      ASSERT_TRUE(error < other || (error == other && (word & 1U) == 0U)) << value;
    }
  }
  EXPECT_EQ(ieeeToIbm(std::bit_cast<float>(0x417FFFFFU)), 0x41FFFFFFU);  // just below 16, exact
  EXPECT_EQ(ieeeToIbm(std::bit_cast<float>(0x3DFFFFFFU)), 0x40200000U);  // rounds up through every digit
  EXPECT_EQ(ieeeToIbm(std::bit_cast<float>(0x40FFFFFFU)), 0x41800000U);
  EXPECT_EQ(ieeeToIbm(std::numeric_limits<float>::infinity()), 0x7FFFFFFFU);
  EXPECT_EQ(ieeeToIbm(-std::numeric_limits<float>::infinity()), 0xFFFFFFFFU);
  EXPECT_EQ(ieeeToIbm(std::numeric_limits<float>::quiet_NaN()), 0x7FFFFFFFU);
}

TEST(IbmFloat, ConvertsArraysInPlaceAtAnyAddress) {
  char bytes[10] = {'<'};
  bytes[9] = '>';
  const std::uint32_t words[2] = {0x42640000, 0xC276A000};
  std::memcpy(bytes + 1, words, sizeof words);
  Ibm2Float(bytes + 1, 2);
  float values[2] = {};
  std::memcpy(values, bytes + 1, sizeof values);
  EXPECT_EQ(values[0], 100.0F);
  EXPECT_EQ(values[1], -118.625F);
  Float2Ibm(bytes + 1, 2);
  EXPECT_EQ(std::memcmp(bytes + 1, words, sizeof words), 0);
  EXPECT_EQ(bytes[0], '<');
  EXPECT_EQ(bytes[9], '>');
}

TEST(NullValue, SurvivesWideningAndIsNoOrdinaryValue) {
  EXPECT_TRUE(IsValueNull(kNullInt));
  EXPECT_TRUE(IsValueNull(kNullFloat));
  EXPECT_TRUE(IsValueNull(double{kNullFloat}));
  EXPECT_FALSE(IsValueNull(0));
  EXPECT_FALSE(IsValueNull(-9999));
  EXPECT_FALSE(IsValueNull(-1.0F));
}

}  // namespace
