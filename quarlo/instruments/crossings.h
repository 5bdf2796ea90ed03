/// Where a trace crosses zero, and its levels over whole cycles of a wave. A sample is positive when it is greater than
/// 0.
#pragma once

/// Directions of a crossing.
enum CROSSING : int { CROSS_ANY = -1, CROSS_DOWN = 0, CROSS_UP = 1 };

/// First sample behind a crossing; 0 when the first sample is exactly 0; -1 for none.
int GetFirstCrossing(const float* trace, int n, int direction);
/// Last sample before a crossing; for none the last sample when that is exactly 0, else -1.
int GetLastCrossing(const float* trace, int n, int direction);
/// The stretch of whole cycles, from behind the first crossing to before the last of the same direction; the whole
/// trace where there are no two samples of that.
void GetCrossings(const float* trace, int n, int* firstCross, int* lastCross);
/// The mean over whole cycles.
float GetDCBias(const float* trace, int n);

/// The stretch over which a level is taken.
struct Stretch {
  float* samples;
  int count;
};
/// Whole cycles of a trace, freed of its DC before if wished.
Stretch wholeCycles(float* trace, int n, bool removeDC);
/// The root mean square over those.
float cycleLevel(float* trace, int n, bool removeDC);
