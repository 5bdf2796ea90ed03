/// Multi-byte values in files and on tapes, read and written in a named byte order.
///
/// The loads and stores take any byte pointer (char, unsigned char, std::byte), need no alignment and compile to one
/// instruction. They check nothing: the caller knows that the bytes are there.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <utility>

template <typename T>
concept ByteLike = std::same_as<T, char> || std::same_as<T, unsigned char> || std::same_as<T, std::byte>;

namespace byteorder {

// Expanded to one expression, not a loop: compilers know that shape and make it a load with or without a swap.
template <std::unsigned_integral U, bool Big, ByteLike B, std::size_t... I>
constexpr U load(const B* bytes, std::index_sequence<I...> /*unused*/) {
  return static_cast<U>(
      (... | (static_cast<U>(static_cast<unsigned char>(bytes[I])) << (8 * (Big ? sizeof(U) - 1 - I : I)))));
}

template <std::unsigned_integral U, bool Big, ByteLike B, std::size_t... I>
constexpr void store(B* bytes, U value, std::index_sequence<I...> /*unused*/) {
  ((bytes[I] = static_cast<B>(static_cast<unsigned char>(value >> (8 * (Big ? sizeof(U) - 1 - I : I))))), ...);
}

template <std::unsigned_integral U, ByteLike B>
constexpr U loadBig(const B* bytes) {
  return load<U, true>(bytes, std::make_index_sequence<sizeof(U)>{});
}

template <std::unsigned_integral U, ByteLike B>
constexpr U loadLittle(const B* bytes) {
  return load<U, false>(bytes, std::make_index_sequence<sizeof(U)>{});
}

template <std::unsigned_integral U, ByteLike B>
constexpr void storeBig(B* bytes, U value) {
  store<U, true>(bytes, value, std::make_index_sequence<sizeof(U)>{});
}

template <std::unsigned_integral U, ByteLike B>
constexpr void storeLittle(B* bytes, U value) {
  store<U, false>(bytes, value, std::make_index_sequence<sizeof(U)>{});
}

}  // namespace byteorder

// Unsigned words. A signed field is the same bits: static_cast<std::int16_t>(loadBe16(p)).

template <ByteLike B>
constexpr std::uint16_t loadBe16(const B* bytes) {
  return byteorder::loadBig<std::uint16_t>(bytes);
}
template <ByteLike B>
constexpr std::uint32_t loadBe32(const B* bytes) {
  return byteorder::loadBig<std::uint32_t>(bytes);
}
template <ByteLike B>
constexpr std::uint64_t loadBe64(const B* bytes) {
  return byteorder::loadBig<std::uint64_t>(bytes);
}
template <ByteLike B>
constexpr std::uint16_t loadLe16(const B* bytes) {
  return byteorder::loadLittle<std::uint16_t>(bytes);
}
template <ByteLike B>
constexpr std::uint32_t loadLe32(const B* bytes) {
  return byteorder::loadLittle<std::uint32_t>(bytes);
}
template <ByteLike B>
constexpr std::uint64_t loadLe64(const B* bytes) {
  return byteorder::loadLittle<std::uint64_t>(bytes);
}

template <ByteLike B>
constexpr void storeBe16(B* bytes, std::uint16_t value) {
  byteorder::storeBig(bytes, value);
}
template <ByteLike B>
constexpr void storeBe32(B* bytes, std::uint32_t value) {
  byteorder::storeBig(bytes, value);
}
template <ByteLike B>
constexpr void storeBe64(B* bytes, std::uint64_t value) {
  byteorder::storeBig(bytes, value);
}
template <ByteLike B>
constexpr void storeLe16(B* bytes, std::uint16_t value) {
  byteorder::storeLittle(bytes, value);
}
template <ByteLike B>
constexpr void storeLe32(B* bytes, std::uint32_t value) {
  byteorder::storeLittle(bytes, value);
}
template <ByteLike B>
constexpr void storeLe64(B* bytes, std::uint64_t value) {
  byteorder::storeLittle(bytes, value);
}

// Signed words, for the fields of headers that are.

template <ByteLike B>
constexpr std::int16_t loadBeInt16(const B* bytes) {
  return static_cast<std::int16_t>(loadBe16(bytes));
}
template <ByteLike B>
constexpr std::int32_t loadBeInt32(const B* bytes) {
  return static_cast<std::int32_t>(loadBe32(bytes));
}
template <ByteLike B>
constexpr std::int16_t loadLeInt16(const B* bytes) {
  return static_cast<std::int16_t>(loadLe16(bytes));
}
template <ByteLike B>
constexpr std::int32_t loadLeInt32(const B* bytes) {
  return static_cast<std::int32_t>(loadLe32(bytes));
}

/// A packed 24-bit signed integer, most significant byte first as the field formats record it.
template <ByteLike B>
constexpr std::int32_t get3byte(const B* bytes) {
  const std::uint32_t high = std::uint32_t{loadBe16(bytes)} << 16;
  return static_cast<std::int32_t>(high | (std::uint32_t{static_cast<unsigned char>(bytes[2])} << 8)) >> 8;
}

// IEEE 754 floats.

template <ByteLike B>
constexpr float loadBeFloat(const B* bytes) {
  return std::bit_cast<float>(loadBe32(bytes));
}
template <ByteLike B>
constexpr double loadBeDouble(const B* bytes) {
  return std::bit_cast<double>(loadBe64(bytes));
}
template <ByteLike B>
constexpr float loadLeFloat(const B* bytes) {
  return std::bit_cast<float>(loadLe32(bytes));
}
template <ByteLike B>
constexpr double loadLeDouble(const B* bytes) {
  return std::bit_cast<double>(loadLe64(bytes));
}
template <ByteLike B>
constexpr void storeBeFloat(B* bytes, float value) {
  storeBe32(bytes, std::bit_cast<std::uint32_t>(value));
}
template <ByteLike B>
constexpr void storeBeDouble(B* bytes, double value) {
  storeBe64(bytes, std::bit_cast<std::uint64_t>(value));
}
template <ByteLike B>
constexpr void storeLeFloat(B* bytes, float value) {
  storeLe32(bytes, std::bit_cast<std::uint32_t>(value));
}
template <ByteLike B>
constexpr void storeLeDouble(B* bytes, double value) {
  storeLe64(bytes, std::bit_cast<std::uint64_t>(value));
}

/// `count` IEEE 754 floats, least byte first.
void loadLeFloats(const unsigned char* bytes, float* values, std::size_t count);
void storeLeFloats(unsigned char* bytes, const float* values, std::size_t count);

/// Swaps the bytes of each of `count` 16-bit words in place; `words` needs no alignment. Bytes behind the last whole
/// word are the caller's and stay.
void byteswap(void* words, std::size_t count);
/// Reverses each of `count` 32-bit words in place.
void longswap(void* words, std::size_t count);
/// Reverses each of `count` 64-bit words in place.
void doubleswap(void* words, std::size_t count);
