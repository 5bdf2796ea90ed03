#include "quarlo/instruments/crossings.h"

#include "libkyr/vectors.h"

namespace {

bool isPositive(float sample) { return sample > 0.0F; }

/// Whether a change between the two is one of that direction, by what the later one is.
bool crosses(float one, float other, bool becomes, int direction) {
  return isPositive(one) != isPositive(other) && (direction == CROSS_ANY || becomes == (direction == CROSS_UP));
}

}  // namespace

int GetFirstCrossing(const float* trace, int n, int direction) {
  if (n > 0 && trace[0] == 0.0F) return 0;
  for (int i = 1; i < n; ++i)
    if (crosses(trace[i - 1], trace[i], isPositive(trace[i]), direction)) return i;
  return -1;
}

int GetLastCrossing(const float* trace, int n, int direction) {
  for (int i = n - 2; i >= 1; --i)
    if (crosses(trace[i], trace[i + 1], isPositive(trace[i + 1]), direction)) return i;
  return n > 0 && trace[n - 1] == 0.0F ? n - 1 : -1;
}

void GetCrossings(const float* trace, int n, int* firstCross, int* lastCross) {
  const int first = GetFirstCrossing(trace, n, CROSS_ANY);
  const int last = first < 0 ? -1 : GetLastCrossing(trace, n, isPositive(trace[first]) ? CROSS_UP : CROSS_DOWN);
  *firstCross = first < last ? first : 0;
  *lastCross = first < last ? last : n - 1;
}

float GetDCBias(const float* trace, int n) {
  int first = 0;
  int last = 0;
  GetCrossings(trace, n, &first, &last);
  return meanv(trace + first, 1, last - first + 1);
}

Stretch wholeCycles(float* trace, int n, bool removeDC) {
  if (removeDC) vsadd(trace, 1, -GetDCBias(trace, n), trace, 1, n);
  int first = 0;
  int last = 0;
  GetCrossings(trace, n, &first, &last);
  return {trace + first, last - first + 1};
}

float cycleLevel(float* trace, int n, bool removeDC) {
  const auto [samples, count] = wholeCycles(trace, n, removeDC);
  return rmsqv(samples, 1, count);
}
