#include "quarlo/tapelib/formats/seglib.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

#include "libkyr/byteorder.h"
#include "libkyr/nullvalue.h"
#include "libkyr/vectors.h"

namespace {

// Bytes of a field of the given length code that lie within the header; 0 when it begins outside.
std::size_t fieldBytes(int position, int length, int headerBytes) {
  const int end = std::min(headerBytes, kMaxHeaderBytes);
  if (position < 1 || position > end) return 0;
  return static_cast<std::size_t>(std::min(length == 1 ? 2 : 4, end - position + 1));
}

template <typename Integer>
int readField(const char* field, std::size_t bytes) {
  Integer value = 0;
  std::memcpy(&value, field, bytes);
  return value;
}

template <typename Integer>
void writeField(char* field, int value, std::size_t bytes) {
  const auto stored = static_cast<Integer>(value);
  std::memcpy(field, &stored, bytes);
}

void applyGainCode(float& gain, const char* word) {
  const unsigned code = (loadLe16(word) >> 4) & 0x1FU;
  if (code != 0) gain *= static_cast<float>(code);
}

// The codes of `traces` traces that stand `distance` bytes apart.
void applyGainCodes(const char* header, float* headGain, int traces, int distance) {
  constexpr int kFirstCode = 21;
  for (int i = 0; i < traces; ++i) {
    const char* codes = header + kFirstCode + std::ptrdiff_t{distance} * i;
    applyGainCode(headGain[i], codes);
    applyGainCode(headGain[i], codes + 1);
  }
}

unsigned nibble(const char* digits, int index) {
  const auto byte = static_cast<unsigned char>(digits[index / 2]);
  return index % 2 == 0 ? byte >> 4 : byte & 0xFU;
}

}  // namespace

int decodeField(const void* traceheader, int position, int length, int headerBytes) {
  const std::size_t bytes = fieldBytes(position, length, headerBytes);
  if (bytes == 0) return kInvalidField;
  const char* field = static_cast<const char*>(traceheader) + position - 1;
  return length == 1 ? readField<std::int16_t>(field, bytes) : readField<std::int32_t>(field, bytes);
}

void encodeField(void* traceheader, int value, int position, int length, int headerBytes) {
  const std::size_t bytes = fieldBytes(position, length, headerBytes);
  if (bytes == 0 || IsValueNull(value)) return;
  char* field = static_cast<char*>(traceheader) + position - 1;
  if (length == 1)
    writeField<std::int16_t>(field, value, bytes);
  else
    writeField<std::int32_t>(field, value, bytes);
}

void getHeaderGain(const int* muxHeader, float* headGain, int numTr, int numAuxTr, int inType, int applyGain) {
  const int all = numTr + numAuxTr;
  const auto* header = reinterpret_cast<const char*>(muxHeader);
  vfill(1.0F, headGain, 1, all);
  if (applyGain == 0) return;
  if (inType == 0 || inType == 1 || inType == 4) applyGainCodes(header, headGain, all, 2);
  if (inType == 2) applyGainCodes(header, headGain, numTr, 4);
}

int unbcd(const char* dataptr, int byteStart, int whichBits, int number) {
  if (whichBits != 1 && whichBits != 2) return 0;
  const char* digits = dataptr + byteStart;
  const int first = whichBits - 1;
  std::int64_t value = 0;
  for (int i = 0; i < number && value <= std::numeric_limits<int>::max(); ++i)
    value = value * 10 + nibble(digits, first + i);
  return static_cast<int>(std::min<std::int64_t>(value, std::numeric_limits<int>::max()));
}
