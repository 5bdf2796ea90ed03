// The transform of a trace of 8192 samples against the bare library, which is given its values in double precision.
#include <complex>
#include <cstdio>
#include <kissfft/kissfft.hh>
#include <vector>

#include "bench/measure.h"
#include "libkyr/fft.h"

int main() {
  constexpr int n = 8192;
  constexpr int traces = 2000;
  std::vector<float> trace(n);
  std::vector<double> values(n);
  for (int j = 0; j < n; ++j) values[static_cast<std::size_t>(j)] = (j * 7919 % 1013) / 1013.0 - 0.5;
  std::vector<std::complex<double>> spectrum(n / 2);
  const kissfft<double> plan(n / 2, false);
  const auto ours = [&] {
    for (int k = 0; k < traces; ++k) {
      for (std::size_t j = 0; j < values.size(); ++j) trace[j] = static_cast<float>(values[j]);
      if (!kyrpackedrfft(trace.data(), n)) std::exit(1);
    }
  };
  const auto bare = [&] {
    for (int k = 0; k < traces; ++k) plan.transform_real(values.data(), spectrum.data());
  };
  bench::compare("FFT of 8192 samples", double{n} * sizeof(float) * traces, ours, "bare", bare, 1.3);
  return 0;
}
