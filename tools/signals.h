/// The signals of test recordings, in volts.
#pragma once

#include <cstdint>
#include <vector>

namespace recordings {

enum class Shape { Sine, Square, Dc, Noise, Impulse };

struct Signal {
  Shape shape = Shape::Dc;
  double level = 0;                 ///< volts: the peak, of noise the root mean square
  double place = 0;                 ///< hertz of a sine or a square, the sample of an impulse (from 1)
  double phase = 0;                 ///< degrees
  unsigned seed = 1;                ///< of noise
  std::vector<double> harmonics{};  ///< as factors of the sine's level, from the second harmonic on
};

/// Which trace of a recording it is: noise differs from trace to trace.
struct TracePlace {
  unsigned record;
  unsigned trace;
  double interval;  ///< seconds from sample to sample
};

/// Adds a signal, `factor` times as large, to a trace.
void addSignal(const Signal& signal, double factor, const TracePlace& place, std::vector<double>& trace);

}  // namespace recordings
