/// The Fourier transform of a trace.
#pragma once

/// The forward transform of `n` real values in place: X[k] = sum of x[j] e^(-2 pi i j k / n), without a scale factor,
/// so that a sine of amplitude A that fits the trace a whole number of times has a magnitude of A n / 2.
///
/// Packed layout: n/2 pairs (real, imaginary) of X[0] to X[n/2 - 1]. X[0] and X[n/2] are real: the first pair holds
/// X[0] and, in its imaginary place, X[n/2]. It is no complex number: its magnitude mixes the mean with the highest
/// frequency.
///
/// Computed in double precision and rounded once at the end.
/// @param n even and at least 2; a power of two is quickest
/// @return false, the data unchanged, for any other `n` and when memory is short
bool kyrpackedrfft(float* data, int n);
