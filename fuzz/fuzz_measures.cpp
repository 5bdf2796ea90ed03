// Any bytes as the samples of a trace: what instrument tests take of it never leaves the trace, and the stretches that
// they measure lie in it.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "libkyr/vectors.h"
#include "quarlo/instruments/crossings.h"
#include "quarlo/instruments/harmonics.h"

namespace {

constexpr int kMostSamples = 2048;
constexpr float kInterval = 0.002F;

void require(bool holds) {
  if (!holds) std::abort();
}

void byCorrelation(std::vector<float> trace) {
  const int n = static_cast<int>(trace.size());
  float mean = 0;
  const double fundamental = GetFundamental(trace.data(), n, kInterval, &mean);
  int first = 0;
  int last = 0;
  const bool isWave = FindFirstLastCrossings(trace.data(), n, &first, &last);
  require(!isWave || (first > 0 && last > first && last < n));
  require(isWave || fundamental == 0);
  if (fundamental == 0) return;
  std::vector<float> sines(trace.size());
  std::vector<float> cosines(trace.size());
  double dc = 0;
  distortionOf(fundamental, kInterval, 5, [&](int number) {
    return number > 8 ? 0.0
                      : AmplitudeAt(trace.data(), n, kInterval, fundamental, number * fundamental, sines.data(),
                                    cosines.data(), &dc);
  });
}

void byTransform(const std::vector<float>& trace) {
  const int n = static_cast<int>(trace.size());
  const int length = power_of_two(2 * n);
  std::vector<float> buffer(trace);
  buffer.resize(static_cast<std::size_t>(length) + 2);
  const auto found = transform(buffer.data(), n, length);
  require(found && found->fundamental >= 1);
  distortionOf(found->fundamental / (length * double{kInterval}), kInterval, 5,
               [&](int number) { return found->harmonic(number); });
}

void levels(std::vector<float> trace) {
  const int n = static_cast<int>(trace.size());
  const auto [samples, count] = wholeCycles(trace.data(), n, true);
  require(samples >= trace.data() && count >= 1 && samples + count <= trace.data() + n);
  cycleLevel(trace.data(), n, false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<float> trace(size / sizeof(float));
  if (trace.empty() || trace.size() > kMostSamples) return 0;
  std::memcpy(trace.data(), data, trace.size() * sizeof(float));
  byCorrelation(trace);
  byTransform(trace);
  levels(trace);
  return 0;
}
