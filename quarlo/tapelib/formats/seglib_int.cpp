// Recorded integers: 16-bit words, high resolution, and the 20-bit formats whose groups share a word of exponents.
#include <cstddef>
#include <cstring>

#include "libkyr/byteorder.h"
#include "libkyr/vectors.h"
#include "quarlo/tapelib/formats/seglib.h"

namespace {

constexpr float kMilliVolts15 = 3.0517578e-08F;  // 2^-15 / 1000
constexpr float kTwoToMinus27 = 7.4505806e-09F;
constexpr int kGroupSamples = 4;
constexpr std::ptrdiff_t kWordBytes = 2;
constexpr std::ptrdiff_t kGroupBytes = (1 + kGroupSamples) * kWordBytes;

std::int16_t hostWord(const char* bytes) {
  std::int16_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// The two readings of an exponent nibble.
int upward(int mantissa, unsigned exponent) { return mantissa << exponent; }
int inverted(int mantissa, unsigned exponent) { return mantissa << (16U - exponent); }

// Sample `place` (0 to 3) of a 20-bit group; the first has the high nibble of the exponent word.
template <auto Scale>
int groupSample(const char* group, int place) {
  const unsigned exponents = loadBe16(group);
  return Scale(loadBeInt16(group + (1 + place) * kWordBytes), (exponents >> ((kGroupSamples - 1 - place) * 4)) & 0xFU);
}

// Decodes the whole scans and returns how many samples that were.
template <auto Scale>
int muxBin20(const char* data, const Bin20Layout& layout, int samples, int* xTrace) {
  if (layout.subscans < 1 || samples < 1) return 0;
  const int place = static_cast<int>(static_cast<unsigned>(layout.channel - 1) % kGroupSamples);
  const std::ptrdiff_t toNextSub = layout.bytesPerSub * kWordBytes;
  // With one subscan the distance is in bytes, rounded down to words; with more it is in words already.
  const std::ptrdiff_t toNextScan =
      layout.subscans == 1 ? layout.scanBytes / 2 * kWordBytes : layout.scanBytes * kWordBytes - toNextSub;
  const int decoded = samples / layout.subscans * layout.subscans;
  // Offsets, not a moving pointer: the last step would point beyond the data.
  std::ptrdiff_t offset = 0;
  for (int i = 0; i < decoded; ++i) {
    xTrace[i] = groupSample<Scale>(data + offset, place);
    offset += (i + 1) % layout.subscans == 0 ? toNextScan : toNextSub;
  }
  return decoded;
}

template <auto Scale>
int demuxBin20(const char* data, int samples, int* xTrace) {
  const int groups = samples / kGroupSamples;
  for (int group = 0; group < groups; ++group)
    for (int place = 0; place < kGroupSamples; ++place)
      xTrace[group * kGroupSamples + place] = groupSample<Scale>(data + group * kGroupBytes, place);
  return groups * kGroupSamples;
}

void convert(const int* xTrace, float* xOutTrace, int outInc, int samples) {
  vflt32(xTrace, 1, xOutTrace, outInc, samples);
}

void convertScaled(const int* xTrace, float* xOutTrace, int outInc, int samples, float unit) {
  convert(xTrace, xOutTrace, outInc, samples);
  vsmul(xOutTrace, outInc, unit, xOutTrace, outInc, samples);
}

int highResolution(std::int16_t word) {
  int mantissa = word >> 4;
  if (mantissa < 0) ++mantissa;
  return inverted(mantissa, static_cast<unsigned>(word) & 0xFU);
}

}  // namespace

void decodeBin16(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples, int* xTrace) {
  const std::ptrdiff_t step = scanBytes / 2 * kWordBytes;
  for (int i = 0; i < samples; ++i) xTrace[i] = hostWord(dataAddr + step * i);
  convert(xTrace, xOutTrace, outInc, samples);
}

void decodeBinHR(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples, int* xTrace) {
  const std::ptrdiff_t step = scanBytes / 2 * kWordBytes;
  for (int i = 0; i < samples; ++i) xTrace[i] = highResolution(hostWord(dataAddr + step * i));
  convertScaled(xTrace, xOutTrace, outInc, samples, kMilliVolts15);
}

void decodeBin20(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples,
                 int* xTrace) {
  convert(xTrace, xOutTrace, outInc, muxBin20<upward>(dataAddr, layout, samples, xTrace));
}

void decodeBin20A(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples,
                  int* xTrace) {
  convert(xTrace, xOutTrace, outInc, muxBin20<inverted>(dataAddr, layout, samples, xTrace));
}

void segdBin20(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples,
               int* xTrace) {
  convertScaled(xTrace, xOutTrace, outInc, muxBin20<upward>(dataAddr, layout, samples, xTrace), kMilliVolts15);
}

void segdBin20A(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples,
                int* xTrace) {
  segdBin20(xOutTrace, outInc, dataAddr, layout, samples, xTrace);
}

void segbBin20(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples,
               int* xTrace) {
  convertScaled(xTrace, xOutTrace, outInc, muxBin20<upward>(dataAddr, layout, samples, xTrace), kTwoToMinus27);
}

void segbBin20A(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples,
                int* xTrace) {
  convertScaled(xTrace, xOutTrace, outInc, muxBin20<inverted>(dataAddr, layout, samples, xTrace), kTwoToMinus27);
}

void decodeBin20de(float* xOutTrace, int outInc, const char* dataAddr, int samples, int* xTrace) {
  convert(xTrace, xOutTrace, outInc, demuxBin20<upward>(dataAddr, samples, xTrace));
}

void decodeBin20deA(float* xOutTrace, int outInc, const char* dataAddr, int samples, int* xTrace) {
  convert(xTrace, xOutTrace, outInc, demuxBin20<inverted>(dataAddr, samples, xTrace));
}

void segdBin20de(float* xOutTrace, int outInc, const char* dataAddr, int samples, int* xTrace, int invertedExponent) {
  if (invertedExponent != 0)
    decodeBin20deA(xOutTrace, outInc, dataAddr, samples, xTrace);
  else
    decodeBin20de(xOutTrace, outInc, dataAddr, samples, xTrace);
}

void decode3byte(const char* dataAddr, int* outTrace, int samples) {
  for (std::ptrdiff_t i = 0; i < samples; ++i) outTrace[i] = get3byte(dataAddr + 3 * i);
}

void decode20bitFloat(const char* inTrace, float* outTrace, int samples) {
  for (int done = 0; done + kGroupSamples <= samples; done += kGroupSamples, inTrace += kGroupBytes) {
    const auto exponent = [inTrace](int byte) { return static_cast<unsigned char>(inTrace[byte]) & 0xFU; };
    const auto mantissa = [inTrace](int word) { return hostWord(inTrace + word * kWordBytes); };
    const int values[kGroupSamples] = {upward(mantissa(1), exponent(1)), mantissa(2), upward(mantissa(3), exponent(0)),
                                       mantissa(4)};
    vflt32(values, 1, outTrace + done, 1, kGroupSamples);
  }
}
