#include "libkyr/fft.h"

#include <algorithm>
#include <complex>
#include <cstddef>
#include <kissfft/kissfft.hh>
#include <memory>
#include <new>
#include <vector>

namespace {

using Complex = std::complex<double>;

// What a transform of one length needs. Traces of a job share it: most of them have the length of the one before.
struct Workspace {
  explicit Workspace(std::size_t length) : plan(length / 2, false), values(length), spectrum(length / 2) {}

  kissfft<double> plan;
  std::vector<double> values;
  std::vector<Complex> spectrum;
};

Workspace& workspaceOf(std::size_t length) {
  static thread_local std::unique_ptr<Workspace> kept;
  if (!kept || kept->values.size() != length) {
    kept.reset();
    kept = std::make_unique<Workspace>(length);
  }
  return *kept;
}

}  // namespace

bool kyrpackedrfft(float* data, int n) {
  if (data == nullptr || n < 2 || n % 2 != 0) return false;
  const auto length = static_cast<std::size_t>(n);
  try {
    Workspace& work = workspaceOf(length);
    std::copy_n(data, length, work.values.begin());
    work.plan.transform_real(work.values.data(), work.spectrum.data());
    for (const Complex& value : work.spectrum) {
      *data++ = static_cast<float>(value.real());
      *data++ = static_cast<float>(value.imag());
    }
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}
