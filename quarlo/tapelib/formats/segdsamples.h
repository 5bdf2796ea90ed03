/// Samples of SEG D field files as the published standard defines them (Society of Exploration Geophysicists, SEG D
/// revisions 0, 1 and 2.1, "Data block formats"): what a dataset is made of. The dumps keep to the readings of
/// seglib.h, which differ in several formats.
///
/// A recorded value times the factor of its channel set is the input voltage in millivolts.
#pragma once

#include <cstddef>
#include <span>

/// Bits of a sample by its format code, multiplexed (00xx) or not (80xx); 0 for every other code.
int segdSampleBits(int formatCode);

/// Bytes of the samples of one demultiplexed trace. Samples of 20 bits stand in whole groups of four.
std::size_t segdTraceBytes(int formatCode, std::size_t samples);

/// What a recorded value is multiplied with, in double precision; the product is rounded once to a float. What no float
/// holds becomes infinite; a NaN stays one.
constexpr double kSegdRaw = 1.0;
constexpr double segdVolts(double toMillivolts) { return toMillivolts / 1000.0; }

/// Decodes a demultiplexed trace: `samples`, or as many as `bytes` hold.
/// @return samples decoded; 0 for a code without decoder
std::size_t decodeSegdTrace(int formatCode, std::span<const char> bytes, double scale, std::span<float> samples);

/// Where one channel stands in the scans of a multiplexed record. All in bytes; samples of 20 bits stand in groups of
/// four channels that share a word of exponents.
struct SegdScanPlace {
  std::size_t scanBytes = 0;     ///< from scan to scan
  std::size_t subscanBytes = 0;  ///< from one sample of a scan to the channel's next in it
  std::size_t first = 0;         ///< the channel's first sample in a scan; with 20 bits its group
  int place = 0;                 ///< in the group of four, from 0
  int subscans = 1;              ///< samples of the channel in one scan
};

/// Decodes one channel of whole scans: `samples`, or as many as `scans` hold.
/// @return samples decoded; 0 for a code without decoder, and for a place that is not within a scan
std::size_t decodeSegdScans(int formatCode, std::span<const char> scans, const SegdScanPlace& place, double scale,
                            std::span<float> samples);
