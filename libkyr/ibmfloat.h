/// IBM System/360 single precision: a sign bit, a power of 16 biased by 64 in 7 bits, a fraction of 24 bits. The value
/// is 0.fraction x 16^(exponent - 64), whether or not the leading hexadecimal digit is zero.
#pragma once

#include <cstddef>
#include <cstdint>

/// The IEEE value nearest to an IBM word (ties to even), subnormal results included. Magnitudes of 2^128 and more are
/// infinite; a zero fraction is a zero of the word's sign.
float ibmToIeee(std::uint32_t word);

/// The same in double precision, which holds every IBM word exactly.
double ibmToDouble(std::uint32_t word);

/// The normalised IBM word nearest to `value` (ties to even). Every finite float has one; infinities and NaN become the
/// largest magnitude with their sign.
std::uint32_t ieeeToIbm(float value);

/// Converts `count` IBM words, in the host's byte order, to IEEE floats in place. `words` needs no alignment.
void Ibm2Float(void* words, std::size_t count);
/// The way back, in place.
void Float2Ibm(void* words, std::size_t count);
