/// The frequency of a recorded sine, and the levels of its harmonics.
#pragma once

#include <functional>
#include <optional>
#include <vector>

// ---- by correlation -----------------------------------------------------------------------------------------------

/// Whole cycles of a sine, from behind its first upward crossing to before its last.
/// @return false when there are none, with two samples at least
bool FindFirstLastCrossings(const float* trace, int nt, int* first, int* last);
/// The frequency in Hz by the changes of sign in that stretch, which it takes one sample interval too short.
/// @param dc receives the stretch's mean @return 0 when there is no wave
double GetFundamental(const float* trace, int n, float dt, float* dc);
/// The amplitude at a frequency over that stretch, whose mean is taken off the trace for good. It grows with the root
/// of the stretch's length.
/// @param sines, cosines room for `nt` floats each @param dc receives the sum of the stretch
/// @return -1 when there is no wave
double AmplitudeAt(float* trace, int nt, double dt, double fundamental, double freq, float* sines, float* cosines,
                   double* dc);

// ---- by transform -------------------------------------------------------------------------------------------------

/// C = A in a Hamming window of n samples, which does not come back to its beginning. Strides are in elements; C may
/// lie over A.
void kyrhamm(const float* a, int ia, float* c, int ic, int n);

/// The magnitudes of a trace's transform; it stands in the trace's buffer.
struct Magnitudes {
  const float* pairs;  ///< magnitude and phase of each bin
  int bins;
  int fundamental;  ///< the bin of the strongest, at least 1

  /// 0 beyond the last bin.
  double harmonic(int number) const;
};
/// Windows a trace and transforms it in place.
/// @param trace `samples` of them, in a buffer of `length` floats that all take part @param length a power of two
/// @return nothing when memory is short
std::optional<Magnitudes> transform(float* trace, int samples, int length);

// ---- distortion ---------------------------------------------------------------------------------------------------

struct Distortion {
  double fundamental = 0;           ///< Hz
  double fundAmp = 0;               ///< its amplitude
  std::vector<double> harmonics{};  ///< the first of them, from the second on, in percent of the fundamental
  float thd = 0;                    ///< the root of the sum of all squares, in percent
};
/// All harmonics up to half the sampling frequency.
/// @param kept how many of them are told one by one
/// @param amplitude of the harmonic of that number, from 1, the fundamental; negative for no measure
/// @return nothing when there is no harmonic at all, or one without measure
std::optional<Distortion> distortionOf(double fundamental, float interval, int kept,
                                       const std::function<double(int number)>& amplitude);
