#include "quarlo/instruments/harmonics.h"

#include <algorithm>
#include <cmath>

#include "libkyr/fft.h"
#include "libkyr/vectors.h"

// ---- by correlation -----------------------------------------------------------------------------------------------

/// A sample of 0 is where an upward crossing ends, but not where the last one does.
bool FindFirstLastCrossings(const float* trace, int nt, int* first, int* last) {
  int i = 0;
  while (i < nt - 1 && !(trace[i] < 0 && trace[i + 1] >= 0)) ++i;
  int j = nt - 2;
  while (j >= 0 && !(trace[j + 1] > 0 && trace[j] <= 0)) --j;
  *first = i + 1;
  *last = j;
  return i < nt - 1 && *last > *first;
}

double GetFundamental(const float* trace, int n, float dt, float* dc) {
  int first = 0;
  int last = 0;
  if (!FindFirstLastCrossings(trace, n, &first, &last)) return 0;
  int changes = 0;
  for (int k = first; k < last; ++k) changes += (trace[k] > 0) != (trace[k + 1] > 0) ? 1 : 0;
  *dc = sve(trace + first, 1, last - first + 1) / static_cast<float>(last - first + 1);
  return changes == 0 ? 0 : (changes + 1) / (2.0 * (last - first) * dt);
}

double AmplitudeAt(float* trace, int nt, double dt, double /*fundamental*/, double freq, float* sines, float* cosines,
                   double* dc) {
  const double twoPi = 2 * std::acos(-1.0);
  const double wdt = freq * twoPi * dt;
  int first = 0;
  int last = 0;
  if (!FindFirstLastCrossings(trace, nt, &first, &last)) return -1;
  const int m = last - first + 1;
  float* const stretch = trace + first;
  const float sum = sve(stretch, 1, m);
  *dc = sum;
  vsadd(stretch, 1, -sum / static_cast<float>(m), stretch, 1, m);
  vramp(0, wdt, sines, 1, m);
  vmov(sines, 1, cosines, 1, m);
  vsin(sines, 1, sines, 1, m);
  vcos(cosines, 1, cosines, 1, m);
  vmul(sines, 1, stretch, 1, sines, 1, m);
  vmul(cosines, 1, stretch, 1, cosines, 1, m);
  const double rPart = sve(cosines, 1, m);
  const double iPart = sve(sines, 1, m);
  return std::sqrt((rPart * rPart + iPart * iPart) / m);
}

// ---- by transform -------------------------------------------------------------------------------------------------

void kyrhamm(const float* a, int ia, float* c, int ic, int n) {
  constexpr float kTwoPi = 6.2831855F;
  for (long k = 0; k < n; ++k)
    c[k * ic] = static_cast<float>((0.54 - 0.46 * std::cos(double{kTwoPi} * static_cast<double>(k) / n)) * a[k * ia]);
}

double Magnitudes::harmonic(int number) const {
  const long bin = static_cast<long>(number) * fundamental;
  return bin < bins ? pairs[2 * bin] : 0;
}

std::optional<Magnitudes> transform(float* trace, int samples, int length) {
  kyrhamm(trace, 1, trace, 1, samples);
  if (!kyrpackedrfft(trace, length)) return std::nullopt;
  polar(trace, 2, trace, 2, length / 2);
  return Magnitudes{trace, length / 2, std::max(maxvi(trace, 2, length / 2 - 2).index / 2, 1)};
}

// ---- distortion ---------------------------------------------------------------------------------------------------

std::optional<Distortion> distortionOf(double fundamental, float interval, int kept,
                                       const std::function<double(int number)>& amplitude) {
  Distortion found{.fundamental = fundamental};
  const double bound = 1.0 / (2.0 * interval) / fundamental;
  double sumSquares = 0;
  int ih = 0;
  for (; ih < bound; ++ih) {
    const double thisAmp = amplitude(ih + 1);
    if (thisAmp < 0) return std::nullopt;
    if (ih == 0) {
      found.fundAmp = thisAmp;
      continue;
    }
    sumSquares += thisAmp * thisAmp;
    if (ih <= kept) found.harmonics.push_back(thisAmp * 100.0 / found.fundAmp);
  }
  found.thd = static_cast<float>(std::sqrt(sumSquares / (found.fundAmp * found.fundAmp)) * 100.0);
  return ih > 0 ? std::optional(found) : std::nullopt;
}
