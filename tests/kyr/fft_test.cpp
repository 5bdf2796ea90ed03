// The packed real transform against its definition, computed term by term.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <vector>

#include "libkyr/fft.h"
#include "libkyr/vectors.h"

namespace {

using Complex = std::complex<double>;

Complex direct(const std::vector<float>& x, int k) {
  const auto n = static_cast<double>(x.size());
  Complex sum = 0;
  for (std::size_t j = 0; j < x.size(); ++j)
    sum += double{x[j]} * std::polar(1.0, -2.0 * std::numbers::pi * std::fmod(static_cast<double>(j) * k, n) / n);
  return sum;
}

std::vector<float> noise(int n) {
  std::mt19937 random(static_cast<unsigned>(n));
  std::vector<float> x(static_cast<std::size_t>(n));
  for (float& value : x) value = static_cast<float>(static_cast<double>(random()) / 2147483648.0 - 0.9);
  return x;
}

TEST(Fft, AgreesWithItsDefinitionInEveryBin) {
  for (const int n : {2, 4, 6, 8, 22, 64, 250, 1024, 26, 2}) {  // from a longer to a shorter length too
    const std::vector<float> x = noise(n);
    std::vector<float> packed = x;
    packed.push_back(777.0F);
    ASSERT_TRUE(kyrpackedrfft(packed.data(), n));
    EXPECT_EQ(packed.back(), 777.0F) << "written behind the n values";
    const double tolerance = 1e-7 * n;
    ASSERT_NEAR(packed[0], direct(x, 0).real(), tolerance) << n;
    ASSERT_NEAR(packed[1], direct(x, n / 2).real(), tolerance) << n;
    for (int k = 1; k < n / 2; ++k) {
      const auto pair = static_cast<std::size_t>(2 * k);
      ASSERT_NEAR(packed[pair], direct(x, k).real(), tolerance) << n << " bin " << k;
      ASSERT_NEAR(packed[pair + 1], direct(x, k).imag(), tolerance) << n << " bin " << k;
    }
  }
}

TEST(Fft, ASineStandsOutByMoreThanTheBestInstrumentsHave) {
  constexpr int n = 8192;
  constexpr int bin = 64;
  std::vector<float> x(n);
  for (int j = 0; j < n; ++j)
    x[static_cast<std::size_t>(j)] =
        static_cast<float>(0.5 + 3.0 * std::sin(2.0 * std::numbers::pi * bin * j / n + 0.3));
  ASSERT_TRUE(kyrpackedrfft(x.data(), n));
  EXPECT_FLOAT_EQ(x[0], 0.5F * n);
  polar(x.data(), 2, x.data(), 2, n / 2);
  EXPECT_FLOAT_EQ(x[2 * bin], 3.0F * n / 2);
  double others = 0.0;
  for (int k = 1; k < n / 2; ++k) {
    const double magnitude = x[static_cast<std::size_t>(2 * k)];
    if (k != bin) others += magnitude * magnitude;
  }
  // The samples' own rounding leaves -150 dB; a transform in single precision -141.
  EXPECT_LT(20.0 * std::log10(std::sqrt(others) / x[2 * bin]), -147.0);
}

TEST(Fft, RefusesOtherLengths) {
  float data[3] = {1.0F, 2.0F, 3.0F};
  for (const int n : {-2, 0, 1, 3}) EXPECT_FALSE(kyrpackedrfft(data, n));
  EXPECT_FALSE(kyrpackedrfft(nullptr, 2));
  EXPECT_EQ(data[0], 1.0F);
  EXPECT_EQ(data[2], 3.0F);
}

}  // namespace
