// Every codec over any bytes. The first bytes choose the decoder and its numbers; the data and the output are exactly
// as large as the header promises to keep to, so that the sanitizers see one step too far.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "libkyr/byteorder.h"
#include "libkyr/ibmfloat.h"
#include "quarlo/tapelib/formats/seglib.h"

namespace {

struct Input {
  const std::uint8_t* bytes;
  std::size_t size;

  std::uint8_t next() {
    if (size == 0) return 0;
    --size;
    return *bytes++;
  }
  int nextInt() {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = (value << 8) | next();
    return static_cast<int>(value);
  }
  // What is left, in a block of its own.
  std::vector<char> rest() const { return {bytes, bytes + size}; }
};

int count(std::size_t bytes, std::size_t each) { return static_cast<int>(bytes / each); }

void samples(std::uint8_t decoder, const std::vector<char>& data) {
  std::vector<float> out(data.size());
  std::vector<int> work(data.size());
  const char* in = data.data();
  const int words = count(data.size(), 2);
  const int groups = count(data.size(), 10);
  switch (decoder % 12) {
    case 0:
      return decodeBin16(out.data(), 1, in, 2, words, work.data());
    case 1:
      return decodeBinHR(out.data(), 1, in, 2, words, work.data());
    case 2:
      return segdBin20de(out.data(), 1, in, groups * 4, work.data(), 0);
    case 3:
      return segdBin20de(out.data(), 1, in, groups * 4 + 3, work.data(), 1);
    case 4:
      return decode3byte(in, work.data(), count(data.size(), 3));
    case 5:
      return decode20bitFloat(in, out.data(), groups * 4 + 3);
    case 6:
      return decodeHex8de(out.data(), 1, in, count(data.size(), 1));
    case 7:
      return decodeHex16de(out.data(), 1, in, words);
    case 8:
      return decodeQuat8de(out.data(), 1, in, count(data.size(), 1));
    case 9:
      return decodeQuat16(out.data(), 1, in, 2, words);
    case 10:
      return decodeQuat16de(out.data(), 1, in, words);
    default:
      break;
  }
  std::vector<char> copy = data;
  Ibm2Float(copy.data(), copy.size() / 4);
  Float2Ibm(copy.data(), copy.size() / 4);
}

// One channel of groups of 10 bytes that stand one behind the other, `subscans` to a scan.
void multiplexed(Input input) {
  const int subscans = input.next() % 6;
  const int channel = input.next();
  const auto decoder = input.next() % 4;
  const std::vector<char> data = input.rest();
  const int wanted = count(data.size(), 10);
  std::vector<float> out(static_cast<std::size_t>(wanted));
  std::vector<int> work(static_cast<std::size_t>(wanted));
  // 10 bytes with one subscan; 10 words, less the 5 of a subscan, with more: the groups touch in both cases.
  const Bin20Layout layout{.scanBytes = 10, .subscans = subscans, .bytesPerSub = 5, .channel = channel};
  decltype(&decodeBin20) const decoders[] = {decodeBin20, decodeBin20A, segdBin20, segbBin20A};
  decoders[decoder](out.data(), 1, data.data(), layout, wanted, work.data());
}

void fields(Input input) {
  const int position = input.nextInt();
  const int length = input.next();
  const int value = input.nextInt();
  std::vector<char> header = input.rest();
  const int bytes = count(header.size(), 1);
  encodeField(header.data(), value, position, length, bytes);
  encodeField(header.data(), value, position % (bytes + 2), length, bytes);
  decodeField(header.data(), position, length, bytes);
  decodeField(header.data(), position % (bytes + 2), length, bytes);
  unbcd(header.data(), 0, 1, 2 * bytes);
  unbcd(header.data(), 0, 2, std::max(0, 2 * bytes - 1));
}

void text(Input input) {
  int a2e[kA2eTableSize];
  int e2a[kE2aTableSize];
  initascebc(a2e, e2a);
  std::vector<char> line = input.rest();
  const int bytes = count(line.size(), 1);
  line.push_back('x');
  asc2ebc(line.data(), line.data(), bytes, a2e);
  ebc2asc(line.data(), line.data(), bytes, e2a);
}

void gains(Input input) {
  const int type = input.next() % 5;
  const std::vector<char> data = input.rest();
  if (data.size() < 24) return;
  std::vector<int> header((data.size() + 3) / 4);
  std::copy(data.begin(), data.end(), reinterpret_cast<char*>(header.data()));
  const int traces = count(data.size() - 24, type == 2 ? 4 : 2) + 1;
  std::vector<float> gain(static_cast<std::size_t>(traces));
  getHeaderGain(header.data(), gain.data(), traces, 0, type, 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  Input input{bytes, size};
  switch (const std::uint8_t what = input.next(); what % 5) {
    case 0:
      multiplexed(input);
      break;
    case 1:
      fields(input);
      break;
    case 2:
      text(input);
      break;
    case 3:
      gains(input);
      break;
    default:
      samples(static_cast<std::uint8_t>(what / 5), input.rest());
  }
  return 0;
}
