/// SEG Y files of tests, made and read here independently of the program's own code.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

inline void putBig(std::string* bytes, std::size_t place, std::uint32_t value, int size = 4) {
  for (int i = 0; i < size; ++i)
    bytes->at(place + static_cast<std::size_t>(i)) = static_cast<char>(value >> (8 * (size - 1 - i)));
}

inline std::int32_t bigAt(const std::string& bytes, std::size_t place) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes.at(place + i));
  return static_cast<std::int32_t>(value);
}

/// The words of a test trace: field file (byte 9), trace (13), the default limit keys (193 and 21).
struct TraceWords {
  std::int32_t fieldFile = 1;
  std::int32_t trace = 1;
  std::int32_t primary = 0;
  std::int32_t secondary = 0;
};

/// A trace of 4-byte samples; `serial` stands in bytes 1-4 and in every sample, so that each trace is told from all
/// others.
inline std::string segyTrace(const TraceWords& words, int samples, int serial = 0, int sampleBytes = 4) {
  std::string bytes(240 + static_cast<std::size_t>(samples) * static_cast<std::size_t>(sampleBytes), '\0');
  putBig(&bytes, 0, static_cast<std::uint32_t>(serial));
  putBig(&bytes, 8, static_cast<std::uint32_t>(words.fieldFile));
  putBig(&bytes, 12, static_cast<std::uint32_t>(words.trace));
  putBig(&bytes, 20, static_cast<std::uint32_t>(words.secondary));
  putBig(&bytes, 114, static_cast<std::uint32_t>(samples), 2);
  putBig(&bytes, 192, static_cast<std::uint32_t>(words.primary));
  for (std::size_t place = 240; place + 4 <= bytes.size(); place += 4)
    putBig(&bytes, place, static_cast<std::uint32_t>(serial) * 7919U + static_cast<std::uint32_t>(place));
  return bytes;
}

inline std::string segyText(char letter = 'C') { return std::string(3200, letter); }

inline std::string segyBinary(int samples, int format = 1, int interval = 2000) {
  std::string bytes(400, '\0');
  putBig(&bytes, 16, static_cast<std::uint32_t>(interval), 2);
  putBig(&bytes, 20, static_cast<std::uint32_t>(samples), 2);
  putBig(&bytes, 24, static_cast<std::uint32_t>(format), 2);
  return bytes;
}

inline std::string joined(const std::vector<std::string>& parts) {
  std::string all;
  for (const std::string& part : parts) all += part;
  return all;
}

inline std::string segyFile(const std::vector<std::string>& traces, int samples, int format = 1) {
  return segyText() + segyBinary(samples, format) + joined(traces);
}

/// Bytes 1-4 of every trace behind 3600 bytes of headers.
inline std::vector<int> serialsOf(const std::string& file, std::size_t traceBytes) {
  std::vector<int> serials;
  for (std::size_t place = 3600; place + traceBytes <= file.size(); place += traceBytes)
    serials.push_back(bigAt(file, place));
  return serials;
}
