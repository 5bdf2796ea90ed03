/// Strided vector arithmetic over single-precision traces.
///
/// A vector is an address, a stride in elements (it may be negative, the address then being the first element taken)
/// and a count `n` of elements; a count of 0 or less does nothing. Inputs come first, then the result, then the count;
/// a result may lie over an input of the same address and stride. Elements are taken from the first to the last. Sums
/// are kept in double precision and rounded once at their end.
#pragma once

// ---- filling, moving, converting --------------------------------------------------------------------------------

/// C = value.
void vfill(float value, float* c, int ic, int n);
/// C = 0.
void vclr(float* c, int ic, int n);
/// C = A.
void vmov(const float* a, int ia, float* c, int ic, int n);
/// C[k] = start + k x increment, each from its own product, so that no error grows along the ramp.
void vramp(double start, double increment, float* c, int ic, int n);
/// C = A, integers to the nearest float.
void vflt32(const int* a, int ia, float* c, int ic, int n);

// ---- arithmetic ---------------------------------------------------------------------------------------------------

/// C = A + b.
void vsadd(const float* a, int ia, float b, float* c, int ic, int n);
/// C = A x b.
void vsmul(const float* a, int ia, float b, float* c, int ic, int n);
/// C = A + B.
void vadd(const float* a, int ia, const float* b, int ib, float* c, int ic, int n);
/// C = B - A.
void vsub(const float* a, int ia, const float* b, int ib, float* c, int ic, int n);
/// C = A x B.
void vmul(const float* a, int ia, const float* b, int ib, float* c, int ic, int n);
/// C = sine of A, in radians.
void vsin(const float* a, int ia, float* c, int ic, int n);
/// C = cosine of A.
void vcos(const float* a, int ia, float* c, int ic, int n);
/// Complex pairs (real, imaginary) to (magnitude, phase in radians, -pi to pi). Strides count floats from pair to pair.
void polar(const float* a, int ia, float* c, int ic, int n);

// ---- measures -----------------------------------------------------------------------------------------------------

/// Sum; 0 of no elements.
float sve(const float* a, int ia, int n);
/// Mean; NaN of no elements, as is the root mean square.
float meanv(const float* a, int ia, int n);
/// Root of the mean of the squares.
float rmsqv(const float* a, int ia, int n);
/// Smallest element; 0 of no elements, as are the three below. NaN elements are passed over unless they come first.
float minv(const float* a, int ia, int n);
/// Largest element.
float maxv(const float* a, int ia, int n);
/// Largest magnitude.
float maxmgv(const float* a, int ia, int n);

/// An element and where it stands.
struct IndexedValue {
  float value;
  int index;  ///< position from `a`, in floats: with stride 2 the second element has 2
};
/// Largest element, the first of equals.
IndexedValue maxvi(const float* a, int ia, int n);

/// The smallest power of two not below `n`, at least 1; 0 when no int holds it.
int power_of_two(int n);
