#include "tools/signals.h"

#include <cmath>
#include <numbers>
#include <random>

namespace recordings {

namespace {

/// Whole cycles are taken off before the sine is, so that a late sample is as exact as the first.
double sineOfCycles(double cycles) { return std::sin(2 * std::numbers::pi * (cycles - std::floor(cycles))); }

double sineAt(const Signal& signal, double cycles) {
  double sum = sineOfCycles(cycles);
  for (std::size_t i = 0; i < signal.harmonics.size(); ++i)
    sum += signal.harmonics[i] * sineOfCycles(static_cast<double>(i + 2) * cycles);
  return sum;
}

double squareAt(double cycles) { return cycles - std::floor(cycles) < 0.5 ? 1 : -1; }

/// Gaussian noise, brought to a mean of 0 and a root mean square of 1 over the trace: what a test has to measure is
/// then known to the last digit.
std::vector<double> noise(const Signal& signal, const TracePlace& place, std::size_t count) {
  std::seed_seq seed{signal.seed, place.record, place.trace};
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  std::vector<double> values(count);
  double sum = 0;
  for (double& value : values) sum += value = normal(random);
  const double mean = sum / static_cast<double>(count);
  double squares = 0;
  for (double& value : values) {
    value -= mean;
    squares += value * value;
  }
  const double rms = std::sqrt(squares / static_cast<double>(count));
  for (double& value : values) value = rms > 0 ? value / rms : 0;
  return values;
}

}  // namespace

void addSignal(const Signal& signal, double factor, const TracePlace& place, std::vector<double>& trace) {
  const double level = factor * signal.level;
  const auto cycles = [&](std::size_t k) {
    return signal.place * static_cast<double>(k) * place.interval + signal.phase / 360;
  };
  switch (signal.shape) {
    case Shape::Sine:
      for (std::size_t k = 0; k < trace.size(); ++k) trace[k] += level * sineAt(signal, cycles(k));
      return;
    case Shape::Square:
      for (std::size_t k = 0; k < trace.size(); ++k) trace[k] += level * squareAt(cycles(k));
      return;
    case Shape::Dc:
      for (double& value : trace) value += level;
      return;
    case Shape::Noise: {
      const std::vector<double> values = noise(signal, place, trace.size());
      for (std::size_t k = 0; k < trace.size(); ++k) trace[k] += level * values[k];
      return;
    }
    case Shape::Impulse:
      if (signal.place >= 1 && signal.place <= static_cast<double>(trace.size()))
        trace[static_cast<std::size_t>(signal.place) - 1] += level;
      return;
  }
}

}  // namespace recordings
