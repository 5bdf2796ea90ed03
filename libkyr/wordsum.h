/// The sum that guards headers and traces of datasets.
#pragma once

#include <cstddef>
#include <cstdint>

/// A sum of 64-bit little-endian words, carried by four lanes: word i goes into lane i mod 4 as
/// lane = rotl((lane ^ word) x odd, 29), the lanes start from `seed` and are folded likewise at the end. Every step can
/// be undone, so a change within one word always changes the sum. Exactly: docs/format-kyr.md.
/// @param count bytes, a multiple of 8
std::uint64_t wordSum(std::uint64_t seed, const unsigned char* bytes, std::size_t count);
