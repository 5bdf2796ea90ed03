#include "libkyr/byteorder.h"

#include <bit>
#include <cstring>

#include "libkyr/vectorized.h"

namespace {

constexpr std::uint16_t reversed(std::uint16_t word) { return __builtin_bswap16(word); }
constexpr std::uint32_t reversed(std::uint32_t word) { return __builtin_bswap32(word); }
constexpr std::uint64_t reversed(std::uint64_t word) { return __builtin_bswap64(word); }

/// In such words as the compiler turns into vectors.
template <typename U>
[[gnu::always_inline]] inline void swapWords(void* words, std::size_t count) {
  auto* const bytes = static_cast<unsigned char*>(words);
  for (std::size_t i = 0; i < count; ++i) {
    U word;
    std::memcpy(&word, bytes + i * sizeof(U), sizeof word);
    word = reversed(word);
    std::memcpy(bytes + i * sizeof(U), &word, sizeof word);
  }
}

}  // namespace

void loadLeFloats(const unsigned char* bytes, float* values, std::size_t count) {
  if (count == 0) return;
  std::memcpy(values, bytes, count * sizeof(float));
  if constexpr (std::endian::native == std::endian::big) longswap(values, count);
}

void storeLeFloats(unsigned char* bytes, const float* values, std::size_t count) {
  if (count == 0) return;
  std::memcpy(bytes, values, count * sizeof(float));
  if constexpr (std::endian::native == std::endian::big) longswap(bytes, count);
}

KYR_VECTORIZED void byteswap(void* words, std::size_t count) { swapWords<std::uint16_t>(words, count); }
KYR_VECTORIZED void longswap(void* words, std::size_t count) { swapWords<std::uint32_t>(words, count); }
KYR_VECTORIZED void doubleswap(void* words, std::size_t count) { swapWords<std::uint64_t>(words, count); }
