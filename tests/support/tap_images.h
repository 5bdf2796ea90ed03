/// Cartridges and tape-image files of tests, made and read here independently of the program's own code.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

/// What a tape holds, in order: blocks, and filemarks as empty strings.
using Tape = std::vector<std::string>;

inline const std::string MARK;
/// What closes a tape behind its last block.
inline const Tape CLOSING = {MARK, MARK};

inline Tape operator+(Tape one, const Tape& other) {
  one.insert(one.end(), other.begin(), other.end());
  return one;
}

inline std::string word(std::uint32_t value) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift);
  return bytes;
}

inline std::uint32_t wordAt(const std::string& bytes, std::size_t place) {
  std::uint32_t value = 0;
  for (int i = 3; i >= 0; --i)
    value = value << 8 | static_cast<unsigned char>(bytes.at(place + static_cast<std::size_t>(i)));
  return value;
}

/// A block of `length` bytes that depend on `seed`.
inline std::string block(std::size_t length, unsigned seed) {
  std::string bytes(length, '\0');
  for (char& byte : bytes) {
    seed = seed * 1103515245U + 12345U;
    byte = static_cast<char>(seed >> 16);
  }
  return bytes;
}

/// The tape in the SIMH tape format. @param badBlocks places in the tape whose record is marked unreadable
inline std::string tapImage(const Tape& tape, const std::vector<std::size_t>& badBlocks = {}) {
  std::string image;
  for (std::size_t i = 0; i < tape.size(); ++i) {
    if (tape[i].empty()) {
      image += word(0);
      continue;
    }
    std::uint32_t length = static_cast<std::uint32_t>(tape[i].size());
    for (const std::size_t bad : badBlocks) length |= bad == i ? 0x80000000U : 0U;
    image += word(length) + tape[i] + std::string(tape[i].size() % 2, '\0') + word(length);
  }
  return image;
}

/// What a cartridge file holds; it ends at an end-of-medium marker or at the end of the file.
inline Tape tapeOf(const std::string& image) {
  Tape tape;
  std::size_t place = 0;
  while (place + 4 <= image.size()) {
    const std::uint32_t length = wordAt(image, place);
    place += 4;
    if (length == 0xFFFFFFFFU) break;
    if (length == 0) {
      tape.push_back(MARK);
      continue;
    }
    const std::size_t size = length & 0x00FFFFFFU;
    tape.push_back(image.substr(place, size));
    place += size + size % 2 + 4;
  }
  return tape;
}

/// One header of a tape-image file.
inline std::string tpfHeader(std::uint32_t length, std::uint32_t type, std::uint32_t marker,
                             std::uint32_t reserved = 0xFFFFFFFFU) {
  std::string bytes = word(length) + word(type);
  for (int i = 0; i < 5; ++i) bytes += word(reserved);
  return bytes + word(marker);
}

/// The tape as a tape-image file, its filemarks as they stand.
inline std::string tpfImage(const Tape& tape, std::uint32_t type = 0x1000001U, std::uint32_t reserved = 0xFFFFFFFFU) {
  std::string image = "1vlt" + std::string(28, '\0');
  for (const std::string& item : tape) {
    image +=
        tpfHeader(static_cast<std::uint32_t>(item.size()), type, item.empty() ? 0xF0F0F0F0U : 0xFFFFFFFFU, reserved);
    image += item;
  }
  return image;
}

/// What a tape-image file holds; bytes at its end that are no whole header are an item too.
inline Tape tpfTape(const std::string& image) {
  Tape tape;
  for (std::size_t place = 32; place < image.size(); place += 32 + tape.back().size()) {
    const bool header = image.size() >= place + 32;
    const bool mark = header && wordAt(image, place + 28) == 0xF0F0F0F0U;
    tape.push_back(header ? image.substr(place + 32, mark ? 0 : wordAt(image, place)) : image.substr(place));
  }
  return tape;
}

/// A tape in short: the length and a hash of each block, "mark" for a filemark. What tests compare, so that a
/// difference can be read.
inline std::string shortly(const std::string& item) {
  std::uint32_t hash = 2166136261U;
  for (const char byte : item) hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
  return item.empty() ? "mark" : std::to_string(item.size()) + "#" + std::to_string(hash % 10000);
}

inline std::vector<std::string> shortly(const Tape& tape) {
  std::vector<std::string> items;
  for (const std::string& item : tape) items.push_back(shortly(item));
  return items;
}

/// A tape-image file in short: every header's words where they are not the usual ones, every block.
inline std::vector<std::string> tpfShortly(const std::string& image) {
  std::vector<std::string> items = {shortly(image.substr(0, 32))};
  std::size_t place = 32;
  while (place + 32 <= image.size()) {
    const std::string header = image.substr(place, 32);
    const bool mark = wordAt(header, 28) == 0xF0F0F0F0U;
    const std::size_t length = mark ? 0 : wordAt(header, 0);
    const std::string data = image.substr(place + 32, length);
    items.push_back((mark ? "mark" : shortly(data)) + " in " + shortly(header));
    place += 32 + data.size();
  }
  if (place < image.size()) items.push_back("and " + shortly(image.substr(place)));
  return items;
}
