#include "libkyr/vectors.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>

#include "libkyr/vectorized.h"

namespace {

// Element k of a strided vector; the product is wider than an int.
template <typename T>
T& at(T* a, int stride, int k) {
  return a[std::ptrdiff_t{stride} * k];
}

// Elements in a row become vectors of the machine; the results are the same to the bit.
template <typename T, typename F>
[[gnu::always_inline]] inline void map(const T* a, int ia, float* c, int ic, int n, F f) {
  if (ia == 1 && ic == 1) {
    for (int k = 0; k < n; ++k) c[k] = f(a[k]);
    return;
  }
  for (int k = 0; k < n; ++k) at(c, ic, k) = f(at(a, ia, k));
}

template <typename F>
[[gnu::always_inline]] inline void map(const float* a, int ia, const float* b, int ib, float* c, int ic, int n, F f) {
  if (ia == 1 && ib == 1 && ic == 1) {
    for (int k = 0; k < n; ++k) c[k] = f(a[k], b[k]);
    return;
  }
  for (int k = 0; k < n; ++k) at(c, ic, k) = f(at(a, ia, k), at(b, ib, k));
}

template <typename F>
double sum(const float* a, int ia, int n, F f) {
  double total = 0.0;
  for (int k = 0; k < n; ++k) total += f(double{at(a, ia, k)});
  return total;
}

// The first element that `better` prefers to all before it.
template <typename F>
float best(const float* a, int ia, int n, F better) {
  float found = n > 0 ? *a : 0.0F;
  for (int k = 1; k < n; ++k)
    if (better(at(a, ia, k), found)) found = at(a, ia, k);
  return found;
}

float mean(double total, int n) {
  return n > 0 ? static_cast<float>(total / n) : std::numeric_limits<float>::quiet_NaN();
}

}  // namespace

void vfill(float value, float* c, int ic, int n) {
  for (int k = 0; k < n; ++k) at(c, ic, k) = value;
}

void vclr(float* c, int ic, int n) { vfill(0.0F, c, ic, n); }

void vmov(const float* a, int ia, float* c, int ic, int n) {
  map(
      a, ia, c, ic, n, [](float x) { return x; });
}

void vramp(double start, double increment, float* c, int ic, int n) {
  for (int k = 0; k < n; ++k) at(c, ic, k) = static_cast<float>(start + k * increment);
}

KYR_VECTORIZED void vflt32(const int* a, int ia, float* c, int ic, int n) {
  map(
      a, ia, c, ic, n, [](int x) { return static_cast<float>(x); });
}

KYR_VECTORIZED void vsadd(const float* a, int ia, float b, float* c, int ic, int n) {
  map(
      a, ia, c, ic, n, [b](float x) { return x + b; });
}

KYR_VECTORIZED void vsmul(const float* a, int ia, float b, float* c, int ic, int n) {
  map(
      a, ia, c, ic, n, [b](float x) { return x * b; });
}

KYR_VECTORIZED void vadd(const float* a, int ia, const float* b, int ib, float* c, int ic, int n) {
  map(
      a, ia, b, ib, c, ic, n, [](float x, float y) { return x + y; });
}

KYR_VECTORIZED void vsub(const float* a, int ia, const float* b, int ib, float* c, int ic, int n) {
  map(
      a, ia, b, ib, c, ic, n, [](float x, float y) { return y - x; });
}

KYR_VECTORIZED void vmul(const float* a, int ia, const float* b, int ib, float* c, int ic, int n) {
  map(
      a, ia, b, ib, c, ic, n, [](float x, float y) { return x * y; });
}

void vsin(const float* a, int ia, float* c, int ic, int n) {
  map(
      a, ia, c, ic, n, [](float x) { return std::sin(x); });
}

void vcos(const float* a, int ia, float* c, int ic, int n) {
  map(
      a, ia, c, ic, n, [](float x) { return std::cos(x); });
}

void polar(const float* a, int ia, float* c, int ic, int n) {
  for (int k = 0; k < n; ++k) {
    const float* pair = &at(a, ia, k);
    const float real = pair[0];
    const float imaginary = pair[1];
    float* result = &at(c, ic, k);
    result[0] = std::hypot(real, imaginary);
    result[1] = std::atan2(imaginary, real);
  }
}

float sve(const float* a, int ia, int n) {
  return static_cast<float>(sum(
      a, ia, n, [](double x) { return x; }));
}

float meanv(const float* a, int ia, int n) {
  return mean(sum(
                  a, ia, n, [](double x) { return x; }),
              n);
}

float rmsqv(const float* a, int ia, int n) {
  if (n <= 0) return mean(0.0, n);
  return static_cast<float>(std::sqrt(sum(a, ia, n, [](double x) { return x * x; }) / n));
}

float minv(const float* a, int ia, int n) {
  return best(
      a, ia, n, [](float x, float y) { return x < y; });
}

float maxv(const float* a, int ia, int n) { return maxvi(a, ia, n).value; }

float maxmgv(const float* a, int ia, int n) {
  return std::fabs(best(
      a, ia, n, [](float x, float y) { return std::fabs(x) > std::fabs(y); }));
}

IndexedValue maxvi(const float* a, int ia, int n) {
  IndexedValue found{n > 0 ? *a : 0.0F, 0};
  for (int k = 1; k < n; ++k)
    if (at(a, ia, k) > found.value) found = {at(a, ia, k), ia * k};
  return found;
}

int power_of_two(int n) {
  constexpr int kLargest = 1 << 30;
  if (n <= 1) return 1;
  return n > kLargest ? 0 : static_cast<int>(std::bit_ceil(static_cast<unsigned>(n)));
}
