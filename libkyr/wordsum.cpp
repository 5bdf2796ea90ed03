#include "libkyr/wordsum.h"

#include <array>
#include <bit>

#include "libkyr/byteorder.h"

namespace {

constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15U;

constexpr std::uint64_t step(std::uint64_t lane, std::uint64_t word) { return std::rotl((lane ^ word) * kOdd, 29); }

}  // namespace

std::uint64_t wordSum(std::uint64_t seed, const unsigned char* bytes, std::size_t count) {
  // Four lanes, because one would wait for its own multiplication: this runs at several bytes a cycle.
  std::array<std::uint64_t, 4> lanes{seed, seed + 1, seed + 2, seed + 3};
  const std::size_t words = count / 8;
  std::size_t i = 0;
  for (; i + 4 <= words; i += 4) {
    lanes[0] = step(lanes[0], loadLe64(bytes + 8 * i));
    lanes[1] = step(lanes[1], loadLe64(bytes + 8 * i + 8));
    lanes[2] = step(lanes[2], loadLe64(bytes + 8 * i + 16));
    lanes[3] = step(lanes[3], loadLe64(bytes + 8 * i + 24));
  }
  for (; i < words; ++i) lanes[i % 4] = step(lanes[i % 4], loadLe64(bytes + 8 * i));
  std::uint64_t sum = seed;
  for (const std::uint64_t lane : lanes) sum = step(sum, lane);
  return sum;
}
