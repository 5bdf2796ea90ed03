/// Samples in the formats of SEG Y (revisions 0 to 2.0), from floats and to floats.
#pragma once

#include <cstddef>
#include <cstdint>

/// Whether this is a sample format code of any revision.
bool isSegyFormat(int code);
/// Bytes of a sample of such a format; 0 for another code.
int segySampleBytes(int code);
/// Whether segySamplesIn reads this format: all but 4 (fixed point with gain) and the two codes that mean nothing.
bool isReadableSegyFormat(int code);

/// What a trace has that is no number.
struct SampleOddities {
  std::size_t infinite = 0;    ///< as recorded, or beyond single precision
  std::size_t notNumbers = 0;  ///< NaNs

  SampleOddities& operator+=(const SampleOddities& more);
};

/// Converts `count` samples of the format `formatCode` to floats, rounded once. Samples of one byte lie byte by byte.
/// What lies beyond single precision becomes infinite; NaNs stay.
/// @param bytes count x segySampleBytes(formatCode) bytes, apart from `samples`; no alignment is needed
/// @param weight the trace's weighting factor N: integers are multiplied by 2^-N, floats are not
/// @return what is no finite number; nothing, and zeros, for a format that is not readable
SampleOddities segySamplesIn(const void* bytes, float* samples, std::size_t count, int formatCode, bool bigEndian,
                             int weight);

/// Sample format codes of SEG Y that are written. Every other code is written as IBM floats.
enum SEGY_SAMPLE_FORMAT : int {
  SEGY_IBM_FLOAT = 1,   ///< 4 bytes, IBM System/360
  SEGY_INT32 = 2,       ///< 4 bytes, two's complement
  SEGY_INT16 = 3,       ///< 2 bytes, two's complement
  SEGY_IEEE_FLOAT = 5,  ///< 4 bytes, IEEE 754
  SEGY_INT8 = 8         ///< a value of 8 bits, written as a sign-extended word of 2 bytes
};

/// Converts `count` samples to the format `formatCode` (SEGY_SAMPLE_FORMAT) in the host's byte order: 2 bytes a sample
/// for the codes 3 and 8, 4 for every other. Neither address needs alignment; both may be the same.
///
/// The integer formats hold value x 2^N rounded to the nearest, N being the weighting factor of the trace header: the
/// value is word x 2^-N. N is 0 when every finite sample is a whole number within the type's range; otherwise it is the
/// largest with which the largest magnitude still fits. It can be negative.
///
/// Infinities become the end of the type's range (the largest magnitude in IBM floats); NaN becomes 0, but stays in
/// IEEE floats. A null address or a count of 0 or less writes nothing.
/// @return the weighting factor N; 0 for floats
short sgyIbmOut(const float* samples, void* out, int count, int formatCode);
