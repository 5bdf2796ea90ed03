/// Seismic sample encodings to single-precision floats, and the fields of recorded headers.
///
/// Everything here is stateless and allocates nothing. Arguments that return again and again:
///   xOutTrace  the result, one float every `outInc` floats
///   dataAddr   the first sample of the wanted channel; a multiplexed recording stores one sample of every channel (a
///              scan) after the other
///   scanBytes  bytes from one scan to the next
///   samples    samples to decode; 0 or less decodes nothing
///   xTrace     work space of at least `samples` ints
/// The caller vouches that the data hold what `samples` and the distances reach. Addresses need no alignment. "Host
/// order" is meant: these formats were written by machines that are read as they were.
#pragma once

#include <cstdint>

#include "quarlo/tapelib/formats/charsets.h"

// ---- bit layouts, from the least significant bit up ---------------------------------------------------------------

/// IEEE 754 single precision.
struct IEEEFloat {
  std::uint32_t mantissa : 23;
  std::uint32_t exponent : 8;
  std::uint32_t sign : 1;
};

/// 16-bit hexadecimal float: mantissa x 16^exponent / 4096.
struct IBM16Hex {
  std::uint32_t mantissa : 13;
  std::uint32_t exponent : 2;
  std::uint32_t sign : 1;
};

/// 8-bit hexadecimal float: mantissa x 16^exponent / 16.
struct IBM8Hex {
  std::uint32_t mantissa : 5;
  std::uint32_t exponent : 2;
  std::uint32_t sign : 1;
};

// ---- header fields ------------------------------------------------------------------------------------------------

/// The longest header, in bytes; positions count from 1 to it.
constexpr int kMaxHeaderBytes = 20000;
/// What decodeField answers for a position outside the header.
constexpr int kInvalidField = -9999;

/// Reads a signed field in host order at the 1-based `position`: 16 bits when `length` is 1, else 32 bits. A field that
/// runs over the header's end is read as if zero bytes followed.
/// @param headerBytes bytes that `traceheader` holds
/// @return the value, invalidField when `position` lies outside 1 to `headerBytes`
int decodeField(const void* traceheader, int position, int length, int headerBytes = kMaxHeaderBytes);

/// Stores `value` (its low 16 bits when `length` is 1) in host order at the 1-based `position`. Nothing is stored of a
/// null value (nullvalue.h), outside the header, or behind its end.
void encodeField(void* traceheader, int value, int position, int length, int headerBytes = kMaxHeaderBytes);

/// Gathers the gain factors of `numTr` data and `numAuxTr` auxiliary traces from a multiplexed header.
/// Without `applyGain` all are 1. With it, every trace has two 5-bit codes, each a factor unless it is zero: bits 4-8
/// of the little-endian words at bytes 21 + 2i and 22 + 2i for `inType` 0, 1 and 4; at 21 + 4i and 22 + 4i, the data
/// traces only, for 2. Other types have none.
/// @param muxHeader holds 24 bytes and the distance (2 or 4 bytes) to the last trace coded
void getHeaderGain(const int* muxHeader, float* headGain, int numTr, int numAuxTr, int inType, int applyGain);

/// Reads `number` decimal digits, two in a byte, from `dataptr` + `byteStart`: from the high nibble of the first byte
/// when `whichBits` is 1, from its low nibble when 2. Nibbles above 9 count as what they are. Values beyond an int stop
/// at its largest; another `whichBits`, or no digits, give 0.
int unbcd(const char* dataptr, int byteStart, int whichBits, int number);

// ---- integer samples ----------------------------------------------------------------------------------------------

/// 16-bit signed words in host order, one every `scanBytes` / 2 words.
void decodeBin16(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples, int* xTrace);

/// High resolution: words as above, 12 bits of mantissa over 4 bits of exponent e; (mantissa, one's complement brought
/// to two's) << (16 - e), in units of 2^-15 / 1000.
void decodeBinHR(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples, int* xTrace);

/// Where the samples of one channel of a multiplexed 20-bit recording lie. `dataAddr` points at the channel's group:
/// one word of four exponents, then the mantissas of four channels, all big-endian.
struct Bin20Layout {
  int scanBytes;    ///< from scan to scan: bytes with one subscan, 16-bit words (less one subscan) with more
  int subscans;     ///< samples of the channel in one scan; 0 or less: nothing is decoded
  int bytesPerSub;  ///< 16-bit words from subscan to subscan
  int channel;      ///< from 1; its place in the group of four
};

/// Multiplexed 20-bit binary: mantissa << exponent. Only whole scans are decoded, `samples` / `subscans` of them; the
/// samples behind them are left untouched, here and in the six below.
void decodeBin20(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples,
                 int* xTrace);
/// The same with the inverted exponent: mantissa << (16 - exponent).
void decodeBin20A(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples,
                  int* xTrace);
/// As decodeBin20, in units of 2^-15 / 1000.
void segdBin20(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples, int* xTrace);
/// The same as segdBin20, the exponent is not inverted.
void segdBin20A(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples,
                int* xTrace);
/// As decodeBin20 and decodeBin20A, in units of 2^-27.
void segbBin20(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples, int* xTrace);
void segbBin20A(float* xOutTrace, int outInc, const char* dataAddr, const Bin20Layout& layout, int samples,
                int* xTrace);

/// Demultiplexed 20-bit binary: groups of one exponent word and four mantissa words, big-endian; mantissa << exponent.
/// Only whole groups are decoded: up to three samples at the end are left untouched.
void decodeBin20de(float* xOutTrace, int outInc, const char* dataAddr, int samples, int* xTrace);
/// The same with the inverted exponent.
void decodeBin20deA(float* xOutTrace, int outInc, const char* dataAddr, int samples, int* xTrace);
/// One of the two above.
void segdBin20de(float* xOutTrace, int outInc, const char* dataAddr, int samples, int* xTrace, int invertedExponent);

/// Packed 24-bit integers (get3byte); the result stays integer.
void decode3byte(const char* dataAddr, int* outTrace, int samples);

/// Groups of four samples in five words of host order. The first sample is scaled by the low nibble of the group's
/// second byte, the third by that of its first byte; the second and fourth are as they are. Whole groups only.
void decode20bitFloat(const char* inTrace, float* outTrace, int samples);

// ---- floating-point samples ---------------------------------------------------------------------------------------

/// IBM8Hex bytes and IBM16Hex words (host order), one every `scanBytes` bytes. Magnitudes of 2 and more are what the
/// layout says; one below 2 that is not zero reads as 1 plus half of it: the settled reading of the format here.
void decodeHex8(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples);
void decodeHex16(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples);

/// Quaternary bytes (sign in bit 7, 3 bits of exponent, 4 of mantissa): mantissa / 16 x 4^exponent. The sign adds one
/// to the mantissa and leaves the result positive; a zero mantissa under a nonzero exponent counts as 16.
void decodeQuat8(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples);
/// Quaternary words in host order: 3 bits of exponent in 12-14, 12 of mantissa. Bit 7 is taken as the sign: it adds one
/// to the mantissa and sets the lowest bit of the result's exponent. Otherwise as above.
void decodeQuat16(float* xOutTrace, int outInc, const char* dataAddr, int scanBytes, int samples);

/// The same, demultiplexed: one sample after the other.
void decodeHex8de(float* xOutTrace, int outInc, const char* dataAddr, int samples);
void decodeHex16de(float* xOutTrace, int outInc, const char* dataAddr, int samples);
void decodeQuat8de(float* xOutTrace, int outInc, const char* dataAddr, int samples);

/// Demultiplexed big-endian quaternary words: sign, 3 bits of exponent, 12 of mantissa in one's complement; mantissa /
/// 4096 x 4^exponent.
void decodeQuat16de(float* xOutTrace, int outInc, const char* dataAddr, int samples);
