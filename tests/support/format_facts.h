/// What independent readers found in the recordings of others: lines of JSON, a file each, where QUARLO_SHARED_DATA
/// names their folder.
#pragma once

#include <bit>
#include <cstdint>
#include <span>
#include <string>

/// The CRC-32 of samples as little-endian words. @param before that of the samples before them
inline std::uint32_t crc32(std::span<const float> samples, std::uint32_t before = 0) {
  std::uint32_t crc = ~before;
  for (const float sample : samples)
    for (int byte = 0; byte < 4; ++byte) {
      crc ^= (std::bit_cast<std::uint32_t>(sample) >> (8 * byte)) & 0xFFU;
      for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xEDB88320U & (0U - (crc & 1U)));
    }
  return ~crc;
}

/// The value behind a key, or the words of its list, as they stand in a line from `from` on.
inline std::string fact(const std::string& line, const std::string& key, std::size_t from = 0) {
  const std::size_t place = line.find("\"" + key + "\": ", from) + key.size() + 4;
  const std::string ends = line[place] == '[' ? "]" : ",}";
  return line.substr(place, line.find_first_of(ends, place) - place);
}
